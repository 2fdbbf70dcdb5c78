#include <algorithm>
#include <array>

#include "kernels/bgr.h"
#include "kernels/filter/division.h"
#include "kernels/filter/functions.h"
#include "kernels/row_output.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

using Rows = std::array<const uint8_t*, kMostKernelSize>;

// The weighted sums of a vector of pixels, 16 bits each. They never overflow: neither the positive coefficients of a kernel nor
// the negative ones add up to more than 127.
struct Sums {
  SignedWords low, high;
};

// The coefficients of a kernel that are not zero, in pairs, and the samples that they weigh.
class Taps {
 public:
  explicit Taps(const Kernel& kernel) : kernel_(kernel) {
    for (int row = 0; row < kernel.size; ++row)
      for (int column = 0; column < kernel.size; ++column)
        if (weight(row, column) != 0) add(row, column);
  }

  // Rows begin further left by the reach of the kernel.
  void move_to(const Rows& rows) {
    rows_ = rows;
    for (size_t i = 0; i < count_; ++i) {
      const Place place = places_[i];
      (i % 2 == 0 ? pairs_[i / 2].first : pairs_[i / 2].second) = rows[place.row] + place.column;
    }
    if (count_ % 2 != 0) pairs_[count_ / 2].second = pairs_[count_ / 2].first;
  }

  // Two vectors from pixel x on: each address serves twice.
  static constexpr size_t kVectors = 2, kStep = kVectors * kVectorBytes;
  [[gnu::always_inline]] std::array<Sums, kVectors> sums(size_t x) const {
    Words low[kVectors]{}, high[kVectors]{};
    for (size_t i = 0; i < (count_ + 1) / 2; ++i) {
      const Pair& pair = pairs_[i];
      for (size_t k = 0; k < kVectors; ++k) {
        const auto a = load<Bytes>(pair.first + x + k * kVectorBytes), b = load<Bytes>(pair.second + x + k * kVectorBytes);
        low[k] += multiply_add(low_pairs(a, b), pair.weights);
        high[k] += multiply_add(high_pairs(a, b), pair.weights);
      }
    }
    return {Sums{(SignedWords)low[0], (SignedWords)high[0]}, Sums{(SignedWords)low[1], (SignedWords)high[1]}};
  }

  // A quirk that is kept: two of the kernels of size 5 count their outermost columns twice for the second pixel of a row, which
  // affects the first and the third sum. Calls correct(x, sum) for each of them.
  template <class Correct>
  void repeat_left_border(size_t width, Correct correct) const {
    const int last = kernel_.size - 1, second = last / 2 + 1;
    if (!kernel_.repeats_left_border || width < 2) return;
    correct(size_t{0}, sum_at(0) + column_sum(last, second));
    if (width > 2) correct(size_t{2}, sum_at(2) + column_sum(0, second));
  }

 private:
  static constexpr size_t kMostPairs = (kMostKernelSize * kMostKernelSize + 1) / 2;

  struct Place {
    size_t row, column;
  };
  struct Pair {
    const uint8_t *first, *second;
    Bytes weights;
  };

  int weight(int row, int column) const { return kernel_.weights[static_cast<size_t>(row)][static_cast<size_t>(column)]; }

  void add(int row, int column) {
    places_[count_] = {static_cast<size_t>(row), static_cast<size_t>(column)};
    const auto factor = static_cast<uint8_t>(weight(row, column));
    Bytes& weights = pairs_[count_ / 2].weights;
    if (count_ % 2 == 0)
      weights = (Bytes)(Words{} + factor);
    else
      weights |= (Bytes)(Words{} + static_cast<uint16_t>(factor << 8));
    ++count_;
  }

  // The weighted sum of a column of pixels with a column of the kernel. x counts from the first repeated pixel on the left.
  int column_sum(int column, int x) const {
    int sum = 0;
    for (int row = 0; row < kernel_.size; ++row) sum += weight(row, column) * rows_[static_cast<size_t>(row)][x];
    return sum;
  }
  int sum_at(int x) const {
    int sum = 0;
    for (int column = 0; column < kernel_.size; ++column) sum += column_sum(column, x + column);
    return sum;
  }

  const Kernel& kernel_;
  size_t count_ = 0;
  Rows rows_{};
  std::array<Place, 2 * kMostPairs> places_;
  std::array<Pair, kMostPairs> pairs_;
};

// ---- Quotients ----

// Calls work with a function that divides sums.
template <class Work>
void with_quotient(const Division& division, Work work) {
  const int shift = division.shift;
  if (division.is_shift) return work([shift](SignedWords sums) VOREL_INLINE { return sums >> shift; });
  const uint16_t factor = division.factor;
  work([factor, shift](SignedWords sums) VOREL_INLINE {
    const SignedWords signs = sums >> 15;
    const Words magnitudes = (Words)((sums ^ signs) - signs);
    return ((SignedWords)(multiply_high(magnitudes, Words{} + factor) >> shift) ^ signs) - signs;
  });
}

// ---- Rows ----

// Visits the rows of a picture from the first stored one on. Rows and columns at the edges are repeated beyond them. A row is
// written only after all rows that need it are read, so that a picture can be filtered in place.
class Convolution {
 public:
  Convolution(const Kernel& kernel, Size size, std::span<uint8_t> scratch)
      : kernel_(kernel), taps_(kernel), size_(size), scratch_(scratch) {}

  // read(y, samples) stores the samples of a row; write(y, taps, samples) writes a row of the result.
  template <class Read, class Write>
  void run(Read read, Write write) {
    for (int next = 0, y = 0; y < size_.height; ++y) {
      for (; next < size_.height && next <= y + kernel_.reach(); ++next) {
        read(next, samples(next));
        repeat_edges(samples(next));
      }
      // The first row of the kernel is for the row above, which is stored later.
      Rows rows{};
      for (int i = 0; i < kernel_.size; ++i)
        rows[static_cast<size_t>(i)] = samples(std::clamp(y + kernel_.reach() - i, 0, size_.height - 1)) - kernel_.reach();
      taps_.move_to(rows);
      write(y, taps_, samples(y));
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

  const Kernel& kernel_;
  Taps taps_;
  Size size_;
  std::span<uint8_t> scratch_;
};

// ---- Greys ----

// Quotients keep their low eight bits.
template <bool kClamps, class Quotient>
void convolve_gray_rows(ConstDibView source, DibView result, const Kernel& kernel, std::span<uint8_t> scratch,
                        Quotient quotient) {
  const RowOutput output(source, result);
  const auto grays = [quotient](SignedWords sums)
                         VOREL_INLINE { return (Words)quotient(kClamps ? clamped_to_bytes(sums) : sums) & 0xFF; };
  const auto read = [&](int y, uint8_t* samples) {
    const uint8_t* const row = source.row(y).data();
    in_vectors(0, source.row(y).size(), [&]<class V>(size_t x) VOREL_INLINE {
      __builtin_prefetch(row + x + source.stride(), 0, 2);
      store(samples + x, load<V>(row + x));
    });
  };
  Convolution(kernel, source.size(), scratch).run(read, [&](int y, const Taps& taps, const uint8_t*) {
    const auto row = result.row(y);
    output.write_vectors(row, [&](size_t begin, size_t end, uint8_t* to, auto put) VOREL_INLINE {
      for (size_t x = begin; x < end; x += Taps::kStep, to += Taps::kStep) {
        Bytes vectors[Taps::kVectors];
        const auto sums = taps.sums(x);
        for (size_t k = 0; k < Taps::kVectors; ++k) vectors[k] = pack(grays(sums[k].low), grays(sums[k].high));
        if (end - x < Taps::kStep) return void(std::memcpy(to, vectors, end - x));
        for (size_t k = 0; k < Taps::kVectors; ++k) put(to + k * kVectorBytes, vectors[k]);
      }
    });
    taps.repeat_left_border(row.size(), [&](size_t x, int sum) {
      row[x] = static_cast<uint8_t>(grays(SignedWords{} + static_cast<int16_t>(sum))[0]);
    });
  });
}

// ---- Colours ----

constexpr size_t kBlock = 512;  // pixels whose changes stay in cache
static_assert(kBlock % Taps::kStep == 0 && kConvolutionSlack >= Taps::kStep);
// Changes of intensity, increases and decreases apart; more than 255 acts as 255.
struct Change {
  std::array<uint8_t, kBlock> up, down;
};

template <class Quotient>
void find_change(const Taps& taps, const uint8_t* samples, size_t begin, size_t end, Change& change, Quotient quotient) {
  for (size_t x = begin; x < end; x += Taps::kStep) {
    const auto sums = taps.sums(x);
    for (size_t k = 0; k < Taps::kVectors; ++k) {
      const size_t at = x + k * kVectorBytes;
      const auto before = load<Bytes>(samples + at);
      const auto low = (Words)quotient(sums[k].low) - low_words(before),
                 high = (Words)quotient(sums[k].high) - high_words(before);
      store(&change.up[at - begin], pack(low, high));
      store(&change.down[at - begin], pack(-low, -high));
    }
  }
  if (begin != 0) return;
  taps.repeat_left_border(end, [&](size_t x, int sum) {
    const int difference = quotient(SignedWords{} + static_cast<int16_t>(sum))[0] - samples[x];
    change.up[x] = static_cast<uint8_t>(std::clamp(difference, 0, 255));
    change.down[x] = static_cast<uint8_t>(std::clamp(-difference, 0, 255));
  });
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
  const auto width = static_cast<size_t>(source.width());
  const auto read = [&](int y, uint8_t* samples) {
    if (intensity == Intensity::kWeighted)
      weigh_row<kIntensityWeights>(source.row(y).data(), samples, width);
    else
      weigh_row<kMeanWeights>(source.row(y).data(), samples, width);
  };
  Change change;
  with_quotient(Division(kernel.divisor), [&](auto quotient) {
    Convolution(kernel, source.size(), scratch).run(read, [&](int y, const Taps& taps, const uint8_t* samples) {
      for (size_t x = 0; x < width; x += kBlock) {
        const size_t end = std::min(x + kBlock, width);
        find_change(taps, samples, x, end, change, quotient);
        change_components(source.row(y).data() + x * 3, change, result.row(y).data() + x * 3, end - x);
      }
    });
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
