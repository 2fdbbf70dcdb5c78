#include <cstdint>
#include <cstring>

#include "core/pixel.h"
#include "core/word.h"
#include "kernels/turn/bytes.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Reverses the order of the pixels inside each byte.
template <int kDepth>
Bytes reversed_in_bytes(Bytes bytes) {
  if constexpr (kDepth == 1) return bytes.with_reversed_bits();
  if constexpr (kDepth == 4) return bytes.with_swapped_nibbles();
  return bytes;
}

template <int kDepth>
constexpr uint64_t reversed_in_bytes(uint64_t word) {
  if constexpr (kDepth < 8) word = (word >> 4 & 0x0F0F0F0F0F0F0F0F) | (word & 0x0F0F0F0F0F0F0F0F) << 4;
  if constexpr (kDepth < 4) word = (word >> 2 & 0x3333333333333333) | (word & 0x3333333333333333) << 2;
  if constexpr (kDepth < 2) word = (word >> 1 & 0x5555555555555555) | (word & 0x5555555555555555) << 1;
  return word;
}

// A row of up to 8 bits per pixel is one long number, first pixel highest. Mirroring shifts out the unused low bits of its last
// byte and reverses it.
template <int kDepth>
void mirror_row(const uint8_t* source, uint8_t* result, int width) {
  const size_t bytes = row_bytes(kDepth, width);
  const int unused = static_cast<int>(bytes * 8 - static_cast<size_t>(width) * kDepth);
  size_t i = 0;
  // These also read the byte in front of the bytes that they move.
  for (; i + Bytes::kCount < bytes; i += Bytes::kCount) {
    const uint8_t* const from = source + (bytes - i - Bytes::kCount);
    Bytes moved = Bytes::load(from);
    if (kDepth < 8 && unused != 0) moved = Bytes::shifted_in(Bytes::load(from - 1), moved, unused);
    reversed_in_bytes<kDepth>(moved.reversed()).store(result + i);
  }
  const auto number_at = [&](size_t byte) { return __builtin_bswap64(load_word(source + byte)) >> unused; };
  for (; i + kWordBytes < bytes; i += kWordBytes) {
    const size_t from = bytes - i - kWordBytes;
    const uint64_t in_front = uint64_t{source[from - 1]} << 8 << (56 - unused);
    store_word(result + i, reversed_in_bytes<kDepth>(number_at(from) | in_front));
  }
  if (bytes >= kWordBytes) {
    store_word(result + bytes - kWordBytes, reversed_in_bytes<kDepth>(number_at(0)));
  } else {
    uint64_t number = 0;
    for (size_t k = 0; k < bytes; ++k) number = number << 8 | source[k];
    const uint64_t reversed = reversed_in_bytes<kDepth>(number >> unused);
    for (size_t k = 0; k < bytes; ++k) result[k] = static_cast<uint8_t>(reversed >> 8 * k);
  }
}

// Colour pixels are copied unchanged, in the opposite order. Stores reach past their pixels, over bytes that are written
// next.
template <>
void mirror_row<24>(const uint8_t* source, uint8_t* result, int width) {
  int x = 0;
#ifdef __SSSE3__
  // The vector that is read ends with five pixels, and the one that is written begins with them.
  const __m128i order = _mm_set_epi8(0, 3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 15, 14, 13);
  for (; x + 6 <= width; x += 5) {
    const uint8_t* const from = source + static_cast<size_t>(width - x) * 3 - 16;
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(result + static_cast<size_t>(x) * 3), _mm_shuffle_epi8(pixels, order));
  }
#endif
  for (; x + 1 < width; ++x) {
    const uint8_t* const from = source + static_cast<size_t>(width - 1 - x) * 3;
    uint16_t blue_green;
    std::memcpy(&blue_green, from, sizeof blue_green);
    const uint32_t pixel = blue_green | uint32_t{from[2]} << 16;
    std::memcpy(result + static_cast<size_t>(x) * 3, &pixel, sizeof pixel);
  }
  if (x < width) Pixel<24>::store(result, x, Pixel<24>::load(source, width - 1 - x));
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
  for (int y = 0; y < source.height(); ++y)
    std::memcpy(result.row(source.height() - 1 - y).data(), source.row(y).data(), source.row(y).size());
}

}  // namespace vorel::kernels::VOREL_LEVEL
