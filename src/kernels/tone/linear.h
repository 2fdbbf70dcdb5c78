// Tables that are straight lines between two limits.
#pragma once

#include <optional>

#include "kernels/tone/tables.h"

namespace vorel::kernels {

// Level i becomes (i * factor + offset) >> shift, clamped to the table's limits. The factor is a signed number of 16 bits.
struct LinearTable {
  int factor, offset, shift;
  uint8_t least, most;

  // None unless a line gives every entry of the table exactly.
  static std::optional<LinearTable> of(const ComponentTable& table);
};

}  // namespace vorel::kernels
