// Square kernels, built in or given by callers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/byte_count.h"

namespace vorel::kernels {

inline constexpr int kMostKernelSize = 7;

// Filter types; the values are those of the exports.
enum class FilterType : int { kFromMemory = 1, kFromFile, kBox, kBlur, kSharpen, kSharpenMore };

// Weights as written: the first row belongs to the row above in the picture, the first column to the left neighbour.
struct Kernel {
  int size = 0;  // 3, 5 or 7
  std::array<std::array<int16_t, kMostKernelSize>, kMostKernelSize> weights{};
  int32_t divisor = 1;
  bool clamps_sums = false;          // to 0 to 255, before the division
  bool repeats_left_border = false;  // see repeat_left_border()

  int reach() const { return size / 2; }
};

// Of size 3 or 5; kBox of size 7 too.
Kernel built_in_kernel(FilterType type, int size);

// A caller's kernel: size x size coefficients and the divisor. False if they are out of bounds.
bool set_coefficients(Kernel& kernel, std::span<const int32_t> numbers);

// Scratch memory for a picture of this width: as many rows as the kernel has, each with repeated edges and room for
// overreads.
inline constexpr size_t kConvolutionSlack = 64;
constexpr size_t convolution_row_bytes(const Kernel& kernel, int width) {
  return static_cast<size_t>(width) + static_cast<size_t>(kernel.size) + kConvolutionSlack;
}
constexpr ByteCount convolution_scratch_bytes(const Kernel& kernel, int width) {
  return ByteCount(static_cast<uint64_t>(kernel.size)) * convolution_row_bytes(kernel, width);
}

}  // namespace vorel::kernels
