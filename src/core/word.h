// Eight bytes of a row at a time: the first byte in memory is the lowest of the word.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vorel {

static_assert(std::endian::native == std::endian::little);

inline constexpr int kWordBytes = 8;

inline uint64_t load_word(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

inline void store_word(uint8_t* bytes, uint64_t word) { std::memcpy(bytes, &word, sizeof word); }

}  // namespace vorel
