// Windows bitmap files, checked before the library loads them: it fills up with zeros what a damaged file lacks.
#pragma once

#include <string>

#include "cli/picture.h"

namespace vorel::cli {

// What a bitmap file says about itself.
struct Bitmap {
  BITMAPINFOHEADER header{};  // as a 40-byte header, whichever the file has
  std::string variant;        // of the file's headers, in words
  bool states_image_size = true;
};

// Reads the headers of a bitmap. Throws Failure unless the file is whole and means what it says.
Bitmap inspect_bitmap(const Input& input);

// Loads a bitmap. Throws Failure if it is damaged or of a kind that the library cannot load.
Picture load_bitmap(const Input& input);

}  // namespace vorel::cli
