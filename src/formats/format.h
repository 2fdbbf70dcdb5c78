// The kinds of image file, and their detection.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <vorel32.h>

namespace vorel::formats {

// The first bytes of a file, zero-padded if it is shorter.
struct FileStart {
  std::array<uint8_t, 512> bytes{};
  size_t count = 0;  // bytes that the file had
};

// Neither the file nor its name need exist: the name alone may still identify the format.
FileStart read_file_start(const char* path);

// The format by the first bytes, by the name and, failing these, by the file's text as a page set.
ImgFormat recognise(const FileStart& start, const char* path);

}  // namespace vorel::formats
