#include <algorithm>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

#include "core/pixel.h"
#include "kernels/cache.h"
#include "kernels/turn/functions.h"

// Pictures are turned by tiles. A tile takes some rows and 16 bytes (24 bits: 4 pixels) of the source and writes as many columns
// of some rows of the result, at least 4 bytes at a time.
namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr int kTileBytes = 16;

// Source rows in the order of the result's columns: their bytes at one place.
struct Rows {
  const uint8_t* first;
  std::ptrdiff_t step;

  const uint8_t* at(int column) const { return first + column * step; }
};

// Rows of the result in the order of the source's columns.
struct Target {
  uint8_t* first;
  std::ptrdiff_t step;

  uint8_t* at(int row) const { return first + row * step; }
};

struct Matrix {
  __m128i rows[kTileBytes];
};

// 16 x 16 bytes transposed by interleaving halves four times. `load` gives row i.
template <class Load>
Matrix transposed(Load load) {
  Matrix matrix, next;
  for (int i = 0; i < kTileBytes; ++i) matrix.rows[i] = load(i);
  for (int round = 0; round < 4; ++round) {
    for (int i = 0; i < kTileBytes / 2; ++i) {
      next.rows[2 * i] = _mm_unpacklo_epi8(matrix.rows[i], matrix.rows[i + 8]);
      next.rows[2 * i + 1] = _mm_unpackhi_epi8(matrix.rows[i], matrix.rows[i + 8]);
    }
    matrix = next;
  }
  return matrix;
}

__m128i load_vector(const uint8_t* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }

// Tiles of a depth: kColumns columns and at most kRows rows of the result. `write` takes the rows present, and the bytes
// that a row has room for.
template <int kDepth>
struct Tile;

// Turned rows are the highest bits of transposed bytes; doubling the bytes brings up the next row.
template <>
struct Tile<1> {
  static constexpr int kColumns = 32, kRows = 128;

  static void write(const Rows& rows, const Target& target, int count, size_t room) {
    // The lowest bit gathered is the last pixel of a byte.
    const auto half = [&](int column) {
      return transposed([&](int i) { return load_vector(rows.at(column + i / 8 * 8 + 7 - i % 8)); });
    };
    Matrix left = half(0), right = half(16);
    uint8_t* row = target.first;
    for (int i = 0; i < kTileBytes; ++i) {
#ifdef __AVX2__
      __m256i bytes = _mm256_set_m128i(right.rows[i], left.rows[i]);
#endif
      for (int bit = 0; bit < 8; ++bit, row += target.step) {
        if (--count < 0) return;
#ifdef __AVX2__
        const auto pixels = static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
        bytes = _mm256_add_epi8(bytes, bytes);
#else
        const uint32_t pixels = static_cast<uint32_t>(_mm_movemask_epi8(left.rows[i])) |
                                static_cast<uint32_t>(_mm_movemask_epi8(right.rows[i])) << 16;
        left.rows[i] = _mm_add_epi8(left.rows[i], left.rows[i]);
        right.rows[i] = _mm_add_epi8(right.rows[i], right.rows[i]);
#endif
        if (room >= sizeof pixels)
          std::memcpy(row, &pixels, sizeof pixels);
        else
          for (size_t k = 0; k < room; ++k) row[k] = static_cast<uint8_t>(pixels >> 8 * k);
      }
    }
  }
};

template <>
struct Tile<4> {
  static constexpr int kColumns = 16, kRows = 32;

  static void write(const Rows& rows, const Target& target, int count, size_t room) {
    const Matrix matrix = transposed([&](int i) { return load_vector(rows.at(i)); });
    const __m128i high = _mm_set1_epi16(0xF0), low = _mm_set1_epi16(0x0F);
    uint8_t* row = target.first;
    const auto put = [&](__m128i even_columns, __m128i odd_columns) {
      if (--count < 0) return;
      const __m128i pairs = _mm_or_si128(_mm_and_si128(even_columns, high), _mm_and_si128(odd_columns, low));
      uint8_t pixels[kTileBytes];
      _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), _mm_packus_epi16(pairs, pairs));
      std::memcpy(row, pixels, std::min<size_t>(room, 8));
      row += target.step;
    };
    for (const __m128i bytes : matrix.rows) {
      put(bytes, _mm_srli_epi16(bytes, 12));
      put(_mm_slli_epi16(bytes, 4), _mm_srli_epi16(bytes, 8));
    }
  }
};

template <>
struct Tile<8> {
  static constexpr int kColumns = 16, kRows = 16;

  static void write(const Rows& rows, const Target& target, int count, size_t room) {
    const Matrix matrix = transposed([&](int i) { return load_vector(rows.at(i)); });
    if (count == kRows && room >= kTileBytes) {
      for (int i = 0; i < kRows; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(target.at(i)), matrix.rows[i]);
    } else {
      for (int i = 0; i < count; ++i) std::memcpy(target.at(i), &matrix.rows[i], std::min<size_t>(room, kTileBytes));
    }
  }
};

// Pixels of three bytes are widened to four, transposed four by four, and packed again.
template <>
struct Tile<24> {
  static constexpr int kColumns = 16, kRows = 4;

  static void write(const Rows& rows, const Target& target, int count, size_t room) {
#ifdef __SSSE3__
    if (count == kRows && room >= 48) return write_all(rows, target);
#endif
    for (int i = 0; i < count; ++i) {
      uint8_t* row = target.at(i);
      const int columns = std::min(static_cast<int>(room / 3), kColumns);
      for (int k = 0; k < columns; ++k) Pixel<24>::store(row, k, Pixel<24>::load(rows.at(k), i));
    }
  }

#ifdef __SSSE3__
 private:
  static void write_all(const Rows& rows, const Target& target) {
    const __m128i widen = _mm_set_epi8(-1, 11, 10, 9, -1, 8, 7, 6, -1, 5, 4, 3, -1, 2, 1, 0);
    const __m128i pack = _mm_set_epi8(-1, -1, -1, -1, 14, 13, 12, 10, 9, 8, 6, 5, 4, 2, 1, 0);
    __m128i packed[kRows][4];  // of each row, four times four pixels
    for (int group = 0; group < 4; ++group) {
      const auto row = [&](int i) { return _mm_shuffle_epi8(load_vector(rows.at(4 * group + i)), widen); };
      const __m128i a = row(0), b = row(1), c = row(2), d = row(3);
      const __m128i ab_low = _mm_unpacklo_epi32(a, b), ab_high = _mm_unpackhi_epi32(a, b);
      const __m128i cd_low = _mm_unpacklo_epi32(c, d), cd_high = _mm_unpackhi_epi32(c, d);
      packed[0][group] = _mm_shuffle_epi8(_mm_unpacklo_epi64(ab_low, cd_low), pack);
      packed[1][group] = _mm_shuffle_epi8(_mm_unpackhi_epi64(ab_low, cd_low), pack);
      packed[2][group] = _mm_shuffle_epi8(_mm_unpacklo_epi64(ab_high, cd_high), pack);
      packed[3][group] = _mm_shuffle_epi8(_mm_unpackhi_epi64(ab_high, cd_high), pack);
    }
    for (int i = 0; i < kRows; ++i) {
      const auto& [a, b, c, d] = packed[i];
      auto* const to = reinterpret_cast<__m128i*>(target.at(i));
      _mm_storeu_si128(to, _mm_or_si128(a, _mm_slli_si128(b, 12)));
      _mm_storeu_si128(to + 1, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
      _mm_storeu_si128(to + 2, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(d, 4)));
    }
  }
#endif
};

// The rows of a tile at the edge of the picture, completed with zeros.
class CompletedRows {
 public:
  CompletedRows(ConstDibView source, QuarterTurn turn, int column, int end_column, size_t byte, int count) {
    for (int i = 0; i < count && column + i < end_column; ++i) {
      const int y = turn.source_row_of(column + i);
      if (y < 0 || y >= source.height()) continue;
      const auto row = source.row(y);
      std::memcpy(bytes_[i], row.data() + byte, std::min<size_t>(row.size() - byte, kTileBytes));
    }
  }

  Rows rows() const { return {bytes_[0], kTileBytes}; }

 private:
  static constexpr int kMostRows = 32;

  alignas(kTileBytes) uint8_t bytes_[kMostRows][kTileBytes] = {};
};

template <int kDepth>
void quarter_turn_tile(ConstDibView source, DibView result, QuarterTurn turn, int x, int column) {
  using TileOf = Tile<kDepth>;
  const size_t byte = row_bytes(kDepth, x), first_byte = row_bytes(kDepth, column);
  const Target target = {result.row(turn.row_of(x)).data() + first_byte, turn.row_step * result.stride()};
  const int count = std::min(TileOf::kRows, source.width() - x);
  const size_t room = row_bytes(kDepth, result.width()) - first_byte;

  const int y = turn.source_row_of(column), last_y = turn.source_row_of(column + TileOf::kColumns - 1);
  const bool has_rows = std::min(y, last_y) >= 0 && std::max(y, last_y) < source.height();
  if (has_rows && column + TileOf::kColumns <= result.width() && byte + kTileBytes <= row_bytes(kDepth, source.width())) {
    const Rows rows = {source.row(y).data() + byte, turn.column_step * source.stride()};
    for (int i = 0; i < TileOf::kColumns; ++i) __builtin_prefetch(rows.at(i) + kCacheLine);
    TileOf::write(rows, target, count, room);
  } else {
    const CompletedRows completed(source, turn, column, result.width(), byte, TileOf::kColumns);
    TileOf::write(completed.rows(), target, count, room);
  }
}

template <int kDepth>
void quarter_turn_pixels(ConstDibView source, DibView result, QuarterTurn turn) {
  constexpr int kStrip = 512;  // columns of the result that are written together, while as many source rows stay in cache
  for (int strip = 0; strip < result.width(); strip += kStrip) {
    const int end = std::min(strip + kStrip, result.width());
    for (int x = 0; x < source.width(); x += Tile<kDepth>::kRows)
      for (int column = strip; column < end; column += Tile<kDepth>::kColumns)
        quarter_turn_tile<kDepth>(source, result, turn, x, column);
  }
}

}  // namespace

void quarter_turn(ConstDibView source, DibView result, QuarterTurn turn) {
  with_depth(source.depth(), [&](auto depth) { quarter_turn_pixels<depth()>(source, result, turn); });
}

void row_to_column(ConstDibView source, DibView result, int column) {
  with_depth(source.depth(), [&](auto depth) {
    const uint8_t* const row = source.row(0).data();
    for (int x = 0; x < source.width(); ++x)
      Pixel<depth()>::store(result.row(x).data(), column, Pixel<depth()>::load(row, x));
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
