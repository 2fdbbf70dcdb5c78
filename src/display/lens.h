// Which part of a picture a magnifying lens shows: in numbers alone.
#pragma once

#include <optional>
#include <span>

#include "display/mapping.h"

namespace vorel {

// A lens has a frame of 4 pixels on each side.
inline constexpr int kLensFrames = 8;

// The part of a picture around a point that fills a lens. Ratios below 1, in `zoom` as numerator X, denominator X, numerator Y and
// denominator Y, are replaced by 1, as 10 / 10, because the lens never shrinks. None where one of the last two is 0.
std::optional<Box> lens_source(Point middle, std::span<int, 4> zoom, int lens_width, int lens_height);

}  // namespace vorel
