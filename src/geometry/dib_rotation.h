// Turning packed DIBs by any angle.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/turn/turn.h"

namespace vorel {

// A new DIB with the picture turned counter-clockwise by `angle` degrees. Once the source is found to be good, its turned corners
// go to `corners`, eight numbers, unless that is null.
Result<OwnedDib> rotated(const LockedDib& source, int32_t angle, kernels::Stepping stepping, int32_t* corners);

}  // namespace vorel
