// Tone and colour of pixels: lookup tables, greys, bit expansion, histograms.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/header.h"
#include "core/view.h"
#include "kernels/levels.h"
#include "kernels/tone/histogram.h"
#include "kernels/tone/tables.h"

namespace vorel::kernels {

// Weights of the components in a grey: equal, or those of the conversion to grey.
enum class GrayRule { kMean, kWeighted };

// How many neighbours on each side a set bit spreads to.
enum class Smoothing : int { kNone = 0, kBy3 = 1, kBy5 = 2 };

// Scratch memory for rows of this width: a byte for each bit of as many rows as contribute to a pixel, and margins.
inline constexpr size_t kExpandedMargin = 4;
constexpr size_t expanded_row_bytes(int width) { return row_bytes(1, width) * 8 + 2 * kExpandedMargin; }
constexpr size_t expansion_scratch_bytes(Smoothing smoothing, int width) {
  return smoothing == Smoothing::kNone ? 0 : (static_cast<size_t>(smoothing) * 2 + 1) * expanded_row_bytes(width);
}

struct ToneTable {
  // Maps each byte of the pixels. Views have the same size and depth, and may be the same.
  void (*map_bytes)(ConstDibView source, DibView result, const ComponentTable& table);

  // Fills a 24-bit result with the colours of an 8-bit source.
  void (*look_up_colors)(ConstDibView source, DibView result, std::span<const Rgb, 256> colors);

  // Fills an 8-bit result with the greys of a 24-bit source.
  void (*gray_rows)(ConstDibView source, DibView result, GrayRule rule);

  // Fills an 8-bit result with the bits of a 1-bit source. Each set bit, or clear bit if inverted, adds up to 255. Smoothing
  // delays rows by the spread, and repeats the first source row above. Beyond its left edge a row continues with its first
  // four pixels, beyond its right edge with the last four of its last byte.
  //   scratch  expansion_scratch_bytes() or more
  void (*expand_bits)(ConstDibView source, DibView result, Smoothing smoothing, bool inverted, std::span<uint8_t> scratch);

  // Adds the pixels of a square of an 8-bit picture.
  void (*count_square)(ConstDibView picture, Corner corner, Histogram histogram);
  // Turns the counters of one square into those of another, at most half a side away in each direction, by adding the strips that
  // enter and subtracting the strips that leave.
  void (*slide_square)(ConstDibView picture, Corner from, Corner to, Histogram histogram);
};

const ToneTable& tone(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
