// Converts pictures to grey.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/tone/tone.h"

namespace vorel::tone {

// A grey copy of a picture of 1, 4, 8 or 24 bits. `grade`, from 0 to 2, is the spread of set bits at 1 bit.
Result<OwnedDib> in_grays(const LockedDib& source, int grade, kernels::GrayRule rule);

// An 8-bit copy of a 1-bit picture with an inverted ramp: 0 is white, and the darker of the two colours is 255.
Result<OwnedDib> in_inverted_ramp(const LockedDib& source, int grade);

}  // namespace vorel::tone
