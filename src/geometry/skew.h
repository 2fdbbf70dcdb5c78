// Shearing a picture into a parallelogram by moving whole rows or columns.
#pragma once

#include <cstdint>

#include "dib/view.h"

namespace vorel {

// How far row or column `at` of `count` moves, in units of 1/scale pixel, rounded down: with a positive offset the last ones
// move furthest, else the first, which moves by all of it.
constexpr uint64_t shift_of(int at, int count, int32_t offset, int scale = 1) {
  const auto most = static_cast<uint64_t>(scale) * static_cast<uint64_t>(offset < 0 ? -int64_t{offset} : offset);
  return most * static_cast<uint64_t>(offset > 0 ? at : count - at) / static_cast<uint64_t>(count);
}

// Both want a zero-filled result that is larger by the offset, in width or in height. Views of a depth that pixels are not
// copied at are left alone.

// Moves rows right. Whole bytes are moved: bits behind a row's last pixel come along. Shifts are rounded down to whole pixels, at
// 8 bits up; at 24 bits up to whole bytes first.
void skew_rows(ConstDibView source, DibView result, int32_t offset);

// Moves columns towards later rows: up in the picture.
void skew_columns(ConstDibView source, DibView result, int32_t offset);

}  // namespace vorel
