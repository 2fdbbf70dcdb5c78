#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

#include "core/pixel.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// Result rows that are worked on together, so that their cache lines are still there for the next column bytes.
constexpr int kTurnedRows = 512;

// The eight source rows whose pixels share byte `column_byte` of the result's rows; null where no row goes there.
using EightRows = std::array<const uint8_t*, 8>;

EightRows rows_of_column_byte(ConstDibView source, int column_byte, QuarterTurn turn) {
  EightRows rows{};
  for (int i = 0; i < 8; ++i) {
    const int y = turn.source_row_of(column_byte * 8 + i);
    if (y >= 0 && y < source.height()) rows[static_cast<size_t>(i)] = source.row(y).data();
  }
  return rows;
}

// Byte `index` of eight rows, the first row's highest.
uint64_t gathered_bytes(const EightRows& rows, int index) {
  uint64_t bytes = 0;
  for (const uint8_t* row : rows) bytes = bytes << 8 | (row == nullptr ? 0 : row[index]);
  return bytes;
}

// Turns the bits that go to one byte of the result's rows (uint8_t) or to two neighbouring ones (uint16_t). The highest bits
// of 16 gathered bytes are the pixels of one result row; doubling the bytes brings up the next row's.
template <class Column>
void quarter_turn_columns(ConstDibView source, DibView result, QuarterTurn turn, int column_byte, int x0, int x1) {
  constexpr bool kPair = sizeof(Column) == 2;
  const EightRows left = rows_of_column_byte(source, column_byte, turn);
  const EightRows right = kPair ? rows_of_column_byte(source, column_byte + 1, turn) : EightRows{};
  const std::ptrdiff_t to_next_row = turn.row_step * result.stride();
  uint8_t* target = result.row(turn.row_of(x0)).data() + column_byte;
  for (int x = x0; x < x1; x += 8) {
    const auto low = static_cast<int64_t>(gathered_bytes(left, x / 8));
    const auto high = kPair ? static_cast<int64_t>(gathered_bytes(right, x / 8)) : 0;
    __m128i bytes = _mm_set_epi64x(high, low);
    for (int i = std::min(8, x1 - x); i > 0; --i) {
      // Sets bits in a zero-filled result and clears none: a row may begin in the byte where the row before it ends.
      Column pixels;
      std::memcpy(&pixels, target, sizeof pixels);
      pixels = static_cast<Column>(pixels | _mm_movemask_epi8(bytes));
      std::memcpy(target, &pixels, sizeof pixels);
      bytes = _mm_add_epi8(bytes, bytes);
      target += to_next_row;
    }
  }
}

void quarter_turn_bits(ConstDibView source, DibView result, QuarterTurn turn) {
  const int last_column = turn.column_of(source.height() - 1);
  const int first_byte = std::min(turn.first_column, last_column) / 8;
  const int last_byte = std::max(turn.first_column, last_column) / 8;
  for (int x0 = 0; x0 < source.width(); x0 += kTurnedRows) {
    const int x1 = std::min(x0 + kTurnedRows, source.width());
    int byte = first_byte;
    for (; byte < last_byte; byte += 2) quarter_turn_columns<uint16_t>(source, result, turn, byte, x0, x1);
    if (byte == last_byte) quarter_turn_columns<uint8_t>(source, result, turn, byte, x0, x1);
  }
}

// Part of a picture, in pixels.
struct Box {
  int x0, y0, x1, y1;
};

template <int kDepth>
void quarter_turn_box(ConstDibView source, DibView result, QuarterTurn turn, Box box) {
  for (int x = box.x0; x < box.x1; ++x) {
    uint8_t* target = result.row(turn.row_of(x)).data();
    for (int y = box.y0; y < box.y1; ++y) {
      const uint32_t pixel = Pixel<kDepth>::load(source.row(y).data(), x);
      Pixel<kDepth>::store(target, turn.column_of(y), pixel);
    }
  }
}

// Eight by eight pixels of one byte each, transposed by interleaving halves three times.
void quarter_turn_byte_tile(ConstDibView source, DibView result, QuarterTurn turn, int x, int y) {
  // Source rows in the order of the result's columns.
  const int left_y = turn.column_step > 0 ? y : y + 7;
  const auto row = [&](int i) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(source.row(left_y + turn.column_step * i).data() + x));
  };
  const __m128i a = _mm_unpacklo_epi8(row(0), row(4)), b = _mm_unpacklo_epi8(row(1), row(5));
  const __m128i c = _mm_unpacklo_epi8(row(2), row(6)), d = _mm_unpacklo_epi8(row(3), row(7));
  const __m128i ac_low = _mm_unpacklo_epi8(a, c), ac_high = _mm_unpackhi_epi8(a, c);
  const __m128i bd_low = _mm_unpacklo_epi8(b, d), bd_high = _mm_unpackhi_epi8(b, d);

  const std::ptrdiff_t to_next_row = turn.row_step * result.stride();
  uint8_t* target = &result.row(turn.row_of(x))[static_cast<size_t>(turn.column_of(left_y))];
  const auto put_two_rows = [&](__m128i rows) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target), rows);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target + to_next_row), _mm_srli_si128(rows, 8));
    target += 2 * to_next_row;
  };
  put_two_rows(_mm_unpacklo_epi8(ac_low, bd_low));
  put_two_rows(_mm_unpackhi_epi8(ac_low, bd_low));
  put_two_rows(_mm_unpacklo_epi8(ac_high, bd_high));
  put_two_rows(_mm_unpackhi_epi8(ac_high, bd_high));
}

template <>
void quarter_turn_box<8>(ConstDibView source, DibView result, QuarterTurn turn, Box box) {
  const int tiled_x1 = box.x1 - (box.x1 - box.x0) % 8;
  const int tiled_y1 = box.y1 - (box.y1 - box.y0) % 8;
  for (int x = box.x0; x < tiled_x1; x += 8)
    for (int y = box.y0; y < tiled_y1; y += 8) quarter_turn_byte_tile(source, result, turn, x, y);
  for (int y = box.y0; y < box.y1; ++y)
    for (int x = y < tiled_y1 ? tiled_x1 : box.x0; x < box.x1; ++x)
      result.row(turn.row_of(x))[turn.column_of(y)] = source.row(y)[x];
}

// Side of the square boxes that pixels of 4 bits and more are moved in, small enough for source and result to stay in cache.
constexpr int kBoxSide = 32;

template <int kDepth>
void quarter_turn_pixels(ConstDibView source, DibView result, QuarterTurn turn) {
  for (int x = 0; x < source.width(); x += kBoxSide)
    for (int y = 0; y < source.height(); y += kBoxSide)
      quarter_turn_box<kDepth>(source, result, turn,
                               {x, y, std::min(x + kBoxSide, source.width()), std::min(y + kBoxSide, source.height())});
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

}  // namespace vorel::kernels::VOREL_LEVEL
