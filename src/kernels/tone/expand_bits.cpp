#include <algorithm>
#include <array>

#include "core/word.h"
#include "kernels/lanes.h"
#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Weights of the neighbours that contribute to a pixel, from two rows up and two columns left on. Each table sums to 255, so
// that sums of bytes never carry.
template <int kReach>
using Weights = std::array<std::array<uint8_t, 2 * kReach + 1>, 2 * kReach + 1>;
constexpr Weights<1> kWeightsBy3 = {{{8, 31, 8}, {31, 99, 31}, {8, 31, 8}}};
constexpr Weights<2> kWeightsBy5 = {
    {{0, 3, 7, 3, 0}, {3, 16, 25, 16, 3}, {7, 25, 39, 25, 7}, {3, 16, 25, 16, 3}, {0, 3, 7, 3, 0}}};

// The eight pixels of a byte, 255 for set bits. The first pixel is in the lowest byte.
constexpr auto kPixelsOfByte = [] {
  std::array<uint64_t, 256> words{};
  for (size_t byte = 0; byte < words.size(); ++byte)
    for (size_t pixel = 0; pixel < 8; ++pixel)
      if ((byte >> (7 - pixel) & 1) != 0) words[byte] |= uint64_t{0xFF} << 8 * pixel;
  return words;
}();

void expand_row(std::span<const uint8_t> bits, uint8_t* pixels, uint8_t flip) {
  for (size_t i = 0; i < bits.size(); ++i) store_word(pixels + i * 8, kPixelsOfByte[bits[i] ^ flip]);
}

// Expands rows into the result, without the pixels of a last byte that are beyond the row.
void expand_rows(ConstDibView source, DibView result, uint8_t flip) {
  const auto whole = static_cast<size_t>(source.width() / 8);
  for (int y = 0; y < source.height(); ++y) {
    const auto bits = source.row(y);
    const auto pixels = result.row(y);
    expand_row(bits.first(whole), pixels.data(), flip);
    if (whole == bits.size()) continue;
    uint8_t last[kWordBytes];
    store_word(last, kPixelsOfByte[bits.back() ^ flip]);
    std::memcpy(&pixels[whole * 8], last, pixels.size() - whole * 8);
  }
}

// One vector of pixels from the rows that contribute to it. Pixels of 255 pass their weights.
template <const auto& kWeights, class V, size_t kSize = std::size(kWeights)>
[[gnu::always_inline]] inline V smoothed(const std::array<const uint8_t*, kSize>& rows, size_t x) {
  V sum{};
  for (size_t row = 0; row < kSize; ++row)
    for (size_t column = 0; column < kSize; ++column)
      if (kWeights[row][column] != 0) sum += load<V>(rows[row] + x + column - kSize / 2) & kWeights[row][column];
  return sum;
}

template <const auto& kWeights>
void smooth(ConstDibView source, DibView result, uint8_t flip, std::span<uint8_t> scratch) {
  constexpr size_t kSize = std::size(kWeights);
  const size_t length = expanded_row_bytes(source.width()), pixels = length - 2 * kExpandedMargin;
  const auto stored = [&](int y) { return scratch.data() + static_cast<size_t>(y) % kSize * length + kExpandedMargin; };
  for (int y = 0; y < source.height(); ++y) {
    uint8_t* const row = stored(y);
    expand_row(source.row(y), row, flip);
    std::memcpy(row - kExpandedMargin, row, kExpandedMargin);
    std::memcpy(row + pixels, row + pixels - kExpandedMargin, kExpandedMargin);
    std::array<const uint8_t*, kSize> seen;
    for (size_t i = 0; i < kSize; ++i) seen[i] = stored(std::max(0, y - static_cast<int>(i)));
    const auto to = result.row(y);
    in_vectors(0, to.size(), [&]<class V>(size_t x) VOREL_INLINE { store(&to[x], smoothed<kWeights, V>(seen, x)); });
  }
}

}  // namespace

void expand_bits(ConstDibView source, DibView result, Smoothing smoothing, bool inverted, std::span<uint8_t> scratch) {
  const uint8_t flip = inverted ? 0xFF : 0;
  switch (smoothing) {
    case Smoothing::kNone: return expand_rows(source, result, flip);
    case Smoothing::kBy3: return smooth<kWeightsBy3>(source, result, flip, scratch);
    case Smoothing::kBy5: return smooth<kWeightsBy5>(source, result, flip, scratch);
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
