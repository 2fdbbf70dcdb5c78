#include "core/nearest_color.h"

#include <algorithm>
#include <limits>

namespace vorel {

NearestColor::NearestColor(std::span<const Rgb> colors) : count_(static_cast<int>(std::min(colors.size(), red_.size()))) {
  for (size_t i = 0; i < static_cast<size_t>(count_); ++i) {
    blue_[i] = colors[i].blue;
    green_[i] = colors[i].green;
    red_[i] = colors[i].red;
  }
}

// The distance goes above the index, so that one minimum finds both.
uint8_t NearestColor::search(int blue, int green, int red) const {
  int32_t nearest = std::numeric_limits<int32_t>::max() & ~0xFF;
  for (int i = 0; i < count_; ++i) {
    const auto at = static_cast<size_t>(i);
    const int b = blue_[at] - blue, g = green_[at] - green, r = red_[at] - red;
    nearest = std::min(nearest, (b * b + g * g + r * r) << 8 | i);
  }
  return static_cast<uint8_t>(nearest);
}

}  // namespace vorel
