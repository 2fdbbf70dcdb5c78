#include <algorithm>
#include <cstdint>

#include "core/pixel.h"
#include "core/word.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Reverses the order of the pixels inside each byte.
template <int kDepth>
constexpr uint64_t reversed_in_bytes(uint64_t word) {
  if constexpr (kDepth < 8) word = (word >> 4 & 0x0F0F0F0F0F0F0F0F) | (word & 0x0F0F0F0F0F0F0F0F) << 4;
  if constexpr (kDepth < 4) word = (word >> 2 & 0x3333333333333333) | (word & 0x3333333333333333) << 2;
  if constexpr (kDepth < 2) word = (word >> 1 & 0x5555555555555555) | (word & 0x5555555555555555) << 1;
  return word;
}

// A row of up to 8 bits per pixel is one long number, first pixel highest. Mirroring reverses it and shifts out what stood
// in the unused low bits of its last byte.
template <int kDepth>
void mirror_row(const uint8_t* source, uint8_t* result, int width) {
  const size_t bytes = row_bytes(kDepth, width);
  const int unused = static_cast<int>(bytes * 8 - static_cast<size_t>(width) * kDepth);
  const auto reversed_word = [&](size_t i) { return reversed_in_bytes<kDepth>(load_word(source + bytes - 8 - i)); };
  const auto reversed_byte = [&](size_t i) -> unsigned {
    return i < bytes ? static_cast<uint8_t>(reversed_in_bytes<kDepth>(source[bytes - 1 - i])) : 0;
  };
  size_t i = 0;
  if (bytes >= 8) {
    uint64_t word = reversed_word(0);
    for (; i + 16 <= bytes; i += 8) {
      const uint64_t next = reversed_word(i + 8);
      store_word(result + i, __builtin_bswap64(word << unused | next >> 1 >> (63 - unused)));
      word = next;
    }
  }
  for (unsigned byte = reversed_byte(i); i < bytes; ++i) {
    const unsigned next = reversed_byte(i + 1);
    result[i] = static_cast<uint8_t>(byte << unused | next >> (8 - unused));
    byte = next;
  }
}

template <>
void mirror_row<24>(const uint8_t* source, uint8_t* result, int width) {
  for (int x = 0; x < width; ++x) Pixel<24>::store(result, width - 1 - x, Pixel<24>::load(source, x));
}

}  // namespace

void half_turn(ConstDibView source, DibView result) {
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0; y < source.height(); ++y)
      mirror_row<depth()>(source.row(y).data(), result.row(source.height() - 1 - y).data(), source.width());
  });
}

void mirror_left_right(ConstDibView source, DibView result) {
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0; y < source.height(); ++y)
      mirror_row<depth()>(source.row(y).data(), result.row(y).data(), source.width());
  });
}

void mirror_top_bottom(ConstDibView source, DibView result) {
  for (int y = 0; y < source.height(); ++y) std::ranges::copy(source.row(y), result.row(source.height() - 1 - y).begin());
}

}  // namespace vorel::kernels::VOREL_LEVEL
