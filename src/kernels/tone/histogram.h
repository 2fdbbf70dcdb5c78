// How often each value occurs in a square of an 8-bit picture that is dragged about.
#pragma once

#include <cstdint>
#include <span>

#include "core/view.h"

namespace vorel::kernels {

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

// Whether a square that is moved overlaps itself enough to be counted by its strips.
bool can_slide(Corner from, Corner to);

}  // namespace vorel::kernels
