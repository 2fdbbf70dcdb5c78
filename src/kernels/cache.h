// Prefetching, for accesses in an order that the processor does not predict. Inline throughout, because the compiler drops calls
// that only prefetch.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorel::kernels::VOREL_LEVEL {

inline constexpr size_t kCacheLine = 64;

// To the first level: for a few hundred bytes that are needed next.
[[gnu::always_inline]] inline void read_ahead(const uint8_t* from, size_t count) {
  for (size_t i = 0; i < count; i += kCacheLine) __builtin_prefetch(from + i);
}

// To the second level: for whole rows.
[[gnu::always_inline]] inline void read_row_ahead(const uint8_t* from, size_t count) {
  for (size_t i = 0; i < count; i += kCacheLine) __builtin_prefetch(from + i, 0, 2);
}

[[gnu::always_inline]] inline void write_ahead(const uint8_t* to, size_t count) {
  for (size_t i = 0; i < count; i += kCacheLine) __builtin_prefetch(to + i, 1);
}

}  // namespace vorel::kernels::VOREL_LEVEL
