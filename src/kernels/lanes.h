// Vectors as wide as the level that a kernel is compiled for. Their operators are the compiler's, lane by lane; the
// functions here are single instructions without an operator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace vorel::kernels::VOREL_LEVEL {

#ifdef __AVX2__
inline constexpr size_t kVectorBytes = 32;
#else
inline constexpr size_t kVectorBytes = 16;
#endif

using Bytes = uint8_t __attribute__((vector_size(kVectorBytes)));
using Words = uint16_t __attribute__((vector_size(kVectorBytes)));
using Doublewords = int32_t __attribute__((vector_size(kVectorBytes)));

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

// Vectors of 32 bytes are two halves of 16 here: unpacking, packing and shuffling stay within a half.
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
[[gnu::always_inline]] inline Byte1 smaller(Byte1 a, Byte1 b) { return a < b ? a : b; }
[[gnu::always_inline]] inline Byte1 larger(Byte1 a, Byte1 b) { return a > b ? a : b; }

// The low or high eight bytes of each half, zero-extended; the same for words.
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

// Products of signed words, added in pairs.
[[gnu::always_inline]] inline Doublewords multiply_add(Words a, Words b) {
  return (Doublewords)VOREL_INTRINSIC(madd_epi16)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}
// The high halves of products.
[[gnu::always_inline]] inline Words multiply_high(Words a, Words b) {
  return (Words)VOREL_INTRINSIC(mulhi_epu16)((VOREL_VECTOR)a, (VOREL_VECTOR)b);
}

#ifdef __SSE4_1__
// Bytes of each half in the order of `places`; 0 where the highest bit of a place is set.
[[gnu::always_inline]] inline Bytes shuffle(Bytes bytes, Bytes places) {
  return (Bytes)VOREL_INTRINSIC(shuffle_epi8)((VOREL_VECTOR)bytes, (VOREL_VECTOR)places);
}
// Products of unsigned and signed bytes, added in pairs.
[[gnu::always_inline]] inline Words multiply_add(Bytes a, Bytes signed_bytes) {
  return (Words)VOREL_INTRINSIC(maddubs_epi16)((VOREL_VECTOR)a, (VOREL_VECTOR)signed_bytes);
}

// Sixteen bytes in each half.
[[gnu::always_inline]] inline Bytes halves(const uint8_t* low, [[maybe_unused]] const uint8_t* high) {
#ifdef __AVX2__
  return (Bytes)_mm256_inserti128_si256(_mm256_castsi128_si256(load<__m128i>(low)), load<__m128i>(high), 1);
#else
  return load<Bytes>(low);
#endif
}
#endif

#undef VOREL_VECTOR
#undef VOREL_INTRINSIC

}  // namespace vorel::kernels::VOREL_LEVEL
