#include "kernels/filter/division.h"

#include <bit>

namespace vorel::kernels {

Division::Division(int32_t divisor) {
  constexpr uint32_t kGreatestShifted = 64, kGreatestNumber = 0x7FFF;
  // The least number is its own negation, and is a valid divisor too.
  const auto positive = static_cast<uint32_t>(divisor);
  is_shift = std::has_single_bit(positive) && positive <= kGreatestShifted;
  if (!is_shift && positive > kGreatestNumber) return;  // all quotients are zero
  shift = std::bit_width(positive - 1) - (is_shift ? 0 : 1);
  if (is_shift) return;
  // Rounded up, the factor is exact for numbers of 15 bits.
  factor = static_cast<uint16_t>(((uint32_t{1} << (16 + shift)) + positive - 1) / positive);
}

}  // namespace vorel::kernels
