// An A4 page at 300 dots per inch, to measure with.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include <vorel32.h>

#include "core/header.h"

inline constexpr int kPageWidth = 2480, kPageHeight = 3508;

inline std::ptrdiff_t page_stride(int depth, int width = kPageWidth) {
  return static_cast<std::ptrdiff_t>(vorel::row_stride(static_cast<uint32_t>(depth), width).value());
}

// Text-like bytes: mostly paper, some ink.
inline void fill(std::vector<uint8_t>& bytes) {
  uint32_t state = 1;
  for (uint8_t& byte : bytes) {
    state = state * 1'664'525 + 1'013'904'223;
    byte = state >> 28 == 0 ? static_cast<uint8_t>(state >> 16) : 0xFF;
  }
}

inline std::vector<uint8_t> page_pixels(int depth) {
  std::vector<uint8_t> pixels(static_cast<size_t>(page_stride(depth)) * kPageHeight);
  fill(pixels);
  return pixels;
}

// A DIB of these rows, with a table of greys from black to white or, at 8 bits, one of 8 x 8 x 4 colours.
inline HGLOBAL page_dib(int depth, std::span<const uint8_t> pixels, bool is_colored = false) {
  const vorel::DibHeader header{.width = kPageWidth, .height = kPageHeight, .depth = static_cast<uint16_t>(depth)};
  const auto begin = static_cast<size_t>(vorel::bits_offset(header).value());
  HGLOBAL dib = GlobalAlloc(GHND, begin + pixels.size());
  auto* bytes = static_cast<uint8_t*>(GlobalLock(dib));
  std::memcpy(bytes, &header, sizeof header);
  const uint32_t count = vorel::implied_colors(header.depth);
  for (uint32_t i = 0; i < count; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / (count - 1));
    const auto of = [](uint32_t step, uint32_t steps) { return static_cast<uint8_t>(step * 255 / (steps - 1)); };
    const vorel::Rgb color =
        is_colored ? vorel::Rgb{of(i % 4, 4), of(i / 4 % 8, 8), of(i / 32, 8), 0} : vorel::Rgb{level, level, level, 0};
    std::memcpy(bytes + sizeof header + i * sizeof color, &color, sizeof color);
  }
  std::memcpy(bytes + begin, pixels.data(), pixels.size());
  GlobalUnlock(dib);
  return dib;
}
