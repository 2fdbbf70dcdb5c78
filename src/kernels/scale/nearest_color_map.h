// Nearest colours of many pixels.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

#include "core/arena.h"
#include "core/header.h"

namespace vorel::kernels::VOREL_LEVEL {

// The entry of a colour table with the smallest sum of the squared distances in red, green and blue; ties go to the first.
// Colours are sorted into cells of 16 x 16 x 16. A cell keeps the entries that can be nearest to a colour in it, found on
// its first use.
class NearestColorMap {
 public:
  // At most 256 colours, at least one.
  NearestColorMap(std::span<const Rgb> colors, Arena& arena)
      : colors_(colors), cells_(arena.take<Cell>(kCells)), pool_(arena.take<uint8_t>(kPoolBytes)), used_(colors.size()) {
    std::memset(cells_.data(), 0, cells_.size_bytes());
    for (size_t i = 0; i < used_; ++i) pool_[i] = static_cast<uint8_t>(i);
  }

  uint8_t index_of(int blue, int green, int red) {
    Cell& cell = cells_[static_cast<size_t>(blue >> 4 | green >> 4 << 4 | red >> 4 << 8)];
    if (cell.count == 0) fill(cell, {blue & 0xF0, green & 0xF0, red & 0xF0});
    const uint8_t* const candidates = pool_.data() + cell.first;
    int least = std::numeric_limits<int>::max();
    uint8_t nearest = 0;
    for (int i = 0; i < cell.count; ++i) {
      const Rgb color = colors_[candidates[i]];
      const int distance = square(color.blue - blue) + square(color.green - green) + square(color.red - red);
      if (distance >= least) continue;
      least = distance;
      nearest = candidates[i];
    }
    return nearest;
  }

 private:
  static constexpr size_t kCells = 4096, kPoolBytes = 65'536;
  static constexpr int kCellSide = 16;

  struct Cell {
    uint16_t first, count;  // of the pool; no entries before the first use
  };
  struct Corner {
    int blue, green, red;
  };

  static int square(int distance) { return distance * distance; }

  // Squared distances to the nearest and to the furthest level of a cell that begins at `begin`.
  static int nearest_in(int begin, int level) {
    return square(level < begin ? begin - level : std::max(0, level - (begin + kCellSide - 1)));
  }
  static int furthest_in(int begin, int level) { return square(std::max(begin + kCellSide - 1 - level, level - begin)); }

  // Uses all entries if the pool is full.
  void fill(Cell& cell, Corner corner) {
    int bound = std::numeric_limits<int>::max();
    for (const Rgb color : colors_)
      bound = std::min(bound, furthest_in(corner.blue, color.blue) + furthest_in(corner.green, color.green) +
                                  furthest_in(corner.red, color.red));
    const size_t first = used_;
    cell = {static_cast<uint16_t>(first), 0};
    for (size_t i = 0; i < colors_.size(); ++i) {
      const Rgb color = colors_[i];
      if (nearest_in(corner.blue, color.blue) + nearest_in(corner.green, color.green) + nearest_in(corner.red, color.red) >
          bound)
        continue;
      if (used_ == kPoolBytes) {
        used_ = first;
        cell = {0, static_cast<uint16_t>(colors_.size())};
        return;
      }
      pool_[used_++] = static_cast<uint8_t>(i);
      ++cell.count;
    }
  }

  std::span<const Rgb> colors_;
  std::span<Cell> cells_;
  std::span<uint8_t> pool_;  // begins with all entries
  size_t used_;
};

}  // namespace vorel::kernels::VOREL_LEVEL
