#include <algorithm>
#include <array>

#include "kernels/bgr.h"
#include "kernels/filter/functions.h"
#include "kernels/filter/plan.h"

// Rows are processed in blocks that stay in the first-level cache, by plain loops that the compiler vectorises. Sums are 16
// bits wide and wrap, so that products may be added in any order.
namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr size_t kBlock = 512;                             // pixels
constexpr size_t kWideBlock = kBlock + kConvolutionSlack;  // with neighbours on both sides
static_assert(kConvolutionSlack >= kMostKernelSize);

using Numbers = std::array<uint16_t, kWideBlock>;
using Rows = std::array<const uint8_t*, kMostKernelSize>;
using Columns = std::array<const uint16_t*, kMostKernelSize>;

// Rounded up to the step of the loops, so that no single pixels remain.
constexpr size_t whole_steps(size_t count) {
  return (count + kConvolutionSlack - 1) / kConvolutionSlack * kConvolutionSlack;
}

// ---- Sums ----

void widen(const uint8_t* row, uint16_t* __restrict result, size_t count) {
#pragma GCC unroll 2
  for (size_t x = 0; x < count; ++x) result[x] = row[x];
}

void widen_sum(const uint8_t* row, const uint8_t* other, uint16_t* __restrict result, size_t count) {
#pragma GCC unroll 2
  for (size_t x = 0; x < count; ++x) result[x] = static_cast<uint16_t>(row[x] + other[x]);
}

template <size_t kTerms>
void weigh(const Numbers* __restrict terms, const Plan::Weights& weights, uint16_t* __restrict result, size_t count) {
#pragma GCC unroll 2
  for (size_t x = 0; x < count; ++x) {
    uint16_t sum = 0;
    for (size_t i = 0; i < kTerms; ++i) sum = static_cast<uint16_t>(sum + weights[i] * terms[i][x]);
    result[x] = sum;
  }
}

void weigh(size_t term_count, const Numbers* terms, const Plan::Weights& weights, uint16_t* result, size_t count) {
  switch (term_count) {
    case 2: return weigh<2>(terms, weights, result, count);
    case 3: return weigh<3>(terms, weights, result, count);
    case 4: return weigh<4>(terms, weights, result, count);
    case 5: return weigh<5>(terms, weights, result, count);
    default: return weigh<7>(terms, weights, result, count);
  }
}

// The sum of kernel columns, each offset by its index.
template <size_t kSize>
[[gnu::always_inline]] inline uint16_t sum_at(const Columns& columns, size_t x) {
  uint16_t sum = 0;
  for (size_t i = 0; i < kSize; ++i) sum = static_cast<uint16_t>(sum + columns[i][x + i]);
  return sum;
}

// Part of a row, with the sums of each column of the kernel.
struct Block {
  Columns columns{};
  std::array<Numbers, kMostKernelSize> distinct;

  // Rows begin further left by the reach of the kernel.
  void sum_columns(const Plan& plan, const Rows& rows, size_t count) {
    const size_t wide = whole_steps(count + plan.size - 1);
    std::array<Numbers, kMostKernelSize> terms;
    for (size_t i = 0; i < plan.term_count; ++i) {
      const size_t opposite = plan.size - 1 - i;
      if (plan.is_symmetric && i != opposite)
        widen_sum(rows[i], rows[opposite], terms[i].data(), wide);
      else
        widen(rows[i], terms[i].data(), wide);
    }
    for (size_t i = 0; i < plan.distinct_count; ++i)
      weigh(plan.term_count, terms.data(), plan.distinct[i], distinct[i].data(), wide);
    for (size_t i = 0; i < plan.size; ++i) columns[i] = distinct[plan.column[i]].data();
  }
};

// A deliberate oddity: two of the kernels of size 5 count their outermost columns twice for the second pixel of a row, which
// affects the first and the third sum. Calls add(x, number) for each addition.
template <class Add>
void repeat_left_border(const Kernel& kernel, const Columns& columns, int width, Add add) {
  const size_t last = static_cast<size_t>(kernel.size) - 1, second = last / 2 + 1;
  if (!kernel.repeats_left_border || width < 2) return;
  add(0, columns[last][second]);
  if (width > 2) add(2, columns[0][second]);
}

// ---- Quotients ----

// Calls work with a function that divides a sum. 16 bits are enough for each step, which the compiler must be able to see.
template <class Work>
void with_quotient(const Division& division, Work work) {
  const int shift = division.shift;
  if (division.is_shift && shift == 0) return work([](int16_t sum) { return sum; });
  if (division.is_shift && shift == 1) return work([](int16_t sum) { return static_cast<int16_t>(sum >> 1); });
  if (division.is_shift) {
    const auto factor = static_cast<int16_t>(0x10000 >> shift);
    return work([factor](int16_t sum) { return static_cast<int16_t>(int32_t{sum} * factor >> 16); });
  }
  const uint16_t factor = division.factor;
  const auto rest = static_cast<uint16_t>(0x10000 >> shift);
  work([factor, rest](int16_t sum) {
    const auto magnitude = static_cast<uint16_t>(sum < 0 ? -sum : sum);
    const auto scaled = static_cast<uint16_t>(uint32_t{magnitude} * factor >> 16);
    const auto quotient = static_cast<int16_t>(uint32_t{scaled} * rest >> 16);
    return static_cast<int16_t>(sum < 0 ? -quotient : quotient);
  });
}

// ---- Rows ----

// Goes over a picture from the first stored row on. Rows and columns at the edges are repeated beyond them. A row is written
// only after all rows that need it are read, so that a picture can be filtered in place.
class Convolution {
 public:
  Convolution(const Kernel& kernel, Size size, std::span<uint8_t> scratch)
      : kernel_(kernel), plan_(kernel), size_(size), scratch_(scratch) {}

  // read(y, samples) stores the samples of a row; write(y, x, count, columns, samples) takes sums and samples of a block.
  template <class Read, class Write>
  void run(Read read, Write write) {
    for (int next = 0, y = 0; y < size_.height; ++y) {
      for (; next < size_.height && next <= y + kernel_.reach(); ++next) {
        read(next, samples(next));
        repeat_edges(samples(next));
      }
      sum_row(y, write);
    }
  }

 private:
  uint8_t* samples(int y) const {
    const size_t row = static_cast<size_t>(y % kernel_.size) * convolution_row_bytes(kernel_, size_.width);
    return scratch_.data() + row + kernel_.reach();
  }

  void repeat_edges(uint8_t* row) const {
    for (int i = 1; i <= kernel_.reach(); ++i) {
      row[-i] = row[0];
      row[size_.width - 1 + i] = row[size_.width - 1];
    }
  }

  template <class Write>
  void sum_row(int y, Write write) {
    // The first row of the kernel is for the row above, which is stored later.
    Rows rows{};
    for (int i = 0; i < kernel_.size; ++i)
      rows[static_cast<size_t>(i)] = samples(std::clamp(y + kernel_.reach() - i, 0, size_.height - 1)) - kernel_.reach();
    const auto width = static_cast<size_t>(size_.width);
    for (size_t x = 0; x < width; x += kBlock) {
      const size_t count = std::min(kBlock, width - x);
      block_.sum_columns(plan_, rows, count);
      write(y, x, count, block_.columns, samples(y) + x);
      for (int i = 0; i < kernel_.size; ++i) rows[static_cast<size_t>(i)] += kBlock;
    }
  }

  const Kernel& kernel_;
  Plan plan_;
  Size size_;
  std::span<uint8_t> scratch_;
  Block block_;
};

// ---- Greys ----

template <bool kClamps, size_t kSize, class Quotient>
void write_grays(const Kernel& kernel, const Columns& all, uint8_t* __restrict result, size_t count, bool is_first,
                 Quotient quotient) {
  const auto gray = [quotient](uint16_t wrapped) {
    auto sum = static_cast<int16_t>(wrapped);
    if (kClamps) sum = sum < 0 ? int16_t{0} : sum > 255 ? int16_t{255} : sum;
    return static_cast<uint8_t>(quotient(sum));
  };
  const Columns columns = all;
#pragma GCC unroll 2
  for (size_t x = 0; x < count; ++x) result[x] = gray(sum_at<kSize>(columns, x));
  if (is_first)
    repeat_left_border(kernel, columns, static_cast<int>(count), [&](size_t x, uint16_t more) {
      result[x] = gray(static_cast<uint16_t>(sum_at<kSize>(columns, x) + more));
    });
}

template <bool kClamps, class Quotient>
void convolve_gray_rows(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch,
                        Quotient quotient) {
  const auto read = [&](int y, uint8_t* samples) { std::memcpy(samples, source.row(y).data(), source.row(y).size()); };
  Convolution(kernel, source.size(), scratch)
      .run(read, [&](int y, size_t x, size_t count, const Columns& columns, const uint8_t*) {
        uint8_t* const to = result.row(y).data() + x;
        switch (kernel.size) {
          case 3: return write_grays<kClamps, 3>(kernel, columns, to, count, x == 0, quotient);
          case 5: return write_grays<kClamps, 5>(kernel, columns, to, count, x == 0, quotient);
          default: return write_grays<kClamps, 7>(kernel, columns, to, count, x == 0, quotient);
        }
      });
}

// ---- Colours ----

template <size_t kSize>
void add_columns(const Columns& all, uint16_t* __restrict sums, size_t count) {
  const Columns columns = all;
#pragma GCC unroll 2
  for (size_t x = 0; x < count; ++x) sums[x] = sum_at<kSize>(columns, x);
}

// All sums of a block.
void add_columns(const Kernel& kernel, const Columns& columns, uint16_t* sums, size_t count, bool is_first) {
  switch (kernel.size) {
    case 3: add_columns<3>(columns, sums, whole_steps(count)); break;
    case 5: add_columns<5>(columns, sums, whole_steps(count)); break;
    default: add_columns<7>(columns, sums, whole_steps(count)); break;
  }
  if (is_first)
    repeat_left_border(kernel, columns, static_cast<int>(count),
                       [&](size_t x, uint16_t more) { sums[x] = static_cast<uint16_t>(sums[x] + more); });
}

// Changes of intensity, increases and decreases apart; more than 255 acts as 255.
struct Change {
  std::array<uint8_t, kBlock> up, down;
};

template <class Quotient>
void find_change(const uint16_t* sums, const uint8_t* samples, size_t count, Change& __restrict change, Quotient quotient) {
  const auto to_byte = [](int16_t number) { return static_cast<uint8_t>(number < 0 ? 0 : number > 255 ? 255 : number); };
  for (size_t x = 0; x < count; ++x) {
    const auto difference = static_cast<int16_t>(quotient(static_cast<int16_t>(sums[x])) - samples[x]);
    change.up[x] = to_byte(difference);
    change.down[x] = to_byte(static_cast<int16_t>(-difference));
  }
}

// Adds and subtracts, saturated to bytes. Source and result may be the same.
void change_components(const uint8_t* source, const Change& change, uint8_t* result, size_t count) {
  size_t x = 0;
#ifdef __SSE4_1__
  // Sixteen pixels at a time, each change three times.
  constexpr size_t kStep = 16;
  constexpr auto kThrice = [] {
    std::array<uint8_t, kStep * 3> places{};
    for (size_t i = 0; i < places.size(); ++i) places[i] = static_cast<uint8_t>(i / 3);
    return places;
  }();
  for (; x + kStep <= count; x += kStep) {
    const auto up = load<__m128i>(&change.up[x]), down = load<__m128i>(&change.down[x]);
    for (size_t part = 0; part < kThrice.size(); part += kStep) {
      const auto places = load<__m128i>(&kThrice[part]);
      const auto raised = _mm_adds_epu8(load<__m128i>(source + x * 3 + part), _mm_shuffle_epi8(up, places));
      store(result + x * 3 + part, _mm_subs_epu8(raised, _mm_shuffle_epi8(down, places)));
    }
  }
#else
  // Two pixels at a time; the two bytes behind them stay as they are.
  const auto thrice = [](const uint8_t* two) {
    const uint64_t six_bytes = (two[0] | uint64_t{two[1]} << 24) * 0x010101;
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&six_bytes));
  };
  for (; x + 3 <= count; x += 2) {
    const auto raised =
        _mm_adds_epu8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(source + x * 3)), thrice(&change.up[x]));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(result + x * 3), _mm_subs_epu8(raised, thrice(&change.down[x])));
  }
#endif
  for (; x < count; ++x)
    for (size_t i = x * 3; i < x * 3 + 3; ++i)
      result[i] = static_cast<uint8_t>(std::clamp(source[i] + change.up[x] - change.down[x], 0, 255));
}

}  // namespace

void convolve_gray(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch) {
  with_quotient(Division(kernel.divisor), [&](auto quotient) {
    if (kernel.clamps_sums)
      convolve_gray_rows<true>(source, result, kernel, scratch, quotient);
    else
      convolve_gray_rows<false>(source, result, kernel, scratch, quotient);
  });
}

void convolve_color(ConstDibView source, DibView result, const Kernel& kernel, Intensity intensity,
                    std::span<uint8_t> scratch) {
  const auto read = [&](int y, uint8_t* samples) {
    const auto width = static_cast<size_t>(source.width());
    if (intensity == Intensity::kWeighted)
      weigh_row<kIntensityWeights>(source.row(y).data(), samples, width);
    else
      weigh_row<kMeanWeights>(source.row(y).data(), samples, width);
  };
  Change change;
  std::array<uint16_t, kBlock> sums;
  with_quotient(Division(kernel.divisor), [&](auto quotient) {
    Convolution(kernel, source.size(), scratch)
        .run(read, [&](int y, size_t x, size_t count, const Columns& columns, const uint8_t* samples) {
          add_columns(kernel, columns, sums.data(), count, x == 0);
          find_change(sums.data(), samples, whole_steps(count), change, quotient);
          change_components(source.row(y).data() + x * 3, change, result.row(y).data() + x * 3, count);
        });
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
