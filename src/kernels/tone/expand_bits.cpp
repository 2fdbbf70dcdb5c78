#include <algorithm>
#include <cstring>

#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Weights of a bit's neighbours in one row, from two to the left to two to the right. All rows of a kernel sum to 255, so that sums
// of bytes never carry.
using RowWeights = std::array<uint8_t, 5>;
constexpr std::array<RowWeights, 3> kWeightsBy3 = {{{0, 8, 31, 8, 0}, {0, 31, 99, 31, 0}, {0, 8, 31, 8, 0}}};
constexpr std::array<RowWeights, 5> kWeightsBy5 = {
    {{0, 3, 7, 3, 0}, {3, 16, 25, 16, 3}, {7, 25, 39, 25, 7}, {3, 16, 25, 16, 3}, {0, 3, 7, 3, 0}}};

// What one row of a kernel gives four pixels, for all eight bits that they see: two to the left, their own, two to the right. The
// first pixel is in the lowest byte.
using NibbleTable = std::array<uint32_t, 256>;

constexpr NibbleTable nibble_table(RowWeights weights) {
  NibbleTable table{};
  for (uint32_t bits = 0; bits < table.size(); ++bits)
    for (uint32_t pixel = 0; pixel < 4; ++pixel)
      for (uint32_t tap = 0; tap < weights.size(); ++tap)
        if ((bits >> (7 - pixel - tap) & 1) != 0) table[bits] += uint32_t{weights[tap]} << 8 * pixel;
  return table;
}

template <size_t kRows>
constexpr auto tables_of(const std::array<RowWeights, kRows>& weights) {
  std::array<NibbleTable, kRows> tables{};
  for (size_t i = 0; i < kRows; ++i) tables[i] = nibble_table(weights[i]);
  return tables;
}

constexpr auto kTablesBy3 = tables_of(kWeightsBy3);
constexpr auto kTablesBy5 = tables_of(kWeightsBy5);
constexpr std::array<NibbleTable, 1> kTableAlone = {nibble_table({0, 0, 255, 0, 0})};

// A row of bits with a byte in front of it and one behind it, as smoothing sees it.
class BitRow {
 public:
  explicit BitRow(std::span<uint8_t> bytes) : bytes_(bytes) {}

  void read(std::span<const uint8_t> row, bool inverted) const {
    std::ranges::transform(row, bytes_.begin() + 1,
                           [&](uint8_t byte) { return static_cast<uint8_t>(inverted ? ~byte : byte); });
    bytes_.front() = static_cast<uint8_t>(bytes_[1] >> 4);
    bytes_.back() = static_cast<uint8_t>(bytes_[row.size()] << 4);
  }

  // The bits around the first and the last four pixels of a byte.
  struct Nibbles {
    uint8_t first, last;
  };
  Nibbles around(size_t byte) const {
    const uint32_t bits = uint32_t{bytes_[byte]} << 16 | uint32_t{bytes_[byte + 1]} << 8 | bytes_[byte + 2];
    return {static_cast<uint8_t>(bits >> 10), static_cast<uint8_t>(bits >> 6)};
  }

 private:
  std::span<uint8_t> bytes_;
};

template <size_t kRows>
void expand(ConstDibView source, DibView result, bool inverted, const std::array<NibbleTable, kRows>& tables,
            std::span<uint8_t> scratch) {
  const size_t row_length = row_bytes(1, source.width());
  const std::span<uint8_t> pixels = scratch.first(row_length * 8), rows = scratch.subspan(pixels.size());
  const auto stored = [&](int y) {
    return BitRow(rows.subspan(static_cast<size_t>(y) % kRows * (row_length + 2), row_length + 2));
  };
  for (int y = 0; y < source.height(); ++y) {
    stored(y).read(source.row(y), inverted);
    for (size_t byte = 0; byte < row_length; ++byte) {
      uint32_t first = 0, last = 0;
      for (size_t i = 0; i < kRows; ++i) {
        const auto nibbles = stored(std::max(0, y - static_cast<int>(kRows - 1 - i))).around(byte);
        first += tables[i][nibbles.first];
        last += tables[i][nibbles.last];
      }
      std::memcpy(&pixels[byte * 8], &first, sizeof first);
      std::memcpy(&pixels[byte * 8 + 4], &last, sizeof last);
    }
    std::memcpy(result.row(y).data(), pixels.data(), result.row(y).size());
  }
}

}  // namespace

void expand_bits(ConstDibView source, DibView result, Smoothing smoothing, bool inverted, std::span<uint8_t> scratch) {
  switch (smoothing) {
    case Smoothing::kNone: return expand(source, result, inverted, kTableAlone, scratch);
    case Smoothing::kBy3: return expand(source, result, inverted, kTablesBy3, scratch);
    case Smoothing::kBy5: return expand(source, result, inverted, kTablesBy5, scratch);
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
