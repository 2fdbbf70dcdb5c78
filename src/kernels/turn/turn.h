// Quarter turns, half turns, mirrors, turns by any angle and shears: pixels moved, never resampled.
//
// Kernels for pictures of 1, 4, 8 or 24 bits per pixel; at any other depth they copy nothing. Results are zero-filled when
// they come in, and their padding stays zero.
#pragma once

#include "core/view.h"
#include "kernels/levels.h"
#include "kernels/turn/rotation.h"
#include "kernels/turn/skew.h"

namespace vorel::kernels {

// Where a quarter turn puts the pixels. The steps are 1 or -1.
struct QuarterTurn {
  int first_column, column_step;
  int first_row, row_step;

  // The result's column for source row y, its row for source column x, and the source row for a column of the result.
  int column_of(int y) const { return first_column + column_step * y; }
  int row_of(int x) const { return first_row + row_step * x; }
  int source_row_of(int column) const { return (column - first_column) * column_step; }
};

struct TurnTable {
  // Every target pixel must lie in `result`.
  void (*quarter_turn)(ConstDibView source, DibView result, QuarterTurn turn);

  // These take views of the same size and depth.
  void (*half_turn)(ConstDibView source, DibView result);
  void (*mirror_left_right)(ConstDibView source, DibView result);
  // Moves rows whole, at any depth.
  void (*mirror_top_bottom)(ConstDibView source, DibView result);

  // Pixels that the source does not cover stay as they are in `result`, which has the size that the rotation states and is
  // countable. Sources without pixels are left alone.
  void (*rotate)(ConstDibView source, DibView result, const Rotation& rotation, Stepping stepping);

  // Both want a result that is larger by the offset, in width or in height.
  //
  // Moves rows right. Whole bytes are moved: bits behind a row's last pixel come along. Shifts are rounded down to whole pixels,
  // at 8 bits up; at 24 bits up to whole bytes first.
  void (*skew_rows)(ConstDibView source, DibView result, int32_t offset);
  // Moves columns towards later rows: up in the picture.
  void (*skew_columns)(ConstDibView source, DibView result, int32_t offset);
};

const TurnTable& turn(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
