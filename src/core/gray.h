// Grey values: every weighting that the library, its codec modules and the programs use. All are integers, truncated towards
// zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/header.h"

namespace vorel {

constexpr uint8_t mean_of(Rgb color) { return static_cast<uint8_t>((color.blue + color.green + color.red) / 3); }

// The level of a colour table entry.
constexpr uint8_t level_of(Rgb color) { return static_cast<uint8_t>((color.blue + color.green + color.red + 1) / 3); }

// The weights of the conversion to grey.
constexpr uint8_t weighted_gray_of(Rgb color) {
  return static_cast<uint8_t>((8 * color.red + 15 * color.green + 3 * color.blue) / 26);
}

// The same weights with red and blue exchanged: the intensity that colour filters work on. A quirk that is kept.
constexpr uint8_t weighted_intensity_of(Rgb color) {
  return static_cast<uint8_t>((8 * color.blue + 15 * color.green + 3 * color.red) / 26);
}

// Brightness as error diffusion and halftoning compute it.
constexpr uint8_t luminance_of(Rgb color) {
  return static_cast<uint8_t>(static_cast<uint16_t>(30 * color.red + 59 * color.green + 11 * color.blue) / 100);
}

// In thousandths of a component, 0 to 255,000. It decides which colour of a two-colour file is the lighter one.
constexpr int brightness_of(Rgb color) { return 299 * color.red + 587 * color.green + 114 * color.blue; }

constexpr bool is_gray(Rgb color) { return color.blue == color.green && color.green == color.red; }
inline bool is_gray(std::span<const Rgb> colors) {
  return std::ranges::all_of(colors, [](Rgb color) { return is_gray(color); });
}

// Entry k becomes grey level k.
constexpr void write_gray_ramp(std::span<Rgb> colors) {
  for (size_t k = 0; k < colors.size(); ++k) {
    const auto level = static_cast<uint8_t>(k);
    colors[k] = {level, level, level, 0};
  }
}

// From black to white in even steps: the greys for a table of any depth. At least two entries.
constexpr void write_even_grays(std::span<Rgb> colors) {
  const size_t last = colors.size() - 1;
  for (size_t k = 0; k <= last; ++k) {
    const auto level = static_cast<uint8_t>(k * 255 / last);
    colors[k] = {level, level, level, 0};
  }
}

constexpr void write_inverted_gray_ramp(std::span<Rgb> colors) {
  write_gray_ramp(colors);
  std::ranges::reverse(colors);
}

}  // namespace vorel
