#include <algorithm>

#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// From `begin` to before `end`.
struct Range {
  int begin, end;
};

Range clipped(Range range, int size) { return {std::clamp(range.begin, 0, size), std::clamp(range.end, 0, size)}; }

Range side_from(int begin) { return {begin, begin + kHistogramSide}; }

// Adds `step`, modulo 65,536, for each pixel in some columns and some rows from the top, as far as there are any.
void count(ConstDibView picture, Range columns, Range rows, int step, Histogram histogram) {
  columns = clipped(columns, picture.width());
  rows = clipped(rows, picture.height());
  for (int y = rows.begin; y < rows.end; ++y) {
    const auto row = picture.row_from_top(y);
    for (int x = columns.begin; x < columns.end; ++x) {
      uint16_t& counter = histogram[row[static_cast<size_t>(x)]];
      counter = static_cast<uint16_t>(counter + step);
    }
  }
}

// What a side that moves leaves and enters.
struct Strips {
  Range left, entered;
};

Strips strips(int from, int to) {
  if (to < from) return {.left = {to + kHistogramSide, from + kHistogramSide}, .entered = {to, from}};
  return {.left = {from, to}, .entered = {from + kHistogramSide, to + kHistogramSide}};
}

}  // namespace

void count_square(ConstDibView picture, Corner corner, Histogram histogram) {
  count(picture, side_from(corner.x), side_from(corner.y), 1, histogram);
}

// Sideways first, at the old height; then up or down.
void slide_square(ConstDibView picture, Corner from, Corner to, Histogram histogram) {
  const Range old_rows = side_from(from.y), new_columns = side_from(to.x);
  const Strips columns = strips(from.x, to.x), rows = strips(from.y, to.y);
  count(picture, columns.entered, old_rows, 1, histogram);
  count(picture, columns.left, old_rows, -1, histogram);
  count(picture, new_columns, rows.entered, 1, histogram);
  count(picture, new_columns, rows.left, -1, histogram);
}

}  // namespace vorel::kernels::VOREL_LEVEL
