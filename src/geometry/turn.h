// Quarter turns, half turns and mirrors: pixels moved, never resampled.
//
// Kernels for pictures of 1, 4, 8 or 24 bits per pixel; at any other depth they copy nothing. Results are zero-filled when
// they come in, and their padding stays zero.
#pragma once

#include "dib/view.h"

namespace vorel {

// Where a quarter turn puts the pixels. The steps are 1 or -1.
struct QuarterTurn {
  int first_column, column_step;
  int first_row, row_step;

  // The result's column for source row y, its row for source column x, and the source row for a column of the result.
  int column_of(int y) const { return first_column + column_step * y; }
  int row_of(int x) const { return first_row + row_step * x; }
  int source_row_of(int column) const { return (column - first_column) * column_step; }
};

// Every target pixel must lie in `result`.
void quarter_turn(ConstDibView source, DibView result, QuarterTurn turn);

// These take views of the same size and depth.
void half_turn(ConstDibView source, DibView result);
void mirror_left_right(ConstDibView source, DibView result);

// Moves rows whole, at any depth.
void mirror_top_bottom(ConstDibView source, DibView result);

}  // namespace vorel
