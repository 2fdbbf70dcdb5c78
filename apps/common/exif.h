// What cameras and scanners say about a picture in a JPEG file, besides the picture.
#pragma once

#include <istream>

#include "common/picture.h"

namespace vorel::programs {

struct ExifFacts {
  int orientation = 1;                   // 1 upright; 2 to 8 as TIFF files count: mirrored, or turned by quarters, or both
  int x_per_metre = 0, y_per_metre = 0;  // 0 where it is not told
};

// From the start of a stream. A damaged record counts as absent.
ExifFacts read_exif(std::istream& stream);

// The picture upright, and with the resolution that its file's own header does not state.
Picture turned_by_exif(Picture picture, const ExifFacts& facts);
DibHeader turned_by_exif(DibHeader header, const ExifFacts& facts);

}  // namespace vorel::programs
