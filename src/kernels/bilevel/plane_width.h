// How long the rows of a picture that is reduced are.
#pragma once

#include <cstddef>

namespace vorel::kernels {

// Pixels that a row of 4, 8 or 24 bits is taken to have: those that only fill it up count below 24 bits, and at 24 bits as many
// more as make four.
constexpr size_t plane_width(int depth, int width) {
  const size_t unit = depth == 4 ? 8 : 4;
  return (static_cast<size_t>(width) + unit - 1) / unit * unit;
}

}  // namespace vorel::kernels
