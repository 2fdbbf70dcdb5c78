#include <algorithm>

#include "core/gray.h"
#include "kernels/filter/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Runs over a picture from the first stored row on. Rows and columns at the edges are repeated beyond them. What comes out of a row
// is written only after all rows that need it are read, so that a picture can be filtered in place.
class Convolution {
 public:
  Convolution(const Kernel& kernel, Size size, std::span<uint8_t> scratch)
      : kernel_(kernel),
        width_(size.width),
        height_(size.height),
        sums_(reinterpret_cast<int16_t*>(scratch.data()), static_cast<size_t>(width_)),
        rows_(scratch.subspan(sums_.size_bytes())) {}

  // read(y, samples) puts the samples of a row; write(y, sums, samples) gets a row's sums, which it may change, and its samples.
  void run(auto&& read, auto&& write) {
    for (int next = 0, y = 0; y < height_; ++y) {
      for (; next < height_ && next <= y + kernel_.reach(); ++next) {
        read(next, samples(next));
        repeat_edges(next);
      }
      sum_row(y);
      write(y, sums_, std::span<const uint8_t>(samples(y)));
    }
  }

 private:
  std::span<uint8_t> stored(int y) {
    const auto length = static_cast<size_t>(width_ + 2 * kernel_.reach());
    return rows_.subspan(static_cast<size_t>(y % kernel_.size) * length, length);
  }
  std::span<uint8_t> samples(int y) { return stored(y).subspan(static_cast<size_t>(kernel_.reach()), sums_.size()); }
  void repeat_edges(int y);
  void sum_row(int y);
  void add_left_border(const uint8_t* row, int kernel_row);

  Kernel kernel_;
  int width_, height_;
  std::span<int16_t> sums_;  // of products, for one row
  std::span<uint8_t> rows_;  // as many as the kernel has, each with its edges repeated
};

void Convolution::repeat_edges(int y) {
  const std::span<uint8_t> row = stored(y);
  const auto reach = static_cast<std::ptrdiff_t>(kernel_.reach());
  std::fill(row.begin(), row.begin() + reach, row[static_cast<size_t>(reach)]);
  std::fill(row.end() - reach, row.end(), *(row.end() - reach - 1));
}

void Convolution::sum_row(int y) {
  std::ranges::fill(sums_, int16_t{0});
  for (int row = 0; row < kernel_.size; ++row) {
    // The first row of the kernel is for the row above, which is stored later.
    const uint8_t* const source = stored(std::clamp(y + kernel_.reach() - row, 0, height_ - 1)).data();
    for (int column = 0; column < kernel_.size; ++column) {
      const auto weight = static_cast<int16_t>(kernel_.weight(row, column));
      if (weight == 0) continue;
      const uint8_t* const shifted = source + column;
      int16_t* const sums = sums_.data();
      for (int x = 0; x < width_; ++x) sums[x] = static_cast<int16_t>(sums[x] + weight * shifted[x]);
    }
    if (kernel_.repeats_left_border) add_left_border(source, row);
  }
}

// Two of the kernels of size 5 count their outermost columns twice for the second pixel of a row. Callers count on what comes of
// it.
void Convolution::add_left_border(const uint8_t* row, int kernel_row) {
  if (width_ < 2) return;
  const int second = row[kernel_.reach() + 1];
  sums_[0] = static_cast<int16_t>(sums_[0] + kernel_.weight(kernel_row, kernel_.size - 1) * second);
  if (width_ > 2) sums_[2] = static_cast<int16_t>(sums_[2] + kernel_.weight(kernel_row, 0) * second);
}

// Divides sums in place. Cutting towards zero is exact in single precision for sums of 16 bits.
void divide(std::span<int16_t> sums, int32_t divisor, auto&& shifted) {
  for (int bits = 0; bits <= 6; ++bits) {
    if (divisor != 1 << bits) continue;
    for (int16_t& sum : sums) sum = shifted(sum, bits);
    return;
  }
  const auto by = static_cast<float>(divisor);
  for (int16_t& sum : sums) sum = static_cast<int16_t>(static_cast<float>(sum) / by);
}

}  // namespace

void convolve_gray(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch) {
  // Sums have 32 bits here as far as callers can tell: negative ones become large numbers when they are shifted.
  const auto shifted = [](int16_t sum, int bits) {
    return static_cast<int16_t>(static_cast<uint32_t>(int32_t{sum}) >> bits);
  };
  Convolution convolution(kernel, source.size(), scratch);
  convolution.run([&](int y, std::span<uint8_t> samples) { std::ranges::copy(source.row(y), samples.begin()); },
                  [&](int y, std::span<int16_t> sums, std::span<const uint8_t>) {
                    if (kernel.clamps_sums)
                      for (int16_t& sum : sums) sum = std::clamp<int16_t>(sum, 0, 255);
                    divide(sums, kernel.divisor, shifted);
                    std::ranges::transform(sums, result.row(y).begin(),
                                           [](int16_t sum) { return static_cast<uint8_t>(sum); });
                  });
}

void convolve_color(ConstDibView source, DibView result, const Kernel& kernel, Intensity intensity,
                    std::span<uint8_t> scratch) {
  const auto read = [&](auto intensity_of) {
    return [&, intensity_of](int y, std::span<uint8_t> samples) {
      const uint8_t* pixel = source.row(y).data();
      for (uint8_t& sample : samples) {
        sample = intensity_of(Rgb{pixel[0], pixel[1], pixel[2], 0});
        pixel += 3;
      }
    };
  };
  const auto shifted = [](int16_t sum, int bits) { return static_cast<int16_t>(sum >> bits); };
  const auto write = [&](int y, std::span<int16_t> sums, std::span<const uint8_t> samples) {
    divide(sums, kernel.divisor, shifted);
    const uint8_t* pixel = source.row(y).data();
    uint8_t* to = result.row(y).data();
    for (size_t x = 0; x < sums.size(); ++x) {
      const int change = static_cast<int16_t>(sums[x] - samples[x]);
      for (int component = 0; component < 3; ++component)
        *to++ = static_cast<uint8_t>(std::clamp(*pixel++ + change, 0, 255));
    }
  };
  Convolution convolution(kernel, source.size(), scratch);
  if (intensity == Intensity::kWeighted)
    convolution.run(read([](Rgb color) { return weighted_intensity_of(color); }), write);
  else
    convolution.run(read([](Rgb color) { return mean_of(color); }), write);
}

}  // namespace vorel::kernels::VOREL_LEVEL
