// The row length of a picture that is reduced.
#pragma once

#include <cstddef>

namespace vorel::kernels {

// Pixels assumed in a row of 4, 8 or 24 bits. Below 24 bits the padding counts; at 24 bits the width is rounded up to a
// multiple of four.
constexpr size_t plane_width(int depth, int width) {
  const size_t unit = depth == 4 ? 8 : 4;
  return (static_cast<size_t>(width) + unit - 1) / unit * unit;
}

}  // namespace vorel::kernels
