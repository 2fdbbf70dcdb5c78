// Filtering one plane of 8-bit samples with a square kernel.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace vorel {

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

// Sums of products, for one row.
using Sums = std::vector<int16_t>;

// Runs over a picture from the first stored row on. Rows and columns at the edges are repeated beyond them. What comes out of a row
// is written only after all rows that need it are read, so that a picture can be filtered in place.
class Convolution {
 public:
  Convolution(const Kernel& kernel, int width, int height)
      : kernel_(kernel), width_(width), height_(height), sums_(static_cast<size_t>(width)) {
    for (int i = 0; i < kernel.size; ++i) rows_.emplace_back(static_cast<size_t>(width + 2 * kernel.reach()));
  }

  // read(y, samples) puts the samples of a row; write(y, sums, samples) gets a row's sums, which it may change, and its samples.
  void run(auto&& read, auto&& write) {
    for (int next = 0, y = 0; y < height_; ++y) {
      for (; next < height_ && next <= y + kernel_.reach(); ++next) {
        read(next, samples(next));
        repeat_edges(next);
      }
      sum_row(y);
      write(y, std::span(sums_), std::span<const uint8_t>(samples(y)));
    }
  }

 private:
  std::vector<uint8_t>& stored(int y) { return rows_[static_cast<size_t>(y % kernel_.size)]; }
  std::span<uint8_t> samples(int y) {
    return std::span(stored(y)).subspan(static_cast<size_t>(kernel_.reach()), sums_.size());
  }
  void repeat_edges(int y);
  void sum_row(int y);
  void add_left_border(const uint8_t* row, int kernel_row);

  Kernel kernel_;
  int width_, height_;
  std::vector<std::vector<uint8_t>> rows_;  // as many as the kernel has, with room for what is repeated
  Sums sums_;
};

}  // namespace vorel
