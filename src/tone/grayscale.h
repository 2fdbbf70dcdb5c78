// Greys of colours, and of black and white pixels smoothed.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "dib/header.h"
#include "dib/view.h"

namespace vorel {

enum class GrayRule { kMean, kWeighted };

constexpr uint8_t gray_of(Rgb color, GrayRule rule) {
  if (rule == GrayRule::kMean) return static_cast<uint8_t>((color.blue + color.green + color.red) / 3);
  return static_cast<uint8_t>((8 * color.red + 15 * color.green + 3 * color.blue) / 26);
}

// Fills an 8-bit result with the greys of a 24-bit source.
void gray_rows(ConstDibView source, DibView result, GrayRule rule);

// Over how many neighbours each way a set bit is spread.
enum class Smoothing : int { kNone = 0, kBy3 = 1, kBy5 = 2 };

// Fills an 8-bit result with the bits of a 1-bit source, of which each set one, or each clear one if inverted, counts up to 255.
// Smoothed rows come out later by as many as a bit is spread: the first source row stands in above. Beyond the left edge a row
// goes on with its first four pixels, beyond the right one with the last four of its last byte. Source rows are whole in memory,
// padding included. Memory that runs short is thrown as std::bad_alloc.
void expand_bits(ConstDibView source, DibView result, Smoothing smoothing, bool inverted);

}  // namespace vorel
