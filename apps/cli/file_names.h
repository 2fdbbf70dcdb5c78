// Names of files, which are UTF-8 on every system.
#pragma once

#include <filesystem>
#include <string>

namespace vorel::cli {

inline std::filesystem::path path_of(const std::string& name) { return std::u8string(name.begin(), name.end()); }

// With slashes between the folders.
inline std::string name_of(const std::filesystem::path& path) {
  const std::u8string name = path.generic_u8string();
  return {name.begin(), name.end()};
}

}  // namespace vorel::cli
