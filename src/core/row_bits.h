// Rows of 1 bit per pixel, 64 pixels at a time.
#pragma once

#include <cstring>
#include <span>

#include "core/word.h"

namespace vorel {

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

// The set bits of each group of 2, 4 or 8 bits, as numbers in the groups. Groups of one bit count themselves.
constexpr uint64_t counts_in_groups(uint64_t word, int bits) {
  if (bits >= 2) word -= word >> 1 & 0x5555'5555'5555'5555;
  if (bits >= 4) word = (word & 0x3333'3333'3333'3333) + (word >> 2 & 0x3333'3333'3333'3333);
  if (bits >= 8) word = (word + (word >> 4)) & 0x0F0F'0F0F'0F0F'0F0F;
  return word;
}

// std::popcount calls a function where the compiler may not use the processor's instruction.
constexpr int count_ones(uint64_t word) { return static_cast<int>(counts_in_groups(word, 8) * 0x0101'0101'0101'0101 >> 56); }

}  // namespace vorel
