// How pictures are saved.
#pragma once

#include <span>
#include <string>

#include "common/picture.h"
#include "core/file_formats.h"

namespace vorel::programs {

// The compressions of TIFF files.
struct TiffCompression {
  enum class Needs { kNothing, kOneBit, kPhoto };  // a photo has 24 bits, or greys of 8
  const char* word;                                // as the value of an option
  const char* name;
  int number;
  Needs needs;
};
std::span<const TiffCompression> tiff_compressions();
std::string tiff_compression_name(int number);

struct Saving {
  const FileFormat* format = nullptr;
  int tiff_compression = 0;  // by TIFF number; 0 lets the module choose
  bool run_length = false;   // TGA
  bool interlaced = false;   // GIF
  int quality = 0;           // JPEG, 1 to 100; 0 is the usual one, 75
  bool progressive = false;  // JPEG
};

// The picture in a form that the format has room for. Bitmaps take any form. Throws Problem where there is none.
Picture suited(Picture picture, const Saving& saving);

// Writes a suited picture as a page of a file, counted from 1, and checks that all of it was written. The first page
// replaces the file. Throws Problem.
//   path  as the library takes it
void save_page(const std::string& path, const Picture& picture, const Saving& saving, int page);

}  // namespace vorel::programs
