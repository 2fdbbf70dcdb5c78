#include <algorithm>

#include "core/word.h"
#include "kernels/cache.h"
#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// From `begin` to before `end`.
struct Range {
  int begin, end;
};

Range clipped(Range range, int size) { return {std::clamp(range.begin, 0, size), std::clamp(range.end, 0, size)}; }

Range side_from(int begin) { return {begin, begin + kHistogramSide}; }

// Counts in several tables in turn, so that equal values in a row do not wait for the same counter.
class Tally {
 public:
  // Adds `step`, modulo 65,536, for each pixel of the picture in these columns and rows; rows count from the top.
  void count(ConstDibView picture, Range columns, Range rows, uint16_t step) {
    columns = clipped(columns, picture.width());
    rows = clipped(rows, picture.height());
    for (int y = rows.begin; y < rows.end; ++y) {
      const auto row = picture.row_from_top(y);
      // Rows of a large picture lie on different pages.
      const auto next = picture.row_from_top(std::min(y + 1, rows.end - 1)).data() + columns.begin;
      read_ahead(next, static_cast<size_t>(columns.end - columns.begin));
      count(row.data() + columns.begin, row.data() + columns.end, step);
    }
  }

  void add_to(Histogram histogram) const {
    for (size_t level = 0; level < kHistogramLevels; ++level)
      for (const auto& counters : counters_) histogram[level] = static_cast<uint16_t>(histogram[level] + counters[level]);
  }

 private:
  static constexpr int kTables = 8;

  void count(const uint8_t* pixel, const uint8_t* end, uint16_t step) {
    for (; end - pixel >= kWordBytes; pixel += kWordBytes) {
      const uint64_t word = load_word(pixel);
      for (int i = 0; i < kWordBytes; ++i) add(i % kTables, static_cast<uint8_t>(word >> 8 * i), step);
    }
    for (; pixel != end; ++pixel) add(0, *pixel, step);
  }
  void add(int table, uint8_t level, uint16_t step) {
    counters_[table][level] = static_cast<uint16_t>(counters_[table][level] + step);
  }

  uint16_t counters_[kTables][kHistogramLevels] = {};
};

constexpr uint16_t kOneMore = 1, kOneLess = 0xFFFF;

// The columns or rows that a moving side leaves and enters.
struct Strips {
  Range left, entered;
};

Strips strips(int from, int to) {
  if (to < from) return {.left = {to + kHistogramSide, from + kHistogramSide}, .entered = {to, from}};
  return {.left = {from, to}, .entered = {from + kHistogramSide, to + kHistogramSide}};
}

}  // namespace

void count_square(ConstDibView picture, Corner corner, Histogram histogram) {
  Tally tally;
  tally.count(picture, side_from(corner.x), side_from(corner.y), kOneMore);
  tally.add_to(histogram);
}

// Sideways first, at the old height; then up or down.
void slide_square(ConstDibView picture, Corner from, Corner to, Histogram histogram) {
  const Range old_rows = side_from(from.y), new_columns = side_from(to.x);
  const Strips columns = strips(from.x, to.x), rows = strips(from.y, to.y);
  Tally tally;
  tally.count(picture, columns.entered, old_rows, kOneMore);
  tally.count(picture, columns.left, old_rows, kOneLess);
  tally.count(picture, new_columns, rows.entered, kOneMore);
  tally.count(picture, new_columns, rows.left, kOneLess);
  tally.add_to(histogram);
}

}  // namespace vorel::kernels::VOREL_LEVEL
