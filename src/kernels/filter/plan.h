// How a kernel is evaluated: rows with the same weights are added before weighting, and columns with the same weights are
// summed once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kernels/filter/kernel.h"

namespace vorel::kernels {

struct Plan {
  using Weights = std::array<uint16_t, kMostKernelSize>;  // wrapped to 16 bits

  explicit Plan(const Kernel& kernel);

  size_t size;
  bool is_symmetric;                                // row i weighs as much as row size - 1 - i
  size_t term_count;                                // rows, or pairs of rows, that are weighted
  size_t distinct_count = 0;                        // columns that differ
  std::array<Weights, kMostKernelSize> distinct{};  // their weights, a term each
  std::array<size_t, kMostKernelSize> column{};     // index of each column in `distinct`
};

// A division of numbers of 16 bits, truncated towards zero, as a product: (|n| * factor >> 16) >> shift. Powers of two up to
// 64 are arithmetic shifts instead, which round down.
struct Division {
  explicit Division(int32_t divisor);

  bool is_shift;
  int shift;
  uint16_t factor = 0;
};

}  // namespace vorel::kernels
