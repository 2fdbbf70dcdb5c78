// Tone and colour of pixels: tables, greys, counts.
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

// How much each component counts in a grey: alike, or by the weights of the conversion to grey.
enum class GrayRule { kMean, kWeighted };

// Over how many neighbours each way a set bit is spread.
enum class Smoothing : int { kNone = 0, kBy3 = 1, kBy5 = 2 };

// What smoothing rows of this width needs: a byte for each bit of as many rows as a pixel sees, and margins.
inline constexpr size_t kExpandedMargin = 4;
constexpr size_t expanded_row_bytes(int width) { return row_bytes(1, width) * 8 + 2 * kExpandedMargin; }
constexpr size_t expansion_scratch_bytes(Smoothing smoothing, int width) {
  return smoothing == Smoothing::kNone ? 0 : (static_cast<size_t>(smoothing) * 2 + 1) * expanded_row_bytes(width);
}

struct ToneTable {
  // Each byte of the source's pixels becomes the table's value for it; both views are of the same size and depth.
  void (*map_bytes)(ConstDibView source, DibView result, const ComponentTable& table);

  // Fills a 24-bit result with the colours of an 8-bit source.
  void (*look_up_colors)(ConstDibView source, DibView result, std::span<const Rgb, 256> colors);

  // Fills an 8-bit result with the greys of a 24-bit source.
  void (*gray_rows)(ConstDibView source, DibView result, GrayRule rule);

  // Fills an 8-bit result with the bits of a 1-bit source. Each set bit, or clear bit if inverted, adds up to 255. Smoothed rows
  // come out later by the spread: the first source row stands in above. Beyond its left edge a row continues with its first four
  // pixels, beyond its right edge with the last four of its last byte.
  //   scratch  expansion_scratch_bytes() or more
  void (*expand_bits)(ConstDibView source, DibView result, Smoothing smoothing, bool inverted, std::span<uint8_t> scratch);

  // Counts a square of an 8-bit picture anew.
  void (*count_square)(ConstDibView picture, Corner corner, Histogram histogram);
  // Makes the counters of one square those of another that is at most half a side away in each direction, by what enters and
  // what leaves.
  void (*slide_square)(ConstDibView picture, Corner from, Corner to, Histogram histogram);
};

const ToneTable& tone(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
