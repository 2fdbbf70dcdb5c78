// Square kernels: those that come with the library, and callers' own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vorel::kernels {

inline constexpr int kMostKernelSize = 7;

// The kinds of filter by the numbers that callers give.
enum class FilterType : int { kFromMemory = 1, kFromFile, kBox, kBlur, kSharpen, kSharpenMore };

// A kernel as people write it: its first row for the row above in the picture, its first column for the left neighbour.
struct Kernel {
  int size = 0;  // 3, 5 or 7
  std::array<std::array<int16_t, kMostKernelSize>, kMostKernelSize> weights{};
  int32_t divisor = 1;
  bool clamps_sums = false;          // to what a byte holds, before they are divided
  bool repeats_left_border = false;  // see add_left_border()

  int reach() const { return size / 2; }
  int weight(int row, int column) const { return weights[static_cast<size_t>(row)][static_cast<size_t>(column)]; }
};

// One of the kernels that come with the library: kBox of size 3, 5 or 7, the others of size 3 or 5.
Kernel built_in_kernel(FilterType type, int size);

// A caller's kernel: size x size coefficients and the divisor. False if they are out of bounds.
bool set_coefficients(Kernel& kernel, std::span<const int32_t> numbers);

// What filtering a picture of this width needs: as many rows as the kernel has, with their edges repeated and room for vectors to
// read on.
inline constexpr size_t kConvolutionSlack = 64;
constexpr size_t convolution_row_bytes(const Kernel& kernel, int width) {
  return static_cast<size_t>(width) + static_cast<size_t>(kernel.size) + kConvolutionSlack;
}
constexpr size_t convolution_scratch_bytes(const Kernel& kernel, int width) {
  return static_cast<size_t>(kernel.size) * convolution_row_bytes(kernel, width);
}

}  // namespace vorel::kernels
