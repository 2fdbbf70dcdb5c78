// Reducing pictures to black and white, or to few fixed colours.
#pragma once

#include <cstdint>
#include <span>

#include "core/byte_count.h"
#include "core/header.h"
#include "core/view.h"
#include "kernels/levels.h"

namespace vorel::kernels {

enum class Dithering { kFloydSteinberg, kJarvisJudiceNinke, kSmooth, kSharp };
enum class HalftoneMethod : uint16_t { kThreshold = 0, kDiffusion = 1, kOrdered = 2 };
inline constexpr int kHalftonePeriod = 16;  // rows and columns of the matrix of thresholds

// Scratch memory for the functions below, aligned to 8 bytes.
ByteCount dithering_scratch(Size picture, int bits, Dithering method);
ByteCount halftone_scratch(Size picture, HalftoneMethod method);

struct BilevelTable {
  // Error diffusion. Fills a zero-filled result of 1, 4 or (not kSmooth and kSharp) 8 bits and of the source's width. Rows that the
  // source lacks are zero.
  //   colors  16 or 256 below 24 bits
  void (*dither)(ConstDibView source, std::span<const Rgb> colors, DibView result, Dithering method,
                 std::span<uint8_t> scratch);

  // A threshold, error diffusion or a matrix of thresholds. Fills a zero-filled 1-bit result from a source of 4, 8 or 24 bits.
  //   memory      the source's stored rows and the bytes behind them; bytes past its end count as 0
  //   colors      16 or 256 below 24 bits
  //   brightness  added to the luminance of each pixel
  void (*halftone)(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness,
                   DibView result, HalftoneMethod method, std::span<uint8_t> scratch);
};

const BilevelTable& bilevel(CpuLevel level = cpu_level());

// The fixed colours of results of this depth: black and white; each of red, green and blue on or off; eight reds, eight
// greens and four blues.
void write_dither_colors(int bits, std::span<Rgb> colors);

}  // namespace vorel::kernels
