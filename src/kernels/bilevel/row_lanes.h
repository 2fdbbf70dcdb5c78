// Sixteen rows of a picture side by side: each lane is a row.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <emmintrin.h>
#include <span>
#ifdef __AVX2__
#include <immintrin.h>
#endif

namespace vorel::kernels::VOREL_LEVEL {

inline constexpr int kLanes = 16;
using Lanes = int16_t __attribute__((vector_size(2 * kLanes)));

struct LaneHalves {
  __m128i low, high;
};

inline Lanes lanes_of(int16_t value) { return Lanes{} + value; }

// `yes` where the comparison holds.
inline Lanes chosen(Lanes condition, Lanes yes, Lanes no) { return (condition & yes) | (~condition & no); }

// Each lane takes the value of the lane before it; the first one takes `first`.
inline Lanes moved_on(Lanes lanes, int16_t first) {
  return __builtin_shufflevector(lanes, lanes_of(first), 16, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14);
}

// The upper halves of the products.
inline Lanes high_product(Lanes a, int16_t b) {
#ifdef __AVX2__
  return std::bit_cast<Lanes>(_mm256_mulhi_epi16(std::bit_cast<__m256i>(a), _mm256_set1_epi16(b)));
#else
  const auto halves = std::bit_cast<LaneHalves>(a);
  const __m128i factor = _mm_set1_epi16(b);
  return std::bit_cast<Lanes>(LaneHalves{_mm_mulhi_epi16(halves.low, factor), _mm_mulhi_epi16(halves.high, factor)});
#endif
}

// Sixteen bytes as lanes.
inline Lanes widened(const uint8_t* bytes) {
  const __m128i packed = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), zero = _mm_setzero_si128();
  return std::bit_cast<Lanes>(LaneHalves{_mm_unpacklo_epi8(packed, zero), _mm_unpackhi_epi8(packed, zero)});
}

// Lanes of 0 to 255 as bytes.
inline void store_bytes(Lanes lanes, uint8_t* bytes) {
  const auto halves = std::bit_cast<LaneHalves>(lanes);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(halves.low, halves.high));
}

// A bit for each lane, set if the lane is all ones rather than 0; the first lane's is the lowest.
inline uint16_t bits_of(Lanes lanes) {
  const auto halves = std::bit_cast<LaneHalves>(lanes);
  return static_cast<uint16_t>(_mm_movemask_epi8(_mm_packs_epi16(halves.low, halves.high)));
}

inline constexpr auto kReversed = [] {
  std::array<uint8_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte)
    for (unsigned bit = 0; bit < 8; ++bit) table[byte] |= static_cast<uint8_t>((byte >> bit & 1) << (7 - bit));
  return table;
}();

// Stores bits in the order of `bits_of` as two bytes of a row of 1-bit pixels, or as many as the row has left.
inline void store_bits(int bits, std::span<uint8_t> row) {
  row[0] = kReversed[bits & 0xFF];
  if (row.size() > 1) row[1] = kReversed[bits >> 8 & 0xFF];
}

// Sixteen columns of sixteen bytes become sixteen rows, `from_stride` and `to_stride` bytes apart.
inline void transpose_bytes(const uint8_t* from, size_t from_stride, uint8_t* to, size_t to_stride) {
  __m128i rows[16], turned[16];
  for (size_t i = 0; i < 16; ++i) rows[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i * from_stride));
  // Interleaving each row with the one eight further, four times over, transposes the matrix.
  for (int round = 0; round < 4; ++round) {
    for (size_t i = 0; i < 8; ++i) {
      turned[2 * i] = _mm_unpacklo_epi8(rows[i], rows[i + 8]);
      turned[2 * i + 1] = _mm_unpackhi_epi8(rows[i], rows[i + 8]);
    }
    for (size_t i = 0; i < 16; ++i) rows[i] = turned[i];
  }
  for (size_t i = 0; i < 16; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i * to_stride), rows[i]);
}

}  // namespace vorel::kernels::VOREL_LEVEL
