// Wide and fractional numbers converted to int: values out of range become the nearest int, fractions are truncated, and NaN
// becomes 0.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vorel {

constexpr int saturated(int64_t value) {
  return static_cast<int>(std::clamp<int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

constexpr int saturated(double value) {
  if (value != value) return 0;
  constexpr double kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, kLeast, kMost));
}

}  // namespace vorel
