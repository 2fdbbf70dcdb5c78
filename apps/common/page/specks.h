// Specks of a page of two colours, by what is connected.
#pragma once

#include <cstdint>

#include "common/picture.h"

namespace vorel::programs {

enum class SpeckColors { kInk, kPaper, kBoth };

struct Despeckled {
  Picture picture;
  uint64_t specks = 0, pixels = 0;  // that were taken away
};

// Takes away what is connected, diagonally as well, and no larger than `most` pixels across and down: ink from the paper, holes
// from the ink, or first the one and then the other. Throws Problem for pictures of more than 1 bit.
Despeckled despeckled(Picture picture, Size most, SpeckColors colors);

}  // namespace vorel::programs
