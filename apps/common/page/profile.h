// Sums of ink along parallel lines of a page that may be slanted.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "common/page/ink_map.h"

namespace vorel::programs {

// The cells of a page, column by column. `aspect` is that of down_per_across().
struct Columns {
  Columns(int columns, int rows, double unit)
      : width(columns), height(rows), slope_unit(unit), cells(static_cast<size_t>(columns) * static_cast<size_t>(rows)) {}

  uint8_t* column(int x) { return cells.data() + static_cast<size_t>(x) * static_cast<size_t>(height); }
  const uint8_t* column(int x) const { return cells.data() + static_cast<size_t>(x) * static_cast<size_t>(height); }

  int width, height;
  double slope_unit;  // cells down for each cell across, of a line at 45 degrees on paper
  std::vector<uint8_t> cells;
};

Columns columns_of(const InkMap& map, double aspect);
// The page mirrored about its diagonal: rows become columns.
Columns rows_of(const InkMap& map, double aspect);

class Profile {
 public:
  static constexpr int kMostBands = 3;
  using Scores = std::array<double, kMostBands>;

  explicit Profile(const Columns& columns);

  // Sums along lines that are turned clockwise, within some columns. Their number of rows is a little more than the page has.
  std::span<const uint16_t> sums(double degrees, int first, int last);

  // For each band of the page how much neighbouring sums differ, squared and added up.
  Scores scores(double degrees, int bands);
  double score(double degrees, int bands);

  // The same for lines right across the page as a share of the squared sums: high where lines of text alternate with paper, low
  // for even tones.
  double contrast(double degrees);

 private:
  static constexpr int kFewColumns = 255 / InkMap::kMostInk;  // their sums fit a byte

  void take_few();

  const Columns& columns_;
  std::vector<double> rounding_;
  std::vector<uint16_t> sums_;  // a cell holds 16 at most, and pages below 32,768 pixels have at most 1024 columns of them
  std::vector<uint8_t> few_;    // sums of a few columns that are not in sums_ yet
};

}  // namespace vorel::programs
