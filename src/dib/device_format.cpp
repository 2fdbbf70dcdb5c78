#include "dib/device_format.h"

#include <array>

namespace vorel {
namespace {

constexpr Rgb rgb(int red, int green, int blue) {
  return {static_cast<uint8_t>(blue), static_cast<uint8_t>(green), static_cast<uint8_t>(red), 0};
}

constexpr std::array kBlackAndWhite = {rgb(0, 0, 0), rgb(255, 255, 255)};

constexpr std::array kStandardColors = {
    rgb(0, 0, 0),     rgb(128, 0, 0),     rgb(0, 128, 0),     rgb(128, 128, 0),   rgb(0, 0, 128), rgb(128, 0, 128),
    rgb(0, 128, 128), rgb(192, 192, 192), rgb(128, 128, 128), rgb(255, 0, 0),     rgb(0, 255, 0), rgb(255, 255, 0),
    rgb(0, 0, 255),   rgb(255, 0, 255),   rgb(0, 255, 255),   rgb(255, 255, 255),
};

// Red and green in steps of 36, so they end at 252; blue in steps of 85.
constexpr auto kColorCube = [] {
  std::array<Rgb, 256> cube{};
  for (int i = 0; i < 256; ++i) cube[static_cast<size_t>(i)] = rgb((i >> 5) * 36, (i >> 2 & 7) * 36, (i & 3) * 85);
  return cube;
}();

}  // namespace

uint16_t dib_depth_for(uint32_t device_bits_per_pixel) {
  for (const uint16_t depth : {uint16_t{1}, uint16_t{4}, uint16_t{8}})
    if (device_bits_per_pixel <= depth) return depth;
  return 24;
}

std::optional<DibHeader> header_for_device_bitmap(int32_t width, int32_t height, uint32_t device_bits_per_pixel) {
  if (width < 0 || height < 0) return std::nullopt;
  const uint16_t depth = dib_depth_for(device_bits_per_pixel);
  const ByteCount image = row_stride(depth, width) * static_cast<uint32_t>(height);
  if (!image.fits_block()) return std::nullopt;
  return DibHeader{.width = width,
                   .height = height,
                   .depth = depth,
                   .image_bytes = static_cast<uint32_t>(image.value()),
                   .colors_used = implied_colors(depth),
                   .colors_important = implied_colors(depth)};
}

std::span<const Rgb> default_colors(uint32_t depth) {
  switch (depth) {
    case 1: return kBlackAndWhite;
    case 4: return kStandardColors;
    case 8: return kColorCube;
    default: return {};
  }
}

}  // namespace vorel
