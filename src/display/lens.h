// The part of a picture that the magnifying lens shows: pure arithmetic.
#pragma once

#include <optional>
#include <span>

#include "display/mapping.h"

namespace vorel::display {

// The frame takes 4 pixels on each side.
inline constexpr int kLensFrames = 8;

// The part of a picture around a point that fills the lens.
//   zoom  numerator X, denominator X, numerator Y, denominator Y; ratios below 1 become 10 / 10: the lens never reduces
// None if either of the last two numbers is 0.
std::optional<Box> lens_source(Point middle, std::span<int, 4> zoom, int lens_width, int lens_height);

}  // namespace vorel::display
