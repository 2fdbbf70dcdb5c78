// Lookup tables for levels and colour components.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/header.h"
#include "kernels/tone/histogram.h"

namespace vorel::kernels {

using ComponentTable = std::array<uint8_t, 256>;

// The mean level of a histogram, rounded down; the middle if all counters are 0.
inline constexpr int kMiddleLevel = 128;
int mean_level(std::span<const uint16_t, kHistogramLevels> histogram);

// Level i becomes i + contrast * (i - mean) / 255 + brightness.
ComponentTable contrast_table(int32_t contrast, int32_t brightness, int mean);

// Both in percent, from -100 to 100. Brightness is applied first.
ComponentTable percentage_table(int brightness, int contrast);

}  // namespace vorel::kernels
