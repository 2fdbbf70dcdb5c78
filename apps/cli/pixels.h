// The pixels of a picture that the tool works on by itself, and what the library's functions leave to their callers.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "cli/picture.h"

namespace vorel::cli {

// The pixels of an uncompressed picture of 1, 4, 8 or 24 bits, rows bottom first, for as long as its DIB is locked.
class Pixels {
 public:
  explicit Pixels(const DibLock& lock);

  int width() const { return header_.biWidth; }
  int height() const { return header_.biHeight; }
  int depth() const { return header_.biBitCount; }

  // y counts from the top. A pixel of 24 bits is blue + 256 * green + 65536 * red.
  uint32_t at(int x, int y) const;
  void set(int x, int y, uint32_t value);

  // The same pixel as it looks, whatever the depth, in the form of a 24-bit one. What the table lacks is black.
  uint32_t color_at(int x, int y) const;

 private:
  std::span<uint8_t> row(int y) const;

  BITMAPINFOHEADER header_;
  std::span<const uint8_t> table_;
  std::span<uint8_t> rows_;
};

// A new picture of another size, or depth, with the rest of the header and the colour table of another. Its pixels are 0.
Picture blank_like(const Picture& picture, int width, int height, int depth);

// The same picture with 24 bits per pixel.
Picture in_true_color(const Picture& picture);

// The same picture of a 24-bit one in 8-bit greys, by luminance: (30 red + 59 green + 11 blue) / 100.
Dib luminance_of(const Picture& picture);

// The greys of a picture's pixels, (blue + green + red + 1) / 3, counted.
using LevelCounts = std::array<uint64_t, 256>;
LevelCounts count_levels(const Picture& picture);

// Whether the table of a picture of 8 bits goes from black to white in steps of one, so that its pixels are greys.
bool has_gray_ramp(const Picture& picture);

// Turns every bit of the pixels round.
void complement_bits(Picture& picture);

// Clears the bits that only fill up rows.
void clear_padding(Picture& picture);

// The index of the colour of a table that is nearest to one, given as a pixel of 24 bits is; 0 if there is no table.
int nearest_index(const Picture& picture, uint32_t color);

// Lets colour 0 of a picture of at most 8 bits and another one change places, in the table and in all pixels.
void exchange_with_first(Picture& picture, int index);

// The part of a picture above or below a line. Throws Failure when memory is short.
enum class Side { kAbove, kBelow };
Picture cut_off(const Picture& picture, int line, Side side);

}  // namespace vorel::cli
