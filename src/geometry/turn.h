// Quarter turns, half turns and mirrors: pixels moved, never resampled.
//
// Kernels for pictures of 1, 4, 8 or 24 bits per pixel; at any other depth they copy nothing. Results are zero-filled when they
// come in, and their padding stays zero.
#pragma once

#include "dib/view.h"

namespace vorel {

// Where a quarter turn puts the pixels: source row y becomes column first_column + column_step * y of the result, source
// column x its row first_row + row_step * x. The steps are 1 or -1.
struct QuarterTurn {
  int first_column, column_step;
  int first_row, row_step;
};

// Every target pixel must lie in `result`.
void quarter_turn(ConstDibView source, DibView result, QuarterTurn turn);

// These take views of the same size and depth.
void half_turn(ConstDibView source, DibView result);
void mirror_left_right(ConstDibView source, DibView result);

// Moves rows whole, at any depth.
void mirror_top_bottom(ConstDibView source, DibView result);

}  // namespace vorel
