// An input as a file, for readers that take a path.
#pragma once

#include <string>

#include "support/dib.h"

namespace fuzz {

// The path of a file with these bytes, which lasts until the next call.
inline const char* as_file(const uint8_t* data, size_t size, const char* name = "input") {
  static const test::TempFolder folder;
  static std::string path;
  path = folder.path(name);
  test::write_file(path, {data, data + size});
  return path.c_str();
}

}  // namespace fuzz
