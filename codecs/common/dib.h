// Packed DIBs as codec modules make and read them: 1, 4, 8 or 24 bits, uncompressed, with rows counted from the top.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <vorel32.h>

namespace codec {

using Colors = std::vector<RGBQUAD>;

constexpr RGBQUAD color(int red, int green, int blue) {
  return {static_cast<uint8_t>(blue), static_cast<uint8_t>(green), static_cast<uint8_t>(red), 0};
}

// In thousandths of a component, 0 to 255,000.
constexpr int brightness(RGBQUAD entry) { return 299 * entry.rgbRed + 587 * entry.rgbGreen + 114 * entry.rgbBlue; }

// Greys from black to white, as many as the depth has: at 1 bit just black and white.
Colors gray_ramp(int depth);

// The depth that holds so many colours: 1, 4 or 8.
constexpr int depth_for_colors(size_t count) { return count <= 2 ? 1 : count <= 16 ? 4 : 8; }

// Pixels per metre; 0 is unknown.
struct Resolution {
  int x = 0, y = 0;
};
Resolution from_dpi(double x, double y);
// The nearest whole number of dots per inch; 0 is unknown.
int nearest_dpi(int per_metre);
// Dots per inch, if that is a whole number that comes back from from_dpi() as the same pixels per metre; else 0.
int whole_dpi(int per_metre);

struct Layout {
  int64_t width = 0, height = 0;  // pixels
  int depth = 0;                  // bits per pixel: 1, 4, 8 or 24
  Colors colors{};                // completed with black to as many as the depth has; none at 24 bits
  Resolution resolution{};
};

// What a picture in a file may claim to be: a few hundred megabytes anyway, and more only if the file is large too, so that
// a small file cannot take all memory. Throws Failure for a picture without pixels and for one that is too large.
void check_claim(int64_t width, int64_t height, int bits_per_pixel, uint64_t file_bytes);

// A DIB being made, zero-filled. Freed with its scope unless it is released.
class NewDib {
 public:
  // Throws Failure.
  explicit NewDib(const Layout& layout);
  NewDib(const NewDib&) = delete;
  NewDib& operator=(const NewDib&) = delete;
  ~NewDib();

  int width() const { return width_; }
  int height() const { return height_; }
  // Whole rows, their padding included.
  std::span<uint8_t> row_from_top(int y) const { return {rows_ + (height_ - 1 - y) * stride_, stride_}; }
  // The colour table, for formats that state it after the pixels.
  void set_colors(const Colors& colors);

  [[nodiscard]] HGLOBAL release();

 private:
  HGLOBAL block_ = nullptr;
  std::span<uint8_t> table_;
  uint8_t* rows_ = nullptr;
  int width_ = 0, height_ = 0;
  size_t stride_ = 0;
};

// A DIB to be saved, locked for a scope.
class SourceDib {
 public:
  // Throws Failure. What a block is too short for reads as zero.
  explicit SourceDib(HGLOBAL dib);
  SourceDib(const SourceDib&) = delete;
  SourceDib& operator=(const SourceDib&) = delete;
  ~SourceDib();

  int width() const { return header_.biWidth; }
  int height() const { return height_; }
  int depth() const { return header_.biBitCount; }
  Resolution resolution() const { return {header_.biXPelsPerMeter, header_.biYPelsPerMeter}; }
  // As many colours as the depth has, those that the table lacks being black. None at 24 bits.
  const Colors& colors() const { return colors_; }
  // Whole rows, their padding included.
  std::span<const uint8_t> row_from_top(int y) const;

 private:
  void read(std::span<const uint8_t> block);

  HGLOBAL block_;
  std::vector<uint8_t> completed_;  // empty where the block itself is long enough
  BITMAPINFOHEADER header_{};
  int height_ = 0;
  size_t stride_ = 0;
  const uint8_t* rows_ = nullptr;
  Colors colors_;
};

bool same_colors(const Colors& a, const Colors& b);
// Whether the colour table has the greys of the depth in their order, so that pixels are brightness.
bool is_gray_ramp(const SourceDib& dib);

// Rows of one byte per pixel from and to rows of 1, 4 or 8 bits per pixel. An index that the depth has no room for loses its
// upper bits.
void pack_indices(std::span<const uint8_t> indices, int depth, std::span<uint8_t> row);
void unpack_indices(std::span<const uint8_t> row, int depth, std::span<uint8_t> indices);

// Exchanges the first and third byte of each of `width` pixels: red, green, blue and blue, green, red.
void swap_red_and_blue(std::span<uint8_t> row, int width);

// A colour component that lies over white paper.
constexpr uint8_t over_white(int value, int alpha) {
  return static_cast<uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}
// The same for one that has been scaled by its alpha already.
constexpr uint8_t premultiplied_over_white(int value, int alpha) {
  return static_cast<uint8_t>(std::min(value + 255 - alpha, 255));
}

}  // namespace codec
