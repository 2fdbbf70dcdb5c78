// Memory for large blocks. It is mapped, with huge pages if the system has them, and kept for a while after it is freed: a
// new page costs more than most operations on the pixels in it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorel {

// Smaller blocks are on the heap. With the address sanitizer all are, so that it sees their ends.
#ifdef __SANITIZE_ADDRESS__
inline constexpr size_t kLargeBytes = SIZE_MAX;
#else
inline constexpr size_t kLargeBytes = size_t{4} << 20;
#endif

struct LargePiece {
  uint8_t* bytes = nullptr;
  size_t room = 0;  // at least as many bytes as asked for
};

// Null when memory is short.
LargePiece take_large(size_t bytes, bool zeroed);

void give_back_large(const LargePiece& piece);

}  // namespace vorel
