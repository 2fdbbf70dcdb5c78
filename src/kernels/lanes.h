// Vectors as wide as the level that a kernel is compiled for. Their operators are the compiler's, lane by lane; the
// functions here are single instructions without an operator.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <type_traits>
#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace vorel::kernels::VOREL_LEVEL {

#ifdef __AVX2__
// At AVX-512 too: unaligned vectors of 64 bytes always cross a cache line, and measured slower.
inline constexpr size_t kVectorBytes = 32;
#else
inline constexpr size_t kVectorBytes = 16;
#endif

using Bytes = uint8_t __attribute__((vector_size(kVectorBytes)));
using Words = uint16_t __attribute__((vector_size(kVectorBytes)));
using SignedWords = int16_t __attribute__((vector_size(kVectorBytes)));
using Doublewords = int32_t __attribute__((vector_size(kVectorBytes)));

using Bytes16 = uint8_t __attribute__((vector_size(16)));
using Bytes64 = uint8_t __attribute__((vector_size(64)));
using Words64 = uint16_t __attribute__((vector_size(64)));

// A vector of one lane, for the ends of short rows.
using Byte1 = uint8_t __attribute__((vector_size(1)));

template <class V>
[[gnu::always_inline]] inline V load(const void* from) {
  V vector;
  std::memcpy(&vector, from, sizeof vector);
  return vector;
}

template <class V>
[[gnu::always_inline]] inline void store(void* to, V vector) {
  std::memcpy(to, &vector, sizeof vector);
}

// Stores a mask whose first bit is the lowest, or as many of its bytes as there is room for.
template <class Mask>
[[gnu::always_inline]] inline void store_mask(Mask mask, uint8_t* to, size_t room) {
  // The usual case has a constant size, and is a single store from a register.
  if (room >= sizeof mask) return void(std::memcpy(to, &mask, sizeof mask));
  const Mask last = mask;
  std::memcpy(to, &last, room);
}

// Calls step.operator()<V>(x) for vectors V of bytes from x on, until all of [begin, end) is done. The last vector may overlap the
// one before it, so a step must not read results.
template <class Step>
[[gnu::always_inline]] inline void in_vectors(size_t begin, size_t end, Step step) {
  if (end - begin < kVectorBytes) {
    for (size_t x = begin; x < end; ++x) step.template operator()<Byte1>(x);
    return;
  }
  const size_t last = end - kVectorBytes;
  for (size_t x = begin;; x = x + kVectorBytes < last ? x + kVectorBytes : last) {
    step.template operator()<Bytes>(x);
    if (x == last) return;
  }
}

// For the lambdas passed to in_vectors().
#define VOREL_INLINE __attribute__((always_inline))

// Vectors of 32 bytes are two parts of 16 here: unpacking, packing and shuffling stay within a part.
#ifdef __AVX2__
#define VOREL_VECTOR __m256i
#define VOREL_INTRINSIC(name) _mm256_##name
#else
#define VOREL_VECTOR __m128i
#define VOREL_INTRINSIC(name) _mm_##name
#endif

[[gnu::always_inline]] inline Bytes smaller(Bytes a, Bytes b) {
  return (Bytes)VOREL_INTRINSIC(min_epu8)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
[[gnu::always_inline]] inline Bytes larger(Bytes a, Bytes b) {
  return (Bytes)VOREL_INTRINSIC(max_epu8)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
// The mean, rounded up.
[[gnu::always_inline]] inline Bytes mean(Bytes a, Bytes b) {
  return (Bytes)VOREL_INTRINSIC(avg_epu8)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
[[gnu::always_inline]] inline Byte1 smaller(Byte1 a, Byte1 b) { return a < b ? a : b; }
[[gnu::always_inline]] inline Byte1 larger(Byte1 a, Byte1 b) { return a > b ? a : b; }

// The highest bit of each byte, the first one's lowest.
using Mask = std::conditional_t<kVectorBytes == 32, uint32_t, uint16_t>;
[[gnu::always_inline]] inline Mask mask_of(Bytes bytes) {
  return static_cast<Mask>(VOREL_INTRINSIC(movemask_epi8)((VOREL_VECTOR)bytes));
}

// The low or high eight bytes of each part, zero-extended; the same for words.
[[gnu::always_inline]] inline Words low_words(Bytes bytes) {
  return (Words)VOREL_INTRINSIC(unpacklo_epi8)((VOREL_VECTOR)bytes, VOREL_VECTOR{});
}
[[gnu::always_inline]] inline Words high_words(Bytes bytes) {
  return (Words)VOREL_INTRINSIC(unpackhi_epi8)((VOREL_VECTOR)bytes, VOREL_VECTOR{});
}
[[gnu::always_inline]] inline Words low_words(Words words) {
  return (Words)VOREL_INTRINSIC(unpacklo_epi16)((VOREL_VECTOR)words, VOREL_VECTOR{});
}
[[gnu::always_inline]] inline Words high_words(Words words) {
  return (Words)VOREL_INTRINSIC(unpackhi_epi16)((VOREL_VECTOR)words, VOREL_VECTOR{});
}

// Packs signed numbers, saturated to the narrower type.
[[gnu::always_inline]] inline Words pack(Doublewords low, Doublewords high) {
  return (Words)VOREL_INTRINSIC(packs_epi32)((VOREL_VECTOR)low, (VOREL_VECTOR)high);
}
[[gnu::always_inline]] inline Bytes pack(Words low, Words high) {
  return (Bytes)VOREL_INTRINSIC(packus_epi16)((VOREL_VECTOR)low, (VOREL_VECTOR)high);
}

// The low or high eight bytes of each part, each followed by its partner.
[[gnu::always_inline]] inline Bytes low_pairs(Bytes bytes, Bytes partners) {
  return (Bytes)VOREL_INTRINSIC(unpacklo_epi8)((VOREL_VECTOR)bytes, (VOREL_VECTOR)partners);
}
[[gnu::always_inline]] inline Bytes high_pairs(Bytes bytes, Bytes partners) {
  return (Bytes)VOREL_INTRINSIC(unpackhi_epi8)((VOREL_VECTOR)bytes, (VOREL_VECTOR)partners);
}

// The low or high eight bytes of each part of both, in turn.
[[gnu::always_inline]] inline Bytes low_halves(Bytes a, Bytes b) {
  return (Bytes)VOREL_INTRINSIC(unpacklo_epi64)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
[[gnu::always_inline]] inline Bytes high_halves(Bytes a, Bytes b) {
  return (Bytes)VOREL_INTRINSIC(unpackhi_epi64)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}

// Packs signed numbers, saturated to signed bytes.
[[gnu::always_inline]] inline Bytes pack_signed(Words low, Words high) {
  return (Bytes)VOREL_INTRINSIC(packs_epi16)((VOREL_VECTOR)low, (VOREL_VECTOR)high);
}

[[gnu::always_inline]] inline SignedWords clamped_to_bytes(SignedWords words) {
  const auto most = (VOREL_VECTOR)(SignedWords{} + int16_t{255});
  return (SignedWords)VOREL_INTRINSIC(max_epi16)(VOREL_INTRINSIC(min_epi16)((VOREL_VECTOR)words, most), VOREL_VECTOR{});
}

// Products of signed words, added in pairs.
[[gnu::always_inline]] inline Doublewords multiply_add(Words a, Words b) {
  return (Doublewords)VOREL_INTRINSIC(madd_epi16)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
// The high halves of products.
[[gnu::always_inline]] inline Words multiply_high(Words a, Words b) {
  return (Words)VOREL_INTRINSIC(mulhi_epu16)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}

// Products of unsigned and signed bytes, added in pairs.
[[gnu::always_inline]] inline Words multiply_add(Bytes a, Bytes signed_bytes) {
#ifdef __SSSE3__
  return (Words)VOREL_INTRINSIC(maddubs_epi16)((VOREL_VECTOR)a, (VOREL_VECTOR)signed_bytes);
#else
  const auto factors = (SignedWords)signed_bytes;
  return ((Words)a & 0xFF) * (Words)(factors << 8 >> 8) + ((Words)a >> 8) * (Words)(factors >> 8);
#endif
}

#ifdef __SSE4_1__
// Bytes of each part in the order of `places`; 0 where the highest bit of a place is set.
[[gnu::always_inline]] inline Bytes shuffle(Bytes bytes, Bytes places) {
  return (Bytes)VOREL_INTRINSIC(shuffle_epi8)((VOREL_VECTOR)bytes, (VOREL_VECTOR)places);
}
// Sixteen bytes in each part, `step` bytes apart.
[[gnu::always_inline]] inline Bytes parts(const uint8_t* from, [[maybe_unused]] size_t step) {
#ifdef __AVX2__
  return (Bytes)_mm256_inserti128_si256(_mm256_castsi128_si256(load<__m128i>(from)), load<__m128i>(from + step), 1);
#else
  return load<Bytes>(from);
#endif
}
#endif

// Bytes of a whole vector in the order of `places`.
#ifdef __SSSE3__
[[gnu::always_inline]] inline Bytes16 picked(Bytes16 bytes, Bytes16 places) {
  return (Bytes16)_mm_shuffle_epi8((__m128i)bytes, (__m128i)places);
}
#endif
#ifdef __AVX512VBMI__
[[gnu::always_inline]] inline Bytes64 picked(Bytes64 bytes, Bytes64 places) {
  return (Bytes64)_mm512_maskz_permutexvar_epi8(~__mmask64{0}, (__m512i)places, (__m512i)bytes);
}
// Bytes of two vectors.
[[gnu::always_inline]] inline Bytes64 picked(Bytes64 low, Bytes64 high, Bytes64 places) {
  return (Bytes64)_mm512_permutex2var_epi8((__m512i)low, (__m512i)places, (__m512i)high);
}

// The same as for the level's own vectors. Masks keep compilers from warnings about lanes without a value.
[[gnu::always_inline]] inline Bytes64 low_pairs(Bytes64 bytes, Bytes64 partners) {
  return (Bytes64)_mm512_maskz_unpacklo_epi8(~__mmask64{0}, (__m512i)bytes, (__m512i)partners);
}
[[gnu::always_inline]] inline Bytes64 high_pairs(Bytes64 bytes, Bytes64 partners) {
  return (Bytes64)_mm512_maskz_unpackhi_epi8(~__mmask64{0}, (__m512i)bytes, (__m512i)partners);
}
[[gnu::always_inline]] inline Bytes64 low_halves(Bytes64 a, Bytes64 b) {
  return (Bytes64)_mm512_maskz_unpacklo_epi64(static_cast<__mmask8>(~0), (__m512i)a, (__m512i)b);
}
[[gnu::always_inline]] inline Bytes64 mean(Bytes64 a, Bytes64 b) { return (Bytes64)_mm512_avg_epu8((__m512i)a, (__m512i)b); }
[[gnu::always_inline]] inline Bytes64 high_halves(Bytes64 a, Bytes64 b) {
  return (Bytes64)_mm512_maskz_unpackhi_epi64(static_cast<__mmask8>(~0), (__m512i)a, (__m512i)b);
}
[[gnu::always_inline]] inline Bytes64 pack_signed(Words64 low, Words64 high) {
  return (Bytes64)_mm512_packs_epi16((__m512i)low, (__m512i)high);
}
[[gnu::always_inline]] inline Words64 multiply_add(Bytes64 a, Bytes64 signed_bytes) {
  return (Words64)_mm512_maddubs_epi16((__m512i)a, (__m512i)signed_bytes);
}
[[gnu::always_inline]] inline Words64 multiply_high(Words64 a, Words64 b) {
  return (Words64)_mm512_mulhi_epu16((__m512i)a, (__m512i)b);
}
// The even groups of eight bytes, then the odd ones.
[[gnu::always_inline]] inline Bytes64 even_then_odd_groups(Bytes64 bytes) {
  return (Bytes64)_mm512_maskz_permutexvar_epi64(static_cast<__mmask8>(~0), _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                                 (__m512i)bytes);
}
#endif

// The bytes in the opposite order.
[[gnu::always_inline]] inline Bytes reversed(Bytes bytes) {
#ifdef __SSSE3__
  constexpr auto kDescending = [] {
    std::array<uint8_t, kVectorBytes> places{};
    for (size_t i = 0; i < kVectorBytes; ++i) places[i] = static_cast<uint8_t>(kVectorBytes - 1 - i);
    return places;
  }();
  const auto order = load<Bytes>(kDescending.data());
#endif
#if defined(__AVX2__)
  return (Bytes)_mm256_permute4x64_epi64((__m256i)shuffle(bytes, order), 0x4E);
#elif defined(__SSSE3__)
  return shuffle(bytes, order);
#else
  const auto pairs = (__m128i)((Words)bytes << 8 | (Words)bytes >> 8);
  return (Bytes)_mm_shuffle_epi32(_mm_shufflehi_epi16(_mm_shufflelo_epi16(pairs, 0x1B), 0x1B), 0x4E);
#endif
}

// Exchanges the groups of kBits bits that the mask selects with the others.
template <int kBits>
[[gnu::always_inline]] inline Bytes with_swapped_bits(Bytes bytes, uint8_t mask) {
  return ((Bytes)((Words)bytes >> kBits) & mask) | (Bytes)((Words)(bytes & mask) << kBits);
}

// Each byte with its bits in the opposite order.
[[gnu::always_inline]] inline Bytes with_reversed_bits(Bytes bytes) {
#ifdef __SSSE3__
  constexpr auto kReversedNibbles = [] {
    constexpr uint8_t kNibbles[] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
    std::array<uint8_t, kVectorBytes> nibbles{};
    for (size_t i = 0; i < kVectorBytes; ++i) nibbles[i] = kNibbles[i % 16];
    return nibbles;
  }();
  const auto table = load<Bytes>(kReversedNibbles.data());
  return (Bytes)((Words)shuffle(table, bytes & 0x0F) << 4) | shuffle(table, (Bytes)((Words)bytes >> 4) & 0x0F);
#else
  return with_swapped_bits<1>(with_swapped_bits<2>(with_swapped_bits<4>(bytes, 0x0F), 0x33), 0x55);
#endif
}

// Each byte moved right by some bits, 1 to 7, and filled up from the byte in front of it.
[[gnu::always_inline]] inline Bytes shifted_in(Bytes in_front, Bytes here, int bits) {
  const auto kept = static_cast<uint8_t>(0xFF >> bits);
  return ((Bytes)((Words)here >> bits) & kept) | ((Bytes)((Words)in_front << (8 - bits)) & static_cast<uint8_t>(~kept));
}

// Stores a vector to aligned memory, past the caches.
[[gnu::always_inline]] inline void stream(void* to, Bytes vector) {
#ifdef __AVX2__
  _mm256_stream_si256(static_cast<__m256i*>(to), (__m256i)vector);
#else
  _mm_stream_si128(static_cast<__m128i*>(to), (__m128i)vector);
#endif
}

#undef VOREL_VECTOR
#undef VOREL_INTRINSIC

}  // namespace vorel::kernels::VOREL_LEVEL
