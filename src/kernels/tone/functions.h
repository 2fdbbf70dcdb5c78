// The functions of the table, compiled for one level.
#pragma once

#include "kernels/tone/tone.h"

namespace vorel::kernels::VOREL_LEVEL {

void map_bytes(ConstDibView source, DibView result, const ComponentTable& table);
void look_up_colors(ConstDibView source, DibView result, std::span<const Rgb, 256> colors);
void gray_rows(ConstDibView source, DibView result, GrayRule rule);
void expand_bits(ConstDibView source, DibView result, Smoothing smoothing, bool inverted, std::span<uint8_t> scratch);
void count_square(ConstDibView picture, Corner corner, Histogram histogram);
void slide_square(ConstDibView picture, Corner from, Corner to, Histogram histogram);

}  // namespace vorel::kernels::VOREL_LEVEL
