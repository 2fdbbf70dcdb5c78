// Packed DIBs as codec modules create and read them: 1, 4, 8 or 24 bits, uncompressed, with rows counted from the top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/gray.h"
#include "core/packing.h"
#include "core/resolution.h"
#include "dib/open_dib.h"

namespace codec {

using vorel::brightness_of;
using vorel::from_dpi;
using vorel::nearest_dpi;
using vorel::pack_indices;
using vorel::Resolution;
using vorel::Rgb;
using vorel::swap_red_and_blue;
using vorel::unpack_indices;
using vorel::whole_dpi;

using Colors = std::vector<Rgb>;

constexpr Rgb color(int red, int green, int blue) {
  return {static_cast<uint8_t>(blue), static_cast<uint8_t>(green), static_cast<uint8_t>(red), 0};
}

// As many greys from black to white as the depth has.
Colors gray_ramp(int depth);

// The least depth for this number of colours: 1, 4 or 8.
constexpr int depth_for_colors(size_t count) { return count <= 2 ? 1 : count <= 16 ? 4 : 8; }

// A picture as a file describes it.
struct Description {
  int64_t width = 0, height = 0;  // pixels
  int depth = 0;                  // bits per pixel: 1, 4, 8 or 24
  Colors colors{};                // padded with black to the colours of the depth; none at 24 bits
  Resolution resolution{};
  // What the DIB does not hold.
  int sample_bits = 8;       // of the file; the upper 8 are loaded
  bool has_opacity = false;  // which is blended over white
};

// Limits what a file may claim: a few hundred megabytes in any case, more only if the file is large too, so that a small
// file cannot take all memory. Throws Failure for a picture without pixels and for one that is too large.
void check_claim(int64_t width, int64_t height, int bits_per_pixel, uint64_t file_bytes);

// Reports the description and throws Described if this thread only describes (describe.h).
void offer(const Description& description);

// A DIB being loaded, zero-filled. Freed with its scope unless it is released.
class LoadedDib {
 public:
  // Throws Failure or Described, as offer() does.
  explicit LoadedDib(const Description& description);
  LoadedDib(LoadedDib&& other) noexcept;
  LoadedDib& operator=(LoadedDib&&) = delete;
  ~LoadedDib();

  int width() const { return dib_.header().width; }
  int height() const { return dib_.header().height; }
  vorel::DibView pixels() const { return dib_.pixels(); }
  // A whole row, its padding included.
  std::span<uint8_t> row_from_top(int y) const;
  // The colour table, for formats that state it after the pixels.
  void set_colors(const Colors& colors);

  [[nodiscard]] HGLOBAL release() { return dib_.release(); }

 private:
  vorel::NewDib dib_;
};

// A DIB to be saved, locked for a scope.
class SourceDib {
 public:
  // Throws Failure. Bytes missing from the block read as zero.
  explicit SourceDib(HGLOBAL dib);

  int width() const { return header_.width; }
  int height() const { return header_.height; }
  int depth() const { return header_.depth; }
  Resolution resolution() const { return {header_.x_per_metre, header_.y_per_metre}; }
  // As many colours as the depth has; black where the table is shorter. None at 24 bits.
  const Colors& colors() const { return colors_; }
  // A whole row, its padding included.
  std::span<const uint8_t> row_from_top(int y) const;

 private:
  vorel::LockedDib lock_;
  vorel::DibHeader header_;  // with a positive height
  vorel::Layout layout_;
  vorel::CompleteBytes bytes_;
  Colors colors_;
};

bool same_colors(const Colors& a, const Colors& b);
// Whether the colour table has the greys of the depth in order, so that pixels are brightness values.
bool is_gray_ramp(const SourceDib& dib);

// A colour component blended over white paper.
constexpr uint8_t over_white(int value, int alpha) {
  return static_cast<uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}
// The same for a component that is already multiplied by its alpha.
constexpr uint8_t premultiplied_over_white(int value, int alpha) {
  return static_cast<uint8_t>(std::min(value + 255 - alpha, 255));
}

}  // namespace codec
