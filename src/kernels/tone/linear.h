// Tables that are straight lines within the limits of a byte.
#pragma once

#include <optional>

#include "kernels/tone/tables.h"

namespace vorel::kernels {

// Level i becomes (i * factor + offset) >> shift, limited to what a byte holds. The factor is a signed number of 16 bits.
struct LinearTable {
  int factor, offset, shift;

  // None where no such line gives every entry of the table exactly.
  static std::optional<LinearTable> of(const ComponentTable& table);
};

}  // namespace vorel::kernels
