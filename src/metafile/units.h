// Sizes of metafile pictures, stated by a mapping mode and two lengths in its units. A quirk that is kept: the
// tables for files and for the clipboard differ.
#pragma once

#include "metafile/header.h"

namespace vorel::metafile {

// The mapping modes, by the system's numbers.
enum class MappingMode : int32_t {
  kText = 1,
  kLowMetric = 2,
  kHighMetric = 3,
  kLowEnglish = 4,
  kHighEnglish = 5,
  kTwips = 6,
  kIsotropic = 7,
  kAnisotropic = 8,
};

// The size that a metafile picture states.
struct PictureLengths {
  MappingMode mode;
  int32_t x, y;
};

// Pixels for a picture in a clipboard file; five inches square if its lengths give none.
Size pixels_in_file(const PictureLengths& picture, Resolution screen);

// Pixels for a picture on the clipboard. The horizontal resolution counts for both axes. Each unknown or negative size is
// taken from `otherwise`.
Size pixels_on_clipboard(const PictureLengths& picture, int dots_per_inch, Size otherwise);

}  // namespace vorel::metafile
