// Lengths on paper as pixels.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/picture.h"
#include "core/resolution.h"

namespace vorel::programs {

inline constexpr double kAssumedDpi = 300;  // of a picture that states no resolution
inline constexpr double kMillimetresPerInch = 25.4;

inline bool states_resolution(const Picture& picture) {
  return picture.header().x_per_metre > 0 && picture.header().y_per_metre > 0;
}

// Pixels to the millimetre across or down; pictures without a resolution count as ones of kAssumedDpi.
inline double across_per_millimetre(const Picture& picture) {
  return states_resolution(picture) ? picture.header().x_per_metre / 1000.0 : kAssumedDpi / kMillimetresPerInch;
}
inline double down_per_millimetre(const Picture& picture) {
  return states_resolution(picture) ? picture.header().y_per_metre / 1000.0 : kAssumedDpi / kMillimetresPerInch;
}

// The nearest number of pixels, bounded so that positions can be added to it.
inline int pixels_of(double millimetres, double per_millimetre) {
  constexpr double kMost = 1 << 28;
  return static_cast<int>(std::lround(std::clamp(millimetres * per_millimetre, -kMost, kMost)));
}

}  // namespace vorel::programs
