// Shearing packed DIBs.
#pragma once

#include "dib/packed_dib.h"

namespace vorel {

enum class SkewDirection { kRows, kColumns };

// A new DIB, larger by the offset, with the picture sheared by it. Once the source is found to be good, the corners of the sheared
// picture go to `corners`, eight numbers, unless that is null.
Result<OwnedDib> skewed(const LockedDib& source, SkewDirection direction, int32_t offset, int32_t* corners);

}  // namespace vorel
