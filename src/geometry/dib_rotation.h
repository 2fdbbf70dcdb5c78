// Turning packed DIBs by any angle.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/turn/turn.h"

namespace vorel::geometry {

// A new DIB with the picture turned counter-clockwise by `angle` degrees. The turned corners are stored in `corners`, eight
// numbers, once the header has passed its checks; null if not needed.
Result<OwnedDib> rotated(const LockedDib& source, int32_t angle, kernels::Stepping stepping, int32_t* corners);

}  // namespace vorel::geometry
