// The functions of the table, compiled for one level.
#pragma once

#include "kernels/scale/scale.h"

namespace vorel::kernels::VOREL_LEVEL {

Interpolate scale_colors, scale_levels;
void scale_nearest(ConstDibView source, Rect rect, DibView result, std::span<uint8_t> scratch);

}  // namespace vorel::kernels::VOREL_LEVEL
