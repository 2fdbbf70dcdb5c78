// Square kernels, and cleaning by the eight neighbours of each pixel.
#pragma once

#include <cstdint>
#include <span>

#include "core/view.h"
#include "kernels/filter/kernel.h"
#include "kernels/levels.h"

namespace vorel::kernels {

// The intensity that colour filters work on.
enum class Intensity { kMean, kWeighted };

// Which pixels cleaning may change: see the kernels below.
enum class Reach { kGentle, kFull };

struct FilterTable {
  // Filters an 8-bit picture, whose pixels count as grey levels. Source and result may be the same.
  //   scratch  convolution_scratch_bytes() or more
  void (*convolve_gray)(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch);

  // Filters the intensity of a 24-bit picture and adds its change to every component. Otherwise as above.
  void (*convolve_color)(ConstDibView source, DibView result, const Kernel& kernel, Intensity intensity,
                         std::span<uint8_t> scratch);

  // Sets pixels of a 1-bit picture with more than `threshold` set neighbours, 1 to 8, and clears pixels with fewer. kGentle
  // changes only pixels with fewer than four. The first and last stored row do not change, nor the first pixel of each row, nor
  // the last pixel unless it ends a byte. The right neighbour of a row's last bit is the next bit in memory.
  //   source  the stored rows and the memory behind them
  //   result  a copy of the rows
  void (*clean_bits)(std::span<const uint8_t> source, DibView result, int threshold, Reach reach);

  // Replaces each pixel of an 8-bit picture by the neighbour of this rank, from 1 for the smallest to 8. kGentle replaces only
  // pixels below 5 or above 250. Pixels at the edges do not change. `result` is filled.
  void (*take_rank)(ConstDibView source, DibView result, int rank, Reach reach);
};

const FilterTable& filter(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
