#include "kernels/filter/kernel.h"

#include <algorithm>
#include <cstdlib>

namespace vorel::kernels {
namespace {

constexpr int kMostWeight = 127;  // of a coefficient, of the positive sum and of the negative sum

using Rows3 = std::array<std::array<int16_t, 3>, 3>;
using Rows5 = std::array<std::array<int16_t, 5>, 5>;

constexpr Rows3 kBlur3 = {{{1, 2, 1}, {2, 4, 2}, {1, 2, 1}}};
constexpr Rows5 kBlur5 = {{{0, 1, 1, 1, 0}, {1, 2, 4, 2, 1}, {1, 4, 8, 4, 1}, {1, 2, 4, 2, 1}, {0, 1, 1, 1, 0}}};
constexpr Rows3 kSharpen3 = {{{0, -1, 0}, {-1, 5, -1}, {0, -1, 0}}};
constexpr Rows5 kSharpen5 = {
    {{-1, -2, -1, -2, -1}, {-2, 1, 3, 1, -2}, {-1, 3, 9, 3, -1}, {-2, 1, 3, 1, -2}, {-1, -2, -1, -2, -1}}};
constexpr Rows3 kSharpenMore3 = {{{-1, -1, -1}, {-1, 9, -1}, {-1, -1, -1}}};
constexpr Rows5 kSharpenMore5 = {
    {{-1, -2, -4, -2, -1}, {-2, 1, 4, 1, -2}, {-4, 4, 17, 4, -4}, {-2, 1, 4, 1, -2}, {-1, -2, -4, -2, -1}}};

template <size_t kSize>
Kernel kernel_of(const std::array<std::array<int16_t, kSize>, kSize>& rows, int32_t divisor, bool clamps_sums) {
  Kernel kernel{.size = static_cast<int>(kSize), .divisor = divisor, .clamps_sums = clamps_sums};
  for (size_t i = 0; i < kSize; ++i) std::ranges::copy(rows[i], kernel.weights[i].begin());
  return kernel;
}

Kernel box(int size) {
  Kernel kernel{.size = size, .divisor = size * size};
  for (int i = 0; i < size; ++i) std::fill_n(kernel.weights[static_cast<size_t>(i)].begin(), size, int16_t{1});
  return kernel;
}

}  // namespace

Kernel built_in_kernel(FilterType type, int size) {
  const bool is_small = size == 3;
  Kernel kernel;
  switch (type) {
    case FilterType::kBlur: kernel = is_small ? kernel_of(kBlur3, 16, false) : kernel_of(kBlur5, 44, false); break;
    case FilterType::kSharpen: kernel = is_small ? kernel_of(kSharpen3, 1, true) : kernel_of(kSharpen5, 1, true); break;
    case FilterType::kSharpenMore:
      kernel = is_small ? kernel_of(kSharpenMore3, 1, true) : kernel_of(kSharpenMore5, 1, true);
      break;
    default: return box(size);
  }
  kernel.repeats_left_border = !is_small && type != FilterType::kSharpen;
  return kernel;
}

bool set_coefficients(Kernel& kernel, std::span<const int32_t> numbers) {
  int positive = 0, negative = 0;
  for (int row = 0; row < kernel.size; ++row)
    for (int column = 0; column < kernel.size; ++column) {
      const int32_t weight =
          numbers[static_cast<size_t>(row) * static_cast<size_t>(kernel.size) + static_cast<size_t>(column)];
      if (weight > kMostWeight || weight < -kMostWeight) return false;
      (weight > 0 ? positive : negative) += std::abs(weight);
      kernel.weights[static_cast<size_t>(row)][static_cast<size_t>(column)] = static_cast<int16_t>(weight);
    }
  if (positive > kMostWeight || negative > kMostWeight) return false;
  kernel.divisor = numbers.back();
  if (kernel.divisor == 0) kernel.divisor = positive - negative;
  if (kernel.divisor == 0) kernel.divisor = 1;
  kernel.clamps_sums = positive != 0 && negative != 0;
  if (kernel.divisor < 0) {
    kernel.divisor = static_cast<int32_t>(0 - static_cast<uint32_t>(kernel.divisor));
    for (auto& row : kernel.weights)
      for (int16_t& weight : row) weight = static_cast<int16_t>(-weight);
  }
  return true;
}

}  // namespace vorel::kernels
