// Rows of 1 bit per pixel, 64 pixels at a time.
#pragma once

#include <cstring>
#include <span>

#include "core/word.h"

namespace vorel::programs {

// The word at a byte of a row, filled up with zeros where the row ends.
inline uint64_t word_at(std::span<const uint8_t> row, size_t at) {
  const size_t left = row.size() - at;
  if (left >= kWordBytes) return load_word(row.data() + at);
  uint64_t word = 0;
  std::memcpy(&word, row.data() + at, left);
  return word;
}

// The same with the leftmost pixel in the highest bit.
inline uint64_t pixels_at(std::span<const uint8_t> row, size_t at) { return __builtin_bswap64(word_at(row, at)); }

// The first `count` of such pixels; zeros for the others.
constexpr uint64_t first_of(uint64_t pixels, int count) { return count < 64 ? pixels & ~(~uint64_t{0} >> count) : pixels; }

}  // namespace vorel::programs
