// Division of the sums of kernels.
#pragma once

#include <cstdint>

namespace vorel::kernels {

// A division of numbers of 16 bits, truncated towards zero, as a product: (|n| * factor >> 16) >> shift. Powers of two up to
// 64 are arithmetic shifts instead, which round down.
struct Division {
  explicit Division(int32_t divisor);

  bool is_shift;
  int shift = 0;
  uint16_t factor = 0;
};

}  // namespace vorel::kernels
