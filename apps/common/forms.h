// The forms that pictures come in, and the ways to those that the library works on.
#pragma once

#include "common/picture.h"

namespace vorel::programs {

// Run-length codes drawn out. The colour table becomes as long as the depth has colours.
Picture expanded(Picture picture);

// The same, stored bottom row first.
Picture upright(Picture picture);

// The same with 1, 4, 8 or 24 bits to a pixel: the form that operations work on. 16 bits are five for each colour. What 32 bits
// have besides colours is dropped.
Picture workable(Picture picture);

// A row of 16 or 32 bits to a pixel in that form, with 24 bits.
void row_in_true_color(std::span<const uint8_t> from, uint8_t* to, int width, int depth);

// A colour table of as many entries as the depth has, where it is shorter: most of the library assumes that.
Picture with_whole_table(Picture picture);

// The same picture with 24 bits to a pixel.
Picture in_true_color(Picture picture);

// Greys of 8 bits by (30 red + 59 green + 11 blue) / 100, of a workable picture.
Picture luminance_of(const Picture& picture);

// Whether the table of 8 bits goes from black to white in steps of one, so that pixels are greys.
bool has_gray_ramp(const Picture& picture);

}  // namespace vorel::programs
