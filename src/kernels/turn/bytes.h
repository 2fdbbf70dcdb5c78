// Vectors of bytes as wide as the level has them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <immintrin.h>

namespace vorel::kernels::VOREL_LEVEL {

#ifdef __AVX2__

class Bytes {
 public:
  static constexpr size_t kCount = 32;

  static Bytes load(const uint8_t* bytes) { return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes))}; }
  void store(uint8_t* bytes) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), all_); }

  Bytes reversed() const {
    const __m256i order = _mm256_broadcastsi128_si256(_mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    return {_mm256_permute4x64_epi64(_mm256_shuffle_epi8(all_, order), 0x4E)};
  }
  Bytes with_swapped_nibbles() const {
    const __m256i low = _mm256_set1_epi8(0x0F);
    return {_mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(all_, 4), low),
                            _mm256_slli_epi16(_mm256_and_si256(all_, low), 4))};
  }
  Bytes with_reversed_bits() const {
    const __m256i low = _mm256_set1_epi8(0x0F);
    const __m256i reversed = _mm256_broadcastsi128_si256(_mm_set_epi8(15, 7, 11, 3, 13, 5, 9, 1, 14, 6, 10, 2, 12, 4, 8, 0));
    const __m256i from_low = _mm256_shuffle_epi8(_mm256_slli_epi16(reversed, 4), _mm256_and_si256(all_, low));
    const __m256i from_high = _mm256_shuffle_epi8(reversed, _mm256_and_si256(_mm256_srli_epi16(all_, 4), low));
    return {_mm256_or_si256(from_low, from_high)};
  }

  // Each byte moved right by some bits, 1 to 7, and filled up from the byte in front of it.
  static Bytes shifted_in(Bytes in_front, Bytes here, int bits) {
    const __m256i kept = _mm256_set1_epi8(static_cast<char>(0xFF >> bits));
    const __m256i moved = _mm256_srl_epi16(here.all_, _mm_cvtsi32_si128(bits));
    const __m256i added = _mm256_sll_epi16(in_front.all_, _mm_cvtsi32_si128(8 - bits));
    return {_mm256_or_si256(_mm256_and_si256(kept, moved), _mm256_andnot_si256(kept, added))};
  }

 private:
  Bytes(__m256i all) : all_(all) {}

  __m256i all_;
};

#else

class Bytes {
 public:
  static constexpr size_t kCount = 16;

  static Bytes load(const uint8_t* bytes) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))}; }
  void store(uint8_t* bytes) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), all_); }

  Bytes reversed() const {
#ifdef __SSSE3__
    return {_mm_shuffle_epi8(all_, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15))};
#else
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(all_, 8), _mm_srli_epi16(all_, 8));
    return {_mm_shuffle_epi32(_mm_shufflehi_epi16(_mm_shufflelo_epi16(pairs, 0x1B), 0x1B), 0x4E)};
#endif
  }
  Bytes with_swapped_nibbles() const { return with_swapped<4>(0x0F); }
  Bytes with_reversed_bits() const { return with_swapped<4>(0x0F).with_swapped<2>(0x33).with_swapped<1>(0x55); }

  static Bytes shifted_in(Bytes in_front, Bytes here, int bits) {
    const __m128i kept = _mm_set1_epi8(static_cast<char>(0xFF >> bits));
    const __m128i moved = _mm_srl_epi16(here.all_, _mm_cvtsi32_si128(bits));
    const __m128i added = _mm_sll_epi16(in_front.all_, _mm_cvtsi32_si128(8 - bits));
    return {_mm_or_si128(_mm_and_si128(kept, moved), _mm_andnot_si128(kept, added))};
  }

 private:
  Bytes(__m128i all) : all_(all) {}

  // Exchanges the groups of kBits bits that the mask selects with the others.
  template <int kBits>
  Bytes with_swapped(char mask) const {
    const __m128i low = _mm_set1_epi8(mask);
    return {_mm_or_si128(_mm_and_si128(_mm_srli_epi16(all_, kBits), low), _mm_slli_epi16(_mm_and_si128(all_, low), kBits))};
  }

  __m128i all_;
};

#endif

}  // namespace vorel::kernels::VOREL_LEVEL
