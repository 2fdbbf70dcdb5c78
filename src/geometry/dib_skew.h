// Shearing packed DIBs.
#pragma once

#include "dib/packed_dib.h"

namespace vorel::geometry {

enum class SkewDirection { kRows, kColumns };

// A new DIB, larger by the offset, with the picture sheared by it. The corners of the sheared picture are stored in
// `corners`, eight numbers, once the header has passed its checks; null if not needed.
Result<OwnedDib> skewed(const LockedDib& source, SkewDirection direction, int32_t offset, int32_t* corners);

}  // namespace vorel::geometry
