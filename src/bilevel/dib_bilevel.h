// Reduces packed DIBs to black and white, or to few colours.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/bilevel/bilevel.h"

namespace vorel::bilevel {

// A new DIB of 1, 4 or 8 bits. Some failures leave the source locked.
Result<OwnedDib> dithered(LockedDib& source, int bits, kernels::Dithering method);

// A new DIB of 1 bit. Any depth but 4, 8 or 24 bits leaves the source locked.
Result<OwnedDib> halftoned(LockedDib& source, kernels::HalftoneMethod method, int brightness);

}  // namespace vorel::bilevel
