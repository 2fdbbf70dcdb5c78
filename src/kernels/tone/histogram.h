// Histograms of a square of an 8-bit picture that the user drags.
#pragma once

#include <cstdint>
#include <span>

#include "core/view.h"

namespace vorel::kernels {

inline constexpr int kHistogramSide = 256;  // pixels; less where the picture is smaller
inline constexpr int kHistogramLevels = 256;

// Counters are 16 bits wide and wrap: a square of one value counts to 0.
using Histogram = std::span<uint16_t, kHistogramLevels>;

// The top left corner of a square; rows count from the top.
struct Corner {
  int x, y;
  friend bool operator==(Corner, Corner) = default;
};

// The nearest corner whose square lies inside the picture.
Corner clamped(Corner corner, Size picture);

// Whether the two squares overlap enough that only strips need counting.
bool can_slide(Corner from, Corner to);

}  // namespace vorel::kernels
