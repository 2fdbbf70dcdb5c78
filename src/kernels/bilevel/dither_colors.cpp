#include "kernels/bilevel/bilevel.h"

namespace vorel::kernels {

// Six streams and three rows of masks of two bytes a column, a row of samples or bits for each of three channels, and what goes
// past the ends of each.
ByteCount dithering_scratch(Size picture) {
  constexpr uint64_t kPerColumn = 22, kRest = 16'384;
  return kPerColumn * static_cast<uint64_t>(picture.width) + kRest;
}

ByteCount halftone_scratch(Size picture) { return dithering_scratch(picture); }

void write_dither_colors(int bits, std::span<Rgb> colors) {
  const auto full = [](size_t condition) { return static_cast<uint8_t>(condition != 0 ? 255 : 0); };
  for (size_t i = 0; i < colors.size(); ++i) {
    if (bits == 1)
      colors[i] = {full(i), full(i), full(i), 0};
    else if (bits == 4)
      colors[i] = {full(i & 2), full(i & 4), full(i & 8), full(i & 1)};
    else
      colors[i] = {static_cast<uint8_t>((i & 3) * 85), static_cast<uint8_t>((i >> 2 & 7) * 36),
                   static_cast<uint8_t>((i >> 5) * 36), 0};
  }
}

}  // namespace vorel::kernels
