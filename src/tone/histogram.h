// How often each value occurs in a square of an 8-bit picture that is dragged about.
#pragma once

#include <cstdint>
#include <span>

#include "dib/view.h"

namespace vorel {

inline constexpr int kHistogramSide = 256;  // pixels of the square, less where the picture is smaller
inline constexpr int kHistogramLevels = 256;

// Counters are 16 bits wide and wrap: a square of one value counts to 0.
using Histogram = std::span<uint16_t, kHistogramLevels>;

// The left upper corner of a square, rows counted from the top.
struct Corner {
  int x, y;
  friend bool operator==(Corner, Corner) = default;
};

// The corner of the nearest square that lies inside.
Corner clamped(Corner corner, Size picture);

// Counts a square anew.
void count_square(ConstDibView picture, Corner corner, Histogram histogram);

// Makes the counters of one square those of another that is at most half a side away in each direction, by what enters and what
// leaves.
void slide_square(ConstDibView picture, Corner from, Corner to, Histogram histogram);
bool can_slide(Corner from, Corner to);

}  // namespace vorel
