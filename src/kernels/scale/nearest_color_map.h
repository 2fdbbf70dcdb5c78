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

// The entry of a colour table with the smallest sum of the squared distances in red, green and blue; ties go to the first. Colour
// space is divided into cubes of 16 x 16 x 16 colours, and each cube into eight cells. Cubes and cells list the entries that can
// be nearest to one of their colours; a list is made on its first use.
class NearestColorMap {
 public:
  // At most 256 colours, at least one.
  NearestColorMap(std::span<const Rgb> colors, Arena& arena)
      : colors_(colors),
        cube_at_(arena.take<uint16_t>(kCubes)),
        cubes_(arena.take<Cube>(kCubes)),
        pool_(arena.take<uint8_t>(kPoolBytes)),
        used_(static_cast<uint32_t>(colors.size())) {
    std::memset(cube_at_.data(), 0, cube_at_.size_bytes());
    for (size_t i = 0; i < used_; ++i) pool_[i] = static_cast<uint8_t>(i);
  }

  uint8_t index_of(int blue, int green, int red) {
    uint16_t& number = cube_at_[static_cast<size_t>(blue >> 4 | green >> 4 << 4 | red >> 4 << 8)];
    if (number == 0) number = new_cube({blue & 0xF0, green & 0xF0, red & 0xF0});
    Cube& cube = cubes_[number - 1];
    List& cell = cube.cells[(blue >> 3 & 1) | (green >> 2 & 2) | (red >> 1 & 4)];
    if (cell.count == 0) cell = pruned(cube.all, {{blue & 0xF8, green & 0xF8, red & 0xF8}, kCellSide});
    const uint8_t* const entries = &pool_[cell.first];
    if (cell.count == 1) return entries[0];
    return static_cast<uint8_t>(nearest_of({entries, cell.count}, {blue, green, red}));
  }

 private:
  static constexpr size_t kCubes = 4096, kPoolBytes = 160'000;
  static constexpr int kCubeSide = 16, kCellSide = 8;

  // Entries in the pool, in the order of the table; none before the first use.
  struct List {
    uint32_t first : 22, count : 10;
  };
  struct Cube {
    List all, cells[8];
  };
  struct Point {
    int blue, green, red;
  };
  struct Box {
    Point corner;
    int side;
  };

  static int square(int distance) { return distance * distance; }

  // Distances are compared with the index in their low bits, so that the minimum is the nearest entry.
  int nearest_of(std::span<const uint8_t> entries, Point point) const {
    int nearest = std::numeric_limits<int>::max();
    for (const uint8_t entry : entries) {
      const Rgb color = colors_[entry];
      const int distance =
          square(color.blue - point.blue) + square(color.green - point.green) + square(color.red - point.red);
      nearest = std::min(nearest, distance << 8 | entry);
    }
    return nearest & 0xFF;
  }

  uint16_t new_cube(Point corner) {
    cubes_[cubes_used_] = {pruned({0, static_cast<uint32_t>(colors_.size()) & 0x3FF}, {corner, kCubeSide}), {}};
    return ++cubes_used_;
  }

  // The least difference of squared distances, `color`'s minus `other`'s, over all points of the box. It is linear in each
  // component, so it is least at a corner.
  static int least_excess(Rgb color, Rgb other, const Box& box) {
    const auto along = [&](int begin, int a, int b) {
      const int point = a > b ? begin + box.side - 1 : begin;
      return (a - b) * (a + b - 2 * point);
    };
    return along(box.corner.blue, color.blue, other.blue) + along(box.corner.green, color.green, other.green) +
           along(box.corner.red, color.red, other.red);
  }

  // The entries of a list, except those that are nowhere in the box nearer than the entry nearest to its middle. The whole list
  // if the pool is full.
  List pruned(List list, const Box& box) {
    const std::span<const uint8_t> entries(&pool_[list.first], list.count);
    if (entries.size() > kPoolBytes - used_) return list;
    const int half = box.side / 2;
    const int middle = nearest_of(entries, {box.corner.blue + half, box.corner.green + half, box.corner.red + half});
    const uint32_t first = used_;
    for (const uint8_t entry : entries) {
      pool_[used_] = entry;
      used_ += least_excess(colors_[entry], colors_[static_cast<size_t>(middle)], box) < (middle < entry ? 0 : 1) ? 1 : 0;
    }
    return {first & 0x3FFFFF, (used_ - first) & 0x3FF};
  }

  std::span<const Rgb> colors_;
  std::span<uint16_t> cube_at_;  // numbers of cubes from 1 on
  std::span<Cube> cubes_;
  std::span<uint8_t> pool_;  // begins with all entries
  uint32_t used_;
  uint16_t cubes_used_ = 0;
};

}  // namespace vorel::kernels::VOREL_LEVEL
