#include "kernels/bilevel/bilevel.h"

namespace vorel::kernels {

namespace {

constexpr uint64_t kPastEnds = 16'384;  // of all rows together

}  // namespace

// Streams and masks take two bytes a column, bits a row for each channel, and blocks of two by two a row of samples.
ByteCount dithering_scratch(Size picture, int bits, Dithering method) {
  const uint64_t channels = bits == 1 ? 1 : 3;
  const bool makes_blocks = method == Dithering::kSmooth || method == Dithering::kSharp;
  const uint64_t streams = method == Dithering::kFloydSteinberg ? 1 : 2 * channels;
  const uint64_t per_column = 2 * streams + 2 * channels + 1 + (makes_blocks ? channels : 0);
  return per_column * static_cast<uint64_t>(picture.width) + kPastEnds;
}

ByteCount halftone_scratch(Size picture, HalftoneMethod method) {
  if (method != HalftoneMethod::kDiffusion) return 0;
  return dithering_scratch(picture, 1, Dithering::kJarvisJudiceNinke);
}

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
