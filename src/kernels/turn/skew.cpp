#include <algorithm>
#include <cstring>

#include "core/pixel.h"
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

// Copies bytes moved right by some bits. What does not fit is dropped.
void copy_shifted(std::span<const uint8_t> source, std::span<uint8_t> target, int bits) {
  const size_t count = std::min(source.size(), target.size());
  if (bits == 0) {
    std::memcpy(target.data(), source.data(), count);
    return;
  }
  if (count == 0) return;
  target[0] = static_cast<uint8_t>(source[0] >> bits);
  for (size_t i = 1; i < count; ++i) target[i] = static_cast<uint8_t>(source[i - 1] << (8 - bits) | source[i] >> bits);
  if (count < target.size()) target[count] = static_cast<uint8_t>(source[count - 1] << (8 - bits));
}

// Copies columns `first` to before `end` of a row to the same columns of another, whose pixels there are zero.
template <int kDepth>
void copy_columns(const uint8_t* source, uint8_t* target, int first, int end) {
  const uint64_t first_bit = uint64_t{kDepth} * static_cast<uint64_t>(first);
  const uint64_t last_bit = uint64_t{kDepth} * static_cast<uint64_t>(end) - 1;
  const auto first_byte = static_cast<size_t>(first_bit / 8), last_byte = static_cast<size_t>(last_bit / 8);
  const int head = 0xFF >> first_bit % 8, tail = 0xFF00 >> (last_bit % 8 + 1);
  const auto merge = [&](size_t byte, int mask) {
    target[byte] = static_cast<uint8_t>(target[byte] | (source[byte] & mask));
  };
  if (first_byte == last_byte) return merge(first_byte, head & tail);
  merge(first_byte, head);
  std::memcpy(target + first_byte + 1, source + first_byte + 1, last_byte - first_byte - 1);
  merge(last_byte, tail);
}

// The end of the columns from `first` on that move as far as it does.
int end_of_step(int first, int width, int32_t offset) {
  const uint64_t shift = shift_of(first, width, offset);
  int end = first + 1;
  while (end < width && shift_of(end, width, offset) == shift) ++end;
  return end;
}

template <int kDepth>
void skew_band(ConstDibView source, DibView result, int32_t offset, int first_row, int end_row) {
  for (int first = 0, end = 0; first < source.width(); first = end) {
    end = end_of_step(first, source.width(), offset);
    const int shift = static_cast<int>(shift_of(first, source.width(), offset));
    for (int y = first_row; y < end_row; ++y)
      copy_columns<kDepth>(source.row(y).data(), result.row(y + shift).data(), first, end);
  }
}

}  // namespace

void skew_rows(ConstDibView source, DibView result, int32_t offset) {
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0; y < source.height(); ++y) {
      const Shift shift = row_shift(depth, shift_of(y, source.height(), offset, depth));
      // Up to the end of the row's padding, which takes what the last byte carries over.
      const std::span<uint8_t> row(result.row(y).data(), static_cast<size_t>(result.stride()));
      if (shift.bytes < row.size()) copy_shifted(source.row(y), row.subspan(shift.bytes), shift.bits);
    }
  });
}

void skew_columns(ConstDibView source, DibView result, int32_t offset) {
  constexpr int kBand = 64;  // rows that stay in cache while all columns are moved
  with_depth(source.depth(), [&](auto depth) {
    for (int y = 0; y < source.height(); y += std::min(kBand, source.height() - y))
      skew_band<depth>(source, result, offset, y, y + std::min(kBand, source.height() - y));
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
