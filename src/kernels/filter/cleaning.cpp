#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

#include "core/word.h"
#include "kernels/filter/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr int kWordBits = 64;

// Sixty-four pixels of a row, the leftmost in the highest bit, and the same moved so that each pixel's neighbour is in its place.
struct Pixels {
  uint64_t here, left, right;
};

// The bits of memory from a byte on; zero past its end.
uint64_t load_bits(std::span<const uint8_t> memory, size_t byte) {
  if (byte + kWordBytes <= memory.size()) return __builtin_bswap64(load_word(memory.data() + byte));
  uint8_t bytes[kWordBytes] = {};
  if (byte < memory.size()) std::memcpy(bytes, memory.data() + byte, memory.size() - byte);
  return __builtin_bswap64(load_word(bytes));
}

uint8_t load_byte(std::span<const uint8_t> memory, size_t byte) { return byte < memory.size() ? memory[byte] : 0; }

Pixels pixels_at(std::span<const uint8_t> memory, size_t byte) {
  const uint64_t here = load_bits(memory, byte);
  const uint64_t before = byte > 0 ? load_byte(memory, byte - 1) : 0, behind = load_byte(memory, byte + 8);
  return {here, here >> 1 | before << (kWordBits - 1), here << 1 | behind >> 7};
}

// The number of set neighbours of each of sixty-four pixels, in binary: bit n of each number is in word n.
struct Counts {
  uint64_t bits[4];

  // Where numbers are greater, and where they are less, than one.
  std::pair<uint64_t, uint64_t> compared_to(int number) const {
    uint64_t greater = 0, less = 0;
    for (int n = 3; n >= 0; --n) {
      const uint64_t other = (number >> n & 1) != 0 ? ~uint64_t{0} : 0, open = ~(greater | less);
      greater |= open & bits[n] & ~other;
      less |= open & ~bits[n] & other;
    }
    return {greater, less};
  }
};

Counts neighbors(const Pixels& below, const Pixels& row, const Pixels& above) {
  const uint64_t set[] = {below.left, below.here, below.right, row.left, row.right, above.left, above.here, above.right};
  Counts counts{};
  for (uint64_t carry : set)
    for (uint64_t& bit : counts.bits) carry &= std::exchange(bit, bit ^ carry);
  return counts;
}

// Of a word that begins at pixel `first` of a row, those pixels that are cleaned.
uint64_t cleaned_pixels(int first, int width) {
  const int end = width % 8 == 0 ? width : width - 1;
  uint64_t mask = ~uint64_t{0};
  if (first == 0) mask >>= 1;
  if (end - first < kWordBits) mask &= end <= first ? 0 : ~uint64_t{0} << (kWordBits - (end - first));
  return mask;
}

void store_bits(std::span<uint8_t> row, size_t byte, uint64_t bits) {
  for (size_t i = byte; i < std::min(byte + 8, row.size()); ++i) {
    row[i] = static_cast<uint8_t>(bits >> 56);
    bits <<= 8;
  }
}

void order(uint8_t& a, uint8_t& b) {
  const uint8_t smaller = std::min(a, b);
  b = std::max(a, b);
  a = smaller;
}

// A sorting network for eight values (Batcher, 1968).
constexpr std::pair<int, int> kNetwork[] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}, {0, 2}, {1, 3}, {4, 6}, {5, 7}, {1, 2}, {5, 6},
                                            {0, 4}, {1, 5}, {2, 6}, {3, 7}, {2, 4}, {3, 5}, {1, 2}, {3, 4}, {5, 6}};

// The value of a rank among eight, for each pixel of a row but the first and the last.
template <int kRank>
void take_rank_in_row(const uint8_t* below, const uint8_t* row, const uint8_t* above, std::span<uint8_t> result, int low,
                      int high) {
  for (size_t x = 1; x + 1 < result.size(); ++x) {
    uint8_t v[] = {below[x - 1], below[x], below[x + 1], row[x - 1], row[x + 1], above[x - 1], above[x], above[x + 1]};
    [&]<size_t... kSteps>(std::index_sequence<kSteps...>) {
      (order(v[kNetwork[kSteps].first], v[kNetwork[kSteps].second]), ...);
    }
    (std::make_index_sequence<std::size(kNetwork)>{});
    result[x] = row[x] < low || row[x] > high ? v[kRank - 1] : row[x];
  }
}

// Calls op with a rank as a constant.
template <class Op, int... kRanks>
void with_rank(int rank, Op&& op, std::integer_sequence<int, kRanks...>) {
  ((rank == kRanks + 1 ? op(std::integral_constant<int, kRanks + 1>{}) : void()), ...);
}

}  // namespace

void clean_bits(std::span<const uint8_t> source, DibView result, int threshold, Reach reach) {
  const auto stride = static_cast<size_t>(result.stride());
  for (int y = 1; y + 1 < result.height(); ++y) {
    const size_t begin = static_cast<size_t>(y) * stride;
    const auto row = result.row(y);
    for (size_t byte = 0; byte < row.size(); byte += 8) {
      const Pixels here = pixels_at(source, begin + byte);
      const Counts counts =
          neighbors(pixels_at(source, begin + byte - stride), here, pixels_at(source, begin + byte + stride));
      auto [set, clear] = counts.compared_to(threshold);
      uint64_t changed = cleaned_pixels(static_cast<int>(byte) * 8, result.width());
      if (reach == Reach::kGentle) changed &= ~(counts.bits[3] | counts.bits[2]);
      store_bits(row, byte, (here.here | (set & changed)) & ~(clear & changed));
    }
  }
}

void take_rank(ConstDibView source, DibView result, int rank, Reach reach) {
  constexpr int kNearlyBlack = 5, kNearlyWhite = 250;
  const int low = reach == Reach::kGentle ? kNearlyBlack : 256, high = kNearlyWhite;
  with_rank(
      rank,
      [&](auto constant) {
        for (int y = 1; y + 1 < source.height(); ++y)
          take_rank_in_row<constant>(source.row(y - 1).data(), source.row(y).data(), source.row(y + 1).data(), result.row(y),
                                     low, high);
      },
      std::make_integer_sequence<int, 8>{});
}

}  // namespace vorel::kernels::VOREL_LEVEL
