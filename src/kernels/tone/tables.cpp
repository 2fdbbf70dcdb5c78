#include "kernels/tone/tables.h"

#include <algorithm>

namespace vorel::kernels {
namespace {

// Truncated, and limited to 0 to 255.
uint8_t to_byte(double value) { return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0)); }

}  // namespace

int mean_level(std::span<const uint16_t, kHistogramLevels> histogram) {
  uint32_t total = 0, sum = 0;
  for (uint32_t level = 0; level < kHistogramLevels; ++level) {
    total += histogram[level];
    sum += histogram[level] * level;
  }
  return total == 0 ? kMiddleLevel : static_cast<int>(sum / total);
}

ComponentTable contrast_table(int32_t contrast, int32_t brightness, int mean) {
  constexpr double kPerLevel = 0.00392156862745098;  // a product, since a quotient may differ in the last bit
  const double step = contrast + 255.0;
  double scaled = -static_cast<double>(mean) * contrast;  // 255 times the level before brightness
  ComponentTable table;
  for (uint8_t& level : table) {
    level = to_byte(scaled * kPerLevel + brightness);
    scaled += step;
  }
  return table;
}

ComponentTable percentage_table(int brightness, int contrast) {
  const int shift = brightness * 128 / 100, offset = contrast * 128 / 100;
  ComponentTable table;
  for (int i = 0; i < 256; ++i) {
    const int level = std::clamp(i + shift, 0, 255);
    table[static_cast<size_t>(i)] = to_byte(level * (contrast + 100) * 0.01 - offset);
  }
  return table;
}

}  // namespace vorel::kernels
