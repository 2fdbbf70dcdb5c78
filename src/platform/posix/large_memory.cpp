#include "platform/posix/large_memory.h"

#include <cstring>
#include <mutex>
#include <sys/mman.h>
#include <utility>

namespace vorel {
namespace {

constexpr size_t kPage = 4096, kHugePage = size_t{2} << 20;

// Limits of the kept pieces, in bytes and in number; a single piece may be larger. When memory is short the system may take
// the pages of kept pieces back.
constexpr size_t kMostKeptBytes = size_t{256} << 20;
constexpr int kMostKept = 8;

constexpr size_t rounded_up(size_t bytes, size_t unit) { return (bytes + unit - 1) / unit * unit; }

// A piece begins in the first page of its mapping and ends with it.
uint8_t* mapping_of(const LargePiece& piece) { return piece.bytes - reinterpret_cast<uintptr_t>(piece.bytes) % kPage; }
size_t mapped_bytes(const LargePiece& piece) { return static_cast<size_t>(piece.bytes - mapping_of(piece)) + piece.room; }

void unmap(const LargePiece& piece) {
  if (piece.bytes != nullptr) munmap(mapping_of(piece), mapped_bytes(piece));
}

// Begins at a huge page plus an offset that differs from piece to piece: equal addresses within a page slow down operations
// that use several pieces together.
LargePiece map(size_t bytes, size_t offset) {
  const size_t length = rounded_up(offset + bytes, kPage), reserved = length + kHugePage;
  void* const memory = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return {};
  auto* const first = static_cast<uint8_t*>(memory);
  const size_t in_front = rounded_up(reinterpret_cast<uintptr_t>(first), kHugePage) - reinterpret_cast<uintptr_t>(first);
  uint8_t* const mapping = first + in_front;
  if (in_front != 0) munmap(first, in_front);
  if (in_front != kHugePage) munmap(mapping + length, kHugePage - in_front);
  madvise(mapping, length, MADV_HUGEPAGE);
  return {mapping + offset, length - offset};
}

// Pieces that were freed, the oldest first.
class KeptPieces {
 public:
  // The smallest piece that is large enough, unless much of it would lie idle.
  LargePiece take(size_t bytes) {
    int best = -1;
    for (int i = 0; i < count_; ++i) {
      const size_t room = pieces_[i].room;
      const bool fits = room >= bytes && room <= bytes + bytes / 4 + kPage;
      if (fits && (best < 0 || room < pieces_[best].room)) best = i;
    }
    return best < 0 ? LargePiece{} : remove(best);
  }

  // Keeps a piece, whatever its size; older ones that exceed the limits with it are unmapped.
  template <class Unmap>
  void keep(const LargePiece& piece, Unmap unmap_piece) {
    while (count_ != 0 && (count_ == kMostKept || bytes_ + piece.room > kMostKeptBytes)) unmap_piece(remove(0));
    pieces_[count_++] = piece;
    bytes_ += piece.room;
  }

  template <class Unmap>
  void drop_all(Unmap unmap_piece) {
    while (count_ != 0) unmap_piece(remove(0));
  }

  size_t next_offset() { return static_cast<size_t>(++taken_) * 13 % 64 * 64; }

 private:
  LargePiece remove(int index) {
    const LargePiece piece = pieces_[index];
    --count_;
    for (int i = index; i < count_; ++i) pieces_[i] = pieces_[i + 1];
    bytes_ -= piece.room;
    return piece;
  }

  LargePiece pieces_[kMostKept];
  int count_ = 0;
  size_t bytes_ = 0;
  unsigned taken_ = 0;
};

std::mutex kept_mutex;
constinit KeptPieces kept;

}  // namespace

LargePiece take_large(size_t bytes, bool zeroed) {
  LargePiece piece;
  size_t offset = 0;
  {
    const std::lock_guard guard(kept_mutex);
    piece = kept.take(bytes);
    if (piece.bytes == nullptr) offset = kept.next_offset();
  }
  if (piece.bytes == nullptr) {
    if (bytes > SIZE_MAX / 2) return {};
    piece = map(bytes, offset);
    if (piece.bytes != nullptr) return piece;
    // Kept pieces count against the process's limit.
    {
      const std::lock_guard guard(kept_mutex);
      kept.drop_all(unmap);
    }
    return map(bytes, offset);
  }
  if (zeroed) std::memset(piece.bytes, 0, bytes);
  return piece;
}

void give_back_large(const LargePiece& piece) {
  // The contents may be lost from now on.
  madvise(mapping_of(piece), mapped_bytes(piece), MADV_FREE);
  const std::lock_guard guard(kept_mutex);
  kept.keep(piece, unmap);
}

}  // namespace vorel
