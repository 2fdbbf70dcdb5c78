// Pictures in memory, in the form that all of the library works on.
#pragma once

#include <vorel32.h>

#include "common/dib.h"

namespace vorel::viewer {

BITMAPINFOHEADER header_of(const Dib& dib);

// Throws std::bad_alloc.
Dib copy_of(const Dib& dib);

// The picture uncompressed, bottom row first, with the whole colour table of 1, 4 or 8 bits or with pixels of 24 bits. Throws
// Failure where there is no way, and where a header states what its block does not hold.
Dib normalised(Dib dib);

}  // namespace vorel::viewer
