// Scratch memory for kernels, allocated piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vorel {

// Pieces are rounded up to multiples of kPieceAlignment. The kernel states its total in advance.
class Arena {
 public:
  static constexpr size_t kPieceAlignment = 64;

  explicit Arena(std::span<uint8_t> memory) : next_(memory.data()) {}

  template <class T>
  std::span<T> take(size_t count) {
    auto* const piece = reinterpret_cast<T*>(next_);
    next_ += (count * sizeof(T) + kPieceAlignment - 1) / kPieceAlignment * kPieceAlignment;
    return {piece, count};
  }

 private:
  uint8_t* next_;
};

}  // namespace vorel
