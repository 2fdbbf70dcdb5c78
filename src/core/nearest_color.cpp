#include "core/nearest_color.h"

#include <algorithm>
#include <limits>

namespace vorel {

// Distances are compared with the index in their low bits, so that the minimum is the nearest entry.
uint8_t nearest_color(std::span<const Rgb> colors, Rgb color) {
  const int count = static_cast<int>(std::min<size_t>(colors.size(), 256));
  int32_t nearest = std::numeric_limits<int32_t>::max() & ~0xFF;
  for (int i = 0; i < count; ++i) {
    const Rgb entry = colors[static_cast<size_t>(i)];
    const int b = entry.blue - color.blue, g = entry.green - color.green, r = entry.red - color.red;
    nearest = std::min(nearest, (b * b + g * g + r * r) << 8 | i);
  }
  return static_cast<uint8_t>(nearest);
}

}  // namespace vorel
