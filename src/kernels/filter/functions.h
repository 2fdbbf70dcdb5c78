// The functions of the table, compiled for one level.
#pragma once

#include "kernels/filter/filter.h"

namespace vorel::kernels::VOREL_LEVEL {

void convolve_gray(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch);
void convolve_color(ConstDibView source, DibView result, const Kernel& kernel, Intensity intensity,
                    std::span<uint8_t> scratch);
void clean_bits(std::span<const uint8_t> source, DibView result, int threshold, Reach reach);
void take_rank(ConstDibView source, DibView result, int rank, Reach reach);

}  // namespace vorel::kernels::VOREL_LEVEL
