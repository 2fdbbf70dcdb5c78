// Filtering with square kernels, and taking specks off by what the eight neighbours of a pixel are.
#pragma once

#include <cstdint>
#include <span>

#include "core/view.h"
#include "kernels/filter/kernel.h"
#include "kernels/levels.h"

namespace vorel::kernels {

// The intensity of a colour that its filter works on: the mean of its components, or a weighted one.
enum class Intensity { kMean, kWeighted };

enum class Reach { kGentle, kFull };

struct FilterTable {
  // Filters an 8-bit picture, whose pixels count as grey levels. Source and result may be the same.
  //   scratch  convolution_scratch_bytes() or more
  void (*convolve_gray)(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch);

  // Filters the intensity of a 24-bit picture and adds its change to every component. The rest as above.
  void (*convolve_color)(ConstDibView source, DibView result, const Kernel& kernel, Intensity intensity,
                         std::span<uint8_t> scratch);

  // Sets pixels of a 1-bit picture that have more than `threshold` set neighbours and clears those that have fewer; gently, only
  // pixels with fewer than four. The first and the last stored row, the first pixel of each row and, unless rows fill whole
  // bytes, the last one stay. The right neighbour of a row's last bit is the next bit in memory.
  //   source  the stored rows, with whatever follows them in memory
  //   result  a copy of them
  void (*clean_bits)(std::span<const uint8_t> source, DibView result, int threshold, Reach reach);

  // Gives pixels of an 8-bit picture the value of their neighbour of a rank, 1 for the smallest to 8; gently, only pixels that
  // are nearly black or nearly white. Edges stay. `result` is a copy of `source`.
  void (*take_rank)(ConstDibView source, DibView result, int rank, Reach reach);
};

const FilterTable& filter(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
