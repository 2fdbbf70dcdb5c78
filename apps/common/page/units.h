// Lengths on paper as pixels.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/picture.h"
#include "core/resolution.h"

namespace vorel::programs {

inline constexpr double kAssumedDpi = 300;  // of a picture that states no credible resolution
inline constexpr double kLeastCredibleDpi = 30, kMostCredibleDpi = 10'000;
inline constexpr double kMillimetresPerInch = 25.4;

// Whether a picture states a resolution that a scanner may have. Others would make lengths of nothing, or of the whole page.
inline bool states_resolution(const Picture& picture) {
  const auto is_credible = [](int32_t per_metre) {
    const double dpi = per_metre * kMillimetresPerInch / 1000;
    // Whole pixels to the metre, rounded or cut off.
    constexpr double kRounding = kMillimetresPerInch / 1000;
    return dpi > kLeastCredibleDpi - kRounding && dpi < kMostCredibleDpi + kRounding;
  };
  return is_credible(picture.header().x_per_metre) && is_credible(picture.header().y_per_metre);
}

// The ratio of two resolutions; 1 if one is not stated. No scanner's ratio is beyond 8: such headers are taken for damaged.
inline double credible_ratio(int32_t per_metre, int32_t other_per_metre) {
  constexpr double kMost = 8;
  if (per_metre <= 0 || other_per_metre <= 0) return 1;
  const double ratio = static_cast<double>(per_metre) / other_per_metre;
  return ratio > kMost || ratio < 1 / kMost ? 1 : ratio;
}

// Pixels down for each pixel across, of a line at 45 degrees on paper, and the reverse.
inline double down_per_across(const DibHeader& header) { return credible_ratio(header.y_per_metre, header.x_per_metre); }
inline double across_per_down(const DibHeader& header) { return credible_ratio(header.x_per_metre, header.y_per_metre); }

// Pixels to the millimetre across or down; pictures without a credible resolution count as ones of kAssumedDpi.
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
