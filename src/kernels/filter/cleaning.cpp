#include <algorithm>
#include <array>
#include <iterator>
#include <type_traits>
#include <utility>

#include "kernels/filter/functions.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// ---- Bits ----

// Pixels of a row, and the same shifted so that each pixel's neighbour is in its place.
template <class V>
struct Pixels {
  V left, here, right;
};

template <class V>
[[gnu::always_inline]] inline Pixels<V> pixels_at(const uint8_t* byte) {
  const V here = load<V>(byte);
  return {here >> 1 | load<V>(byte - 1) << 7, here, here << 1 | load<V>(byte + 1) >> 7};
}

// Numbers from 0 to 3, one for each pixel, in binary.
template <class V>
struct Sum {
  V ones, twos;
};

template <class V>
[[gnu::always_inline]] inline Sum<V> sum_of(V a, V b, V c) {
  return {a ^ b ^ c, (a & b) | (c & (a ^ b))};
}

// The number of set neighbours of each pixel, in binary.
template <class V>
struct Count {
  V bits[4];

  template <int kNumber>
  [[gnu::always_inline]] V at_least() const {
    // The carry out of the count plus a constant.
    constexpr int kRest = 16 - kNumber;
    V carry{};
    for (int i = 0; i < 4; ++i) carry = (kRest >> i & 1) != 0 ? bits[i] | carry : bits[i] & carry;
    return carry;
  }
};

template <class V>
[[gnu::always_inline]] inline Count<V> neighbors(const Pixels<V>& below, const Pixels<V>& row, const Pixels<V>& above) {
  const Sum<V> lower = sum_of(below.left, below.here, below.right), upper = sum_of(above.left, above.here, above.right);
  const Sum<V> sides = {row.left ^ row.right, row.left & row.right};
  const Sum<V> ones = sum_of(lower.ones, upper.ones, sides.ones), twos = sum_of(lower.twos, upper.twos, sides.twos);
  const V carry = twos.ones & ones.twos;
  return {{ones.ones, twos.ones ^ ones.twos, twos.twos ^ carry, twos.twos & carry}};
}

// The pixels of a row cleaned by their neighbours, from one byte on. The bytes before and behind are read too.
//   gentle  all ones if pixels with four or more set neighbours stay, else zero
template <int kThreshold, class V>
[[gnu::always_inline]] inline V cleaned(const uint8_t* below, const uint8_t* row, const uint8_t* above, V gentle) {
  const Pixels<V> here = pixels_at<V>(row);
  const Count<V> count = neighbors(pixels_at<V>(below), here, pixels_at<V>(above));
  const V kept = (count.bits[2] | count.bits[3]) & gentle;
  const V set = count.template at_least<kThreshold + 1>() & ~kept, stays = count.template at_least<kThreshold>() | kept;
  return set | (here.here & stays);
}

// The rows around a row, with their first byte at `begin` of memory; zero outside the memory.
struct Neighborhood {
  std::span<const uint8_t> memory;
  size_t begin, stride;

  // A byte of the row, cleaned, wherever its neighbours are.
  template <int kThreshold>
  uint8_t cleaned_byte(size_t x, uint8_t gentle) const {
    uint8_t bytes[3][3];
    for (size_t row = 0; row < 3; ++row)
      for (size_t column = 0; column < 3; ++column) {
        const size_t at = begin + x + row * stride + column;  // one row and one byte further
        bytes[row][column] = at > stride && at - stride - 1 < memory.size() ? memory[at - stride - 1] : uint8_t{0};
      }
    return cleaned<kThreshold>(&bytes[0][1], &bytes[1][1], &bytes[2][1], Byte1{gentle})[0];
  }
};

// The pixels of a row's byte that are cleaned: not the first of the row, and not the last unless it ends a byte.
uint8_t cleaned_pixels(size_t byte, int width) {
  const int end = (width % 8 == 0 ? width : width - 1) - static_cast<int>(byte) * 8;
  const int mask = (byte == 0 ? 0x7F : 0xFF) & (end >= 8 ? 0xFF : 0xFF00 >> std::max(end, 0));
  return static_cast<uint8_t>(mask);
}

template <int kThreshold>
void clean_row(const Neighborhood& around, std::span<uint8_t> result, int width, uint8_t gentle) {
  const uint8_t* const row = around.memory.data() + around.begin;
  const auto clean_end = [&](size_t x) {
    const uint8_t mask = cleaned_pixels(x, width);
    const uint8_t byte = around.template cleaned_byte<kThreshold>(x, gentle);
    result[x] = static_cast<uint8_t>((byte & mask) | (row[x] & ~mask));
  };
  clean_end(0);
  if (result.size() == 1) return;
  clean_end(result.size() - 1);
  const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(around.stride);
  in_vectors(1, result.size() - 1, [&]<class V>(size_t x) VOREL_INLINE {
    store(&result[x], cleaned<kThreshold>(row + x - stride, row + x, row + x + stride, V{} + gentle));
  });
}

// ---- Ranks ----

template <class V>
[[gnu::always_inline]] inline void order(V& a, V& b) {
  const V least = smaller(a, b);
  b = larger(a, b);
  a = least;
}

// A sorting network for eight values (Batcher, 1968).
constexpr std::pair<int, int> kNetwork[] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}, {0, 2}, {1, 3}, {4, 6}, {5, 7}, {1, 2}, {5, 6},
                                            {0, 4}, {1, 5}, {2, 6}, {3, 7}, {2, 4}, {3, 5}, {1, 2}, {3, 4}, {5, 6}};

// The value of a rank among the eight neighbours. The compiler drops comparisons that this rank does not need.
template <int kRank, class V>
[[gnu::always_inline]] inline V ranked(const uint8_t* below, const uint8_t* row, const uint8_t* above) {
  V v[] = {load<V>(below - 1), load<V>(below),     load<V>(below + 1), load<V>(row - 1),
           load<V>(row + 1),   load<V>(above - 1), load<V>(above),     load<V>(above + 1)};
  [&]<size_t... kSteps>(std::index_sequence<kSteps...>) VOREL_INLINE {
    (order(v[kNetwork[kSteps].first], v[kNetwork[kSteps].second]), ...);
  }
  (std::make_index_sequence<std::size(kNetwork)>{});
  return v[kRank - 1];
}

template <int kRank, Reach kReach>
void take_rank_in_row(const uint8_t* below, const uint8_t* row, const uint8_t* above, std::span<uint8_t> result) {
  constexpr uint8_t kNearlyBlack = 5, kNearlyWhite = 250;
  in_vectors(1, result.size() - 1, [&]<class V>(size_t x) VOREL_INLINE {
    V value = ranked<kRank, V>(below + x, row + x, above + x);
    if constexpr (kReach == Reach::kGentle) {
      const V here = load<V>(row + x);
      value = ((here < kNearlyBlack) | (here > kNearlyWhite)) ? value : here;
    }
    store(&result[x], value);
  });
}

// Calls op with a number from 1 to 8 as a constant.
template <class Op, int... kNumbers>
void with_number(int number, Op&& op, std::integer_sequence<int, kNumbers...>) {
  ((number == kNumbers + 1 ? op(std::integral_constant<int, kNumbers + 1>{}) : void()), ...);
}
template <class Op>
void with_number(int number, Op&& op) {
  with_number(number, op, std::make_integer_sequence<int, 8>{});
}

template <int kRank, Reach kReach>
void take_rank_of(ConstDibView source, DibView result) {
  const auto copy_row = [&](int y) { std::memcpy(result.row(y).data(), source.row(y).data(), source.row(y).size()); };
  if (source.width() < 3 || source.height() < 3) {
    for (int y = 0; y < source.height(); ++y) copy_row(y);
    return;
  }
  copy_row(0);
  copy_row(source.height() - 1);
  for (int y = 1; y + 1 < source.height(); ++y) {
    result.row(y).front() = source.row(y).front();
    result.row(y).back() = source.row(y).back();
    take_rank_in_row<kRank, kReach>(source.row(y - 1).data(), source.row(y).data(), source.row(y + 1).data(), result.row(y));
  }
}

}  // namespace

void clean_bits(std::span<const uint8_t> source, DibView result, int threshold, Reach reach) {
  const uint8_t gentle = reach == Reach::kGentle ? 0xFF : 0;
  const auto stride = static_cast<size_t>(result.stride());
  with_number(threshold, [&](auto constant) {
    for (int y = 1; y + 1 < result.height(); ++y)
      clean_row<constant>({source, static_cast<size_t>(y) * stride, stride}, result.row(y), result.width(), gentle);
  });
}

void take_rank(ConstDibView source, DibView result, int rank, Reach reach) {
  with_number(rank, [&](auto constant) {
    if (reach == Reach::kGentle)
      take_rank_of<constant, Reach::kGentle>(source, result);
    else
      take_rank_of<constant, Reach::kFull>(source, result);
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
