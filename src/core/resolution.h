// Resolutions: pixels per metre in DIBs, dots per inch in most files.
#pragma once

#include <cmath>
#include <limits>

namespace vorel {

inline constexpr double kMetresPerInch = 0.0254;

// Pixels per metre; 0 is unknown.
struct Resolution {
  int x = 0, y = 0;
};

// The nearest whole number of pixels per metre; 0 where that is less than one or does not fit.
inline int per_metre(double dpi) {
  const double value = std::round(dpi / kMetresPerInch);
  return value >= 1 && value <= std::numeric_limits<int>::max() ? static_cast<int>(value) : 0;
}
inline Resolution from_dpi(double x, double y) { return {per_metre(x), per_metre(y)}; }

// The nearest whole number of dots per inch; 0 is unknown.
inline int nearest_dpi(int resolution) {
  return resolution <= 0 ? 0 : static_cast<int>(std::round(resolution * kMetresPerInch));
}

// Dots per inch if it is a whole number that per_metre() maps back to the same value; else 0.
inline int whole_dpi(int resolution) {
  const int dpi = nearest_dpi(resolution);
  return per_metre(dpi) == resolution ? dpi : 0;
}

}  // namespace vorel
