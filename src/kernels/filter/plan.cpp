#include "kernels/filter/plan.h"

#include <algorithm>
#include <bit>

namespace vorel::kernels {

Plan::Plan(const Kernel& kernel) : size(static_cast<size_t>(kernel.size)) {
  is_symmetric = true;
  for (size_t row = 0; row < size; ++row) is_symmetric &= kernel.weights[row] == kernel.weights[size - 1 - row];
  term_count = is_symmetric ? size / 2 + 1 : size;
  for (size_t i = 0; i < size; ++i) {
    Weights weights{};
    for (size_t term = 0; term < term_count; ++term) weights[term] = static_cast<uint16_t>(kernel.weights[term][i]);
    const auto known = distinct.begin() + static_cast<std::ptrdiff_t>(distinct_count);
    const auto found = std::find(distinct.begin(), known, weights);
    column[i] = static_cast<size_t>(found - distinct.begin());
    if (found == known) distinct[distinct_count++] = weights;
  }
}

Division::Division(int32_t divisor) {
  constexpr uint32_t kGreatestShifted = 64, kGreatestNumber = 0x7FFF;
  // The least number is its own negation, and is a valid divisor too.
  const auto positive = static_cast<uint32_t>(divisor);
  is_shift = std::has_single_bit(positive) && positive <= kGreatestShifted;
  shift = std::bit_width(positive - 1) - (is_shift ? 0 : 1);
  if (is_shift || positive > kGreatestNumber) return;
  // Rounded up, the factor is exact for numbers of 15 bits.
  factor = static_cast<uint16_t>(((uint32_t{1} << (16 + shift)) + positive - 1) / positive);
}

}  // namespace vorel::kernels
