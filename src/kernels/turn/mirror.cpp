#include <cstdint>
#include <cstring>

#include "core/pixel.h"
#include "core/word.h"
#include "kernels/row_output.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Reverses the order of the pixels inside each byte.
template <int kDepth>
Bytes reversed_in_bytes(Bytes bytes) {
  if constexpr (kDepth == 1) return with_reversed_bits(bytes);
  if constexpr (kDepth == 4) return with_swapped_bits<4>(bytes, 0x0F);
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
  if (bytes > kVectorBytes) {
    // Also reads the byte in front of the bytes that are moved. The last vector may overlap the one before it.
    const auto move = [&](size_t to) {
      const uint8_t* const from = source + (bytes - to - kVectorBytes);
      auto moved = load<Bytes>(from);
      if (kDepth < 8 && unused != 0) moved = shifted_in(load<Bytes>(from - 1), moved, unused);
      store(result + to, reversed_in_bytes<kDepth>(reversed(moved)));
    };
    const size_t last = bytes - kVectorBytes - 1;
    for (; i < last; i += kVectorBytes) move(i);
    move(last);
    result[bytes - 1] = static_cast<uint8_t>(reversed_in_bytes<kDepth>(uint64_t{source[0]} >> unused));
    return;
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
#ifdef __AVX512VBMI__
  using Vector = Bytes64;
#else
  using Vector = Bytes16;
#endif
  // The vector that is read ends with whole pixels, and the one that is written begins with them.
  constexpr int kPixels = sizeof(Vector) / 3;
  constexpr auto kOrder = [] {
    std::array<uint8_t, sizeof(Vector)> places{};
    for (size_t i = 0; i + 1 < sizeof(Vector); ++i) places[i] = static_cast<uint8_t>(sizeof(Vector) - 3 - i / 3 * 3 + i % 3);
    return places;
  }();
  const auto order = load<Vector>(kOrder.data());
  for (; x + kPixels < width; x += kPixels)
    store(result + static_cast<size_t>(x) * 3,
          picked(load<Vector>(source + static_cast<size_t>(width - x) * 3 - sizeof(Vector)), order));
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

// Mirrors the rows of the source into those of the result. The first row of the result comes from row `first`, the next ones from
// the rows above or below.
void mirror_rows(ConstDibView source, DibView result, int first, int step) {
  const RowOutput output(source, result);
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0, from = first; y < source.height(); ++y, from += step) {
      if constexpr (depth < 8) {
        mirror_row<depth()>(source.row(from).data(), result.row(y).data(), source.width());
      } else {
        constexpr size_t kPixelBytes = depth / 8;
        const size_t bytes = source.row(from).size();
        const auto read = [&](int row, size_t begin, size_t end) {
          return source_piece(source, from + row * step, bytes - end, bytes - begin);
        };
        output.write(result.row(y), read, [&](size_t begin, size_t end, uint8_t* to) {
          mirror_row<depth()>(read(0, begin, end).data(), to, static_cast<int>((end - begin) / kPixelBytes));
        });
      }
    }
  });
}

}  // namespace

void half_turn(ConstDibView source, DibView result) { mirror_rows(source, result, source.height() - 1, -1); }
void mirror_left_right(ConstDibView source, DibView result) { mirror_rows(source, result, 0, 1); }

void mirror_top_bottom(ConstDibView source, DibView result) {
  const RowOutput output(source, result);
  for (int y = 0, from = source.height() - 1; from >= 0; ++y, --from)
    output.copy(result.row(y), source.row(from).data(), source_piece(source, from - 1, 0, result.row(y).size()));
}

}  // namespace vorel::kernels::VOREL_LEVEL
