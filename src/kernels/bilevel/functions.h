// The functions of the table, compiled for one level.
#pragma once

#include "kernels/bilevel/bilevel.h"

namespace vorel::kernels::VOREL_LEVEL {

void dither(ConstDibView source, std::span<const Rgb> colors, DibView result, Dithering method, std::span<uint8_t> scratch);
void halftone(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness,
              DibView result, HalftoneMethod method, std::span<uint8_t> scratch);

}  // namespace vorel::kernels::VOREL_LEVEL
