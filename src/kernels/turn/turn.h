// Quarter turns, half turns, mirrors, turns by any angle and shears: pixels moved, never resampled.
//
// Kernels for pictures of 1, 4, 8 or 24 bits per pixel; at any other depth they write nothing. They write every byte that
// holds pixels of the result, whatever its previous content, and no others; bits behind the last pixel of a row become zero.
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
  // `result` has a row for every column of the source. Columns without a source row become zero; source rows whose column
  // `result` lacks are left out.
  void (*quarter_turn)(ConstDibView source, DibView result, QuarterTurn turn);

  // Stores the pixels of row 0 down a column. All other pixels stay as they are.
  void (*row_to_column)(ConstDibView source, DibView result, int column);

  // These take views of the same size and depth.
  void (*half_turn)(ConstDibView source, DibView result);
  void (*mirror_left_right)(ConstDibView source, DibView result);
  // Moves rows whole, at any depth.
  void (*mirror_top_bottom)(ConstDibView source, DibView result);

  // Pixels that the source does not cover become zero. `result` has the size that the rotation states and is countable. A source
  // without pixels writes nothing.
  void (*rotate)(ConstDibView source, DibView result, const Rotation& rotation, Stepping stepping);

  // Both need a result that is larger by the offset, in width or in height. A source without pixels writes nothing.
  //
  // Moves rows right. Whole bytes are moved, with the bits behind a row's last pixel; these may go to the padding, which is why
  // each row is written up to its stride. Shifts are rounded down to whole pixels, at 8 bits up; at 24 bits up to whole bytes
  // first.
  void (*skew_rows)(ConstDibView source, DibView result, int32_t offset);
  // Moves columns towards later rows: up in the picture.
  void (*skew_columns)(ConstDibView source, DibView result, int32_t offset);
};

const TurnTable& turn(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
