// Shearing a picture into a parallelogram by moving whole rows or columns.
#pragma once

#include <cstdint>

namespace vorel::kernels {

// How far row or column `at` of `count` moves, in units of 1/scale pixel, rounded down. With a positive offset the last one
// moves furthest, else the first, which moves by all of it.
constexpr uint64_t shift_of(int at, int count, int32_t offset, int scale = 1) {
  const auto most = static_cast<uint64_t>(scale) * static_cast<uint64_t>(offset < 0 ? -int64_t{offset} : offset);
  return most * static_cast<uint64_t>(offset > 0 ? at : count - at) / static_cast<uint64_t>(count);
}

}  // namespace vorel::kernels
