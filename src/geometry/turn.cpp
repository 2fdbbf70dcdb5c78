#include "geometry/turn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "dib/pixel.h"

namespace vorel {
namespace {

static_assert(std::endian::native == std::endian::little);

uint64_t load_word(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

void store_word(uint8_t* bytes, uint64_t word) { std::memcpy(bytes, &word, sizeof word); }

// ---- Quarter turns ----

// Transposes 8 by 8 bits: row r is byte r counted from the highest, and in each row the highest bit comes first.
// Henry S. Warren, Hacker's Delight, section 7-3.
constexpr uint64_t transposed(uint64_t rows) {
  uint64_t swap = (rows ^ rows >> 7) & 0x00AA00AA00AA00AA;
  rows ^= swap ^ swap << 7;
  swap = (rows ^ rows >> 14) & 0x0000CCCC0000CCCC;
  rows ^= swap ^ swap << 14;
  swap = (rows ^ rows >> 28) & 0x00000000F0F0F0F0;
  return rows ^ swap ^ swap << 28;
}

// Result rows that are worked on together, so that their cache lines are still there for the next column byte.
constexpr int kTurnedRows = 512;

// The eight source rows whose pixels share byte `column_byte` of the result's rows; null where no row goes there.
std::array<const uint8_t*, 8> rows_of_column_byte(ConstDibView source, int column_byte, QuarterTurn turn) {
  std::array<const uint8_t*, 8> rows{};
  for (int i = 0; i < 8; ++i) {
    const int y = (column_byte * 8 + i - turn.first_column) * turn.column_step;
    if (y >= 0 && y < source.height()) rows[static_cast<size_t>(i)] = source.row(y).data();
  }
  return rows;
}

// Sets bits in a zero-filled result and clears none: a result row may begin in the byte where the row before it ends.
void quarter_turn_bits(ConstDibView source, DibView result, QuarterTurn turn) {
  const int last_column = turn.first_column + turn.column_step * (source.height() - 1);
  const int first_byte = std::min(turn.first_column, last_column) / 8;
  const int last_byte = std::max(turn.first_column, last_column) / 8;
  for (int x0 = 0; x0 < source.width(); x0 += kTurnedRows) {
    const int x1 = std::min(x0 + kTurnedRows, source.width());
    for (int byte = first_byte; byte <= last_byte; ++byte) {
      const auto rows = rows_of_column_byte(source, byte, turn);
      for (int x = x0; x < x1; x += 8) {
        uint64_t block = 0;
        for (const uint8_t* row : rows) block = block << 8 | (row == nullptr ? 0 : row[x / 8]);
        if (block == 0) continue;
        block = transposed(block);
        for (int i = 0; i < std::min(8, x1 - x); ++i) {
          const int y = turn.first_row + turn.row_step * (x + i);
          result.row(y).data()[byte] |= static_cast<uint8_t>(block >> (56 - 8 * i));
        }
      }
    }
  }
}

// Side of the square blocks that pixels of 4 bits and more are moved in.
constexpr int kBlock = 32;

template <int kDepth>
void quarter_turn_block(ConstDibView source, DibView result, QuarterTurn turn, int x0, int y0) {
  const int x1 = std::min(x0 + kBlock, source.width());
  const int y1 = std::min(y0 + kBlock, source.height());
  for (int x = x0; x < x1; ++x) {
    uint8_t* target = result.row(turn.first_row + turn.row_step * x).data();
    for (int y = y0; y < y1; ++y) {
      const uint32_t pixel = Pixel<kDepth>::load(source.row(y).data(), x);
      Pixel<kDepth>::store(target, turn.first_column + turn.column_step * y, pixel);
    }
  }
}

template <int kDepth>
void quarter_turn_pixels(ConstDibView source, DibView result, QuarterTurn turn) {
  for (int x0 = 0; x0 < source.width(); x0 += kBlock)
    for (int y0 = 0; y0 < source.height(); y0 += kBlock) quarter_turn_block<kDepth>(source, result, turn, x0, y0);
}

// ---- Mirrors ----

// Reverses the order of the pixels inside each byte.
template <int kDepth>
constexpr uint64_t reversed_in_bytes(uint64_t word) {
  if constexpr (kDepth < 8) word = (word >> 4 & 0x0F0F0F0F0F0F0F0F) | (word & 0x0F0F0F0F0F0F0F0F) << 4;
  if constexpr (kDepth < 4) word = (word >> 2 & 0x3333333333333333) | (word & 0x3333333333333333) << 2;
  if constexpr (kDepth < 2) word = (word >> 1 & 0x5555555555555555) | (word & 0x5555555555555555) << 1;
  return word;
}

// A row of up to 8 bits per pixel is one long number, first pixel highest. Mirroring reverses it and shifts out what stood in
// the unused low bits of its last byte.
template <int kDepth>
void mirror_row(const uint8_t* source, uint8_t* result, int width) {
  const size_t bytes = row_bytes(kDepth, width);
  const int unused = static_cast<int>(bytes * 8 - static_cast<size_t>(width) * kDepth);
  const auto reversed = [&](size_t i) { return static_cast<uint8_t>(reversed_in_bytes<kDepth>(source[bytes - 1 - i])); };
  size_t i = 0;
  for (; i + 8 < bytes; i += 8) {
    const uint64_t word = reversed_in_bytes<kDepth>(load_word(source + bytes - 8 - i));
    store_word(result + i, __builtin_bswap64(word << unused | static_cast<uint64_t>(reversed(i + 8)) >> (8 - unused)));
  }
  for (; i < bytes; ++i) {
    const unsigned next = i + 1 < bytes ? reversed(i + 1) : 0;
    result[i] = static_cast<uint8_t>(reversed(i) << unused | next >> (8 - unused));
  }
}

template <>
void mirror_row<24>(const uint8_t* source, uint8_t* result, int width) {
  for (int x = 0; x < width; ++x) Pixel<24>::store(result, width - 1 - x, Pixel<24>::load(source, x));
}

}  // namespace

void quarter_turn(ConstDibView source, DibView result, QuarterTurn turn) {
  if (source.height() == 0) return;
  with_depth(source.depth(), [&](auto depth) {
    if constexpr (depth() == 1) {
      quarter_turn_bits(source, result, turn);
    } else {
      quarter_turn_pixels<depth()>(source, result, turn);
    }
  });
}

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
    std::ranges::copy(source.row(y), result.row(source.height() - 1 - y).begin());
}

}  // namespace vorel
