// vorel invert: the negative of a picture.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

// The bytes of one pixel that are colour. The last byte of 32 bits is reserved, as is the top bit of 16.
std::span<const uint8_t> color_mask(int depth) {
  static constexpr uint8_t k16[] = {0xFF, 0x7F};
  static constexpr uint8_t k24[] = {0xFF, 0xFF, 0xFF};
  static constexpr uint8_t k32[] = {0xFF, 0xFF, 0xFF, 0};
  switch (depth) {
    case 16: return k16;
    case 24: return k24;
    default: return k32;
  }
}

void complement_pixels(Picture& picture) {
  const std::span<const uint8_t> mask = color_mask(picture.header.biBitCount);
  const DibLock lock(picture.dib);
  const std::span<uint8_t> pixels = lock.pixels();
  const auto row_bytes = static_cast<size_t>(pixel_row_bytes(picture.header));
  const auto stride = static_cast<size_t>(stored_row_bytes(picture.header));
  for (uint64_t y = 0; y < row_count(picture.header); ++y) {
    const std::span<uint8_t> row = pixels.subspan(static_cast<size_t>(y) * stride, row_bytes);
    for (size_t i = 0; i < row.size(); ++i) row[i] ^= mask[i % mask.size()];
  }
}

Dib negative(Picture& picture) {
  if (picture.header.biBitCount <= 8) {
    InvertDIBPalette(picture.dib.get());
  } else {
    prepare(picture, Reach::kChangesPixels);
    complement_pixels(picture);
  }
  return std::move(picture.dib);
}

Action declare(CLI::App& app) {
  app.footer(
      "Up to 8 bits per pixel the colour table is complemented and the pixels stay, so run-length compressed pictures\n"
      "work too. At 16, 24 and 32 bits the pixels are complemented, but for the bits that are no colour. OUT has the\n"
      "format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel invert negative.bmp positive.bmp\n"
      "  vorel invert drawing.bmp drawing.bmp --overwrite");
  return declare_transform(app, negative);
}

}  // namespace

const Verb kInvert{"invert", "Make the negative of a picture: every colour becomes its complement.", declare};

}  // namespace vorel::cli
