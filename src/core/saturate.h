// Wide and fractional numbers made an int: what lies outside becomes the nearest that there is, fractions are cut off, and
// what is no number is 0.
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
