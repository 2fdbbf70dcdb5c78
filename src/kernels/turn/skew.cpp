#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/pixel.h"
#include "core/word.h"
#include "kernels/lanes.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

struct Shift {
  size_t bytes;
  int bits;  // beyond whole bytes, to the right
};

Shift row_shift(int depth, uint64_t bits) {
  if (depth >= 8) {
    const uint64_t pixel_bytes = static_cast<uint64_t>(depth) / 8;
    return {static_cast<size_t>((bits + 7) / 8 / pixel_bytes * pixel_bytes), 0};
  }
  const int rest = static_cast<int>(bits % 8);
  return {static_cast<size_t>(bits / 8), depth == 4 ? rest / 4 * 4 : rest};
}

// Copies bytes moved right by 1 to 7 bits; `target` has a byte more, for the bits that leave the last one.
void copy_moved(const uint8_t* source, uint8_t* target, size_t count, int bits) {
  const auto moved = [&](size_t i) { return static_cast<uint8_t>(source[i - 1] << (8 - bits) | source[i] >> bits); };
  target[0] = static_cast<uint8_t>(source[0] >> bits);
  if (count > kVectorBytes) {
    const size_t last = count - kVectorBytes;
    for (size_t i = 1;; i = i + kVectorBytes < last ? i + kVectorBytes : last) {
      store(target + i, shifted_in(load<Bytes>(source + i - 1), load<Bytes>(source + i), bits));
      if (i == last) break;
    }
  } else {
    for (size_t i = 1; i < count; ++i) target[i] = moved(i);
  }
  target[count] = static_cast<uint8_t>(source[count - 1] << (8 - bits));
}

// Writes a row of zeros with the source's bytes in it, from a place on. Bytes that do not fit are dropped.
void write_shifted(std::span<const uint8_t> source, std::span<uint8_t> target, Shift shift) {
  const size_t begin = std::min(shift.bytes, target.size());
  std::memset(target.data(), 0, begin);
  target = target.subspan(begin);
  size_t count = std::min(source.size(), target.size());
  if (shift.bits == 0 || count == 0) {
    std::memcpy(target.data(), source.data(), count);
  } else if (count < target.size()) {
    copy_moved(source.data(), target.data(), count, shift.bits);
    ++count;
  } else {
    if (count > 1) copy_moved(source.data(), target.data(), count - 1, shift.bits);
    const int in_front = count > 1 ? source[count - 2] << (8 - shift.bits) : 0;
    target[count - 1] = static_cast<uint8_t>(in_front | source[count - 1] >> shift.bits);
  }
  std::memset(target.data() + count, 0, target.size() - count);
}

// Neighbouring columns that move by as many rows.
struct Columns {
  int first, end, shift;
};

Columns columns_from(int first, int width, int32_t offset) {
  const uint64_t shift = shift_of(first, width, offset);
  const auto most = static_cast<uint64_t>(offset < 0 ? -int64_t{offset} : offset);
  const auto count = static_cast<uint64_t>(width);
  uint64_t end = count;
  if (offset > 0) end = std::min(count, ((shift + 1) * count + most - 1) / most);
  if (offset < 0) end = std::min(count, count - (shift * count + most - 1) / most + 1);
  return {first, static_cast<int>(end), static_cast<int>(shift)};
}

// Bytes of a row that hold some columns; the bits in front of the columns are kept in the first byte.
struct Piece {
  size_t first, count;
  uint8_t kept;

  static Piece of(const Columns& columns, int depth) {
    const uint64_t begin = static_cast<uint64_t>(depth) * static_cast<uint64_t>(columns.first);
    const uint64_t end = static_cast<uint64_t>(depth) * static_cast<uint64_t>(columns.end);
    const auto first = static_cast<size_t>(begin / 8);
    return {first, static_cast<size_t>((end + 7) / 8) - first, static_cast<uint8_t>(0xFF00 >> begin % 8)};
  }
};

// Writers of a piece, from a source or with zeros. The first two write past the piece, over columns that come later.
struct VectorOfPiece {
  static constexpr size_t kBytes = 16;
  void copy(const uint8_t* source, uint8_t* target) const { std::memcpy(target, source, kBytes); }
  void clear(uint8_t* target) const { std::memset(target, 0, kBytes); }
};

struct WordOfPiece {
  uint64_t kept;
  void copy(const uint8_t* source, uint8_t* target) const {
    store_word(target, (load_word(target) & kept) | (load_word(source) & ~kept));
  }
  void clear(uint8_t* target) const { store_word(target, load_word(target) & kept); }
};

struct BytesOfPiece {
  size_t count;
  uint8_t kept;
  void copy(const uint8_t* source, uint8_t* target) const {
    *target = static_cast<uint8_t>((*target & kept) | (*source & ~kept));
    std::memcpy(target + 1, source + 1, count - 1);
  }
  void clear(uint8_t* target) const {
    *target &= kept;
    std::memset(target + 1, 0, count - 1);
  }
};

// Writes rows `first` to before `end` of some columns of the result.
template <class Writer>
void write_columns(ConstDibView source, DibView result, const Columns& columns, size_t byte, int first, int end,
                   Writer writer) {
  const auto limited = [&](int64_t y) { return static_cast<int>(std::clamp<int64_t>(y, first, end)); };
  const int copied_from = limited(columns.shift), copied_to = limited(int64_t{columns.shift} + source.height());
  uint8_t* target = result.row(first).data() + byte;
  int y = first;
  for (; y < copied_from; ++y, target += result.stride()) writer.clear(target);
  const uint8_t* from = source.row(y - columns.shift).data() + byte;
  for (; y < copied_to; ++y, target += result.stride(), from += source.stride()) writer.copy(from, target);
  for (; y < end; ++y, target += result.stride()) writer.clear(target);
}

// Rows `first` to before `end` of the result, columns from left to right.
void skew_band(ConstDibView source, DibView result, int32_t offset, int first, int end) {
  const int width = source.width(), depth = source.depth();
  const size_t bytes = row_bytes(depth, width);
  for (int column = 0; column < width;) {
    const Columns columns = columns_from(column, width, offset);
    const Piece piece = Piece::of(columns, depth);
    const auto write = [&](auto writer) { write_columns(source, result, columns, piece.first, first, end, writer); };
    if (piece.kept == 0 && piece.count <= VectorOfPiece::kBytes && piece.first + VectorOfPiece::kBytes <= bytes)
      write(VectorOfPiece{});
    else if (piece.count <= kWordBytes && piece.first + kWordBytes <= bytes)
      write(WordOfPiece{piece.kept});
    else
      write(BytesOfPiece{piece.count, piece.kept});
    column = columns.end;
  }
  const auto behind_last_pixel = static_cast<int>(bytes * 8 - static_cast<uint64_t>(depth) * static_cast<uint64_t>(width));
  for (int y = first; behind_last_pixel != 0 && y < end; ++y)
    result.row(y)[bytes - 1] &= static_cast<uint8_t>(0xFF << behind_last_pixel);
}

}  // namespace

void skew_rows(ConstDibView source, DibView result, int32_t offset) {
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0; y < source.height(); ++y)
      write_shifted(source.row(y), {result.row(y).data(), static_cast<size_t>(result.stride())},
                    row_shift(depth, shift_of(y, source.height(), offset, depth)));
  });
}

void skew_columns(ConstDibView source, DibView result, int32_t offset) {
  constexpr int kBand = 64;  // rows that stay in cache while all columns are written
  if (source.width() <= 0 || source.height() <= 0) return;
  with_depth(source.depth(), [&](auto) {
    for (int y = 0; y < result.height(); y += std::min(kBand, result.height() - y))
      skew_band(source, result, offset, y, y + std::min(kBand, result.height() - y));
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
