// The kinds of image file, and how to tell them apart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <vorel32.h>

namespace vorel {

// The first bytes of a file: zeros where it has no more.
struct FileStart {
  std::array<uint8_t, 512> bytes{};
  size_t count = 0;  // bytes that the file had
};

// Neither the file nor its name need exist: what cannot be read may still go by its name.
FileStart read_file_start(const char* path);

// What a file is by its first bytes, by its name and, where these do not tell, by what its text says as a page set.
ImgFormat recognise(const FileStart& start, const char* path);

}  // namespace vorel
