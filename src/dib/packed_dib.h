// DIB handles: a lock on any DIB, and DIBs that the library makes.
#pragma once

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "core/header.h"
#include "core/view.h"
#include "frame/error.h"
#include "platform/memory.h"

namespace vorel {

// The first `bytes` bytes of a block. A shorter block is replaced by a private copy, completed with zeros, so that kernels
// need no checks.
class CompleteBytes {
 public:
  // None when no block can be that large or memory for the copy is short.
  static std::optional<CompleteBytes> of(std::span<uint8_t> block, ByteCount bytes) {
    if (bytes <= ByteCount(block.size())) return CompleteBytes(block, block.first(static_cast<size_t>(bytes.value())), {});
    auto copy = ZeroedBuffer::allocate(bytes);
    if (!copy) return std::nullopt;
    std::ranges::copy(block, copy->bytes().begin());
    const std::span<uint8_t> completed = copy->bytes();
    return CompleteBytes(block, completed, std::move(*copy));
  }

  std::span<uint8_t> bytes() const { return bytes_; }
  // The bytes that the block has; those behind them are zero.
  size_t held() const { return std::min(bytes_.size(), block_.size()); }

  // Copies a private copy back into the block; bytes past the block's end are dropped.
  void write_back() const {
    if (bytes_.size() > block_.size()) std::ranges::copy(bytes_.first(block_.size()), block_.begin());
  }

 private:
  CompleteBytes(std::span<uint8_t> block, std::span<uint8_t> bytes, ZeroedBuffer copy)
      : block_(block), bytes_(bytes), copy_(std::move(copy)) {}

  std::span<uint8_t> block_, bytes_;
  ZeroedBuffer copy_;  // empty where the block itself is long enough
};

// A packed DIB locked for a scope.
class LockedDib {
 public:
  // None when the handle cannot be locked.
  static std::optional<LockedDib> lock(HGLOBAL handle) {
    auto block = LockedBlock::lock(handle);
    if (!block) return std::nullopt;
    return LockedDib(std::move(*block));
  }

  // False for a block that is too short; its header then reads as zeros, which every check refuses.
  bool has_header() const { return block().size() >= kHeaderBytes; }
  const DibHeader& header() const { return header_; }

  // The lock outlives its scope. A quirk that is kept: a few failures leave the DIB locked.
  void leave_locked() { block_.leave_locked(); }

  std::span<uint8_t> block() const { return block_.bytes(); }
  std::optional<CompleteBytes> complete(ByteCount bytes) const { return CompleteBytes::of(block(), bytes); }

  // At most `bytes` bytes of the block from an offset on.
  std::span<uint8_t> part(size_t offset, ByteCount bytes) const {
    if (offset >= block().size()) return {};
    const uint64_t there = block().size() - offset;
    return block().subspan(offset, static_cast<size_t>(std::min(there, bytes.value())));
  }

  // The first `count` colours right after the 40-byte header, or fewer: those past the block's end are left out.
  std::optional<CompleteBytes> complete_colors(uint32_t count) const {
    const ByteCount there = (block().size() - kHeaderBytes + sizeof(Rgb) - 1) / sizeof(Rgb);
    return complete(kHeaderBytes + std::min(there, ByteCount(count)) * sizeof(Rgb));
  }

 private:
  explicit LockedDib(LockedBlock block) : block_(std::move(block)), header_{.size = 0, .planes = 0} {
    if (has_header()) header_ = read_header(block_.bytes());
  }

  LockedBlock block_;
  DibHeader header_;
};

// The pixels of a complete DIB, `offset` bytes from its start.
template <class Byte>
BasicView<Byte> pixels_at(std::span<Byte> dib, ByteCount offset, const DibHeader& header) {
  return {dib.data() + offset.value(), static_cast<std::ptrdiff_t>(row_stride(header.depth, header.width).value()),
          header.width, header.height, header.depth};
}

// The colours in a block's first bytes, right after its 40-byte header.
inline std::span<Rgb> colors_in(const CompleteBytes& bytes) {
  const std::span<uint8_t> table = bytes.bytes().subspan(kHeaderBytes);
  return {reinterpret_cast<Rgb*>(table.data()), table.size() / sizeof(Rgb)};
}

// A new block, locked until it is released to the caller.
class OwnedDib {
 public:
  // Zero-filled. kMemory, or kLock.
  static Result<OwnedDib> allocate(ByteCount bytes) { return with_contents(bytes, Contents::kZero); }

  // Unset, for results that are written in full. Bytes that the system adds to the block are zero.
  static Result<OwnedDib> allocate_unset(ByteCount bytes) {
    OwnedDib dib = VOREL_TRY(with_contents(bytes, Contents::kUnset));
    std::ranges::fill(dib.bytes().subspan(static_cast<size_t>(bytes.value())), uint8_t{0});
    return dib;
  }

  // Zero-filled. Tries once more when memory is short.
  static Result<OwnedDib> allocate_or_retry(ByteCount bytes) { return retried(bytes, allocate); }
  static Result<OwnedDib> allocate_unset_or_retry(ByteCount bytes) { return retried(bytes, allocate_unset); }

  // A DIB of this header and another DIB's colour table; `head` holds that DIB's bytes up to the table's end.
  static Result<OwnedDib> with_head(std::span<const uint8_t> head, const DibHeader& header, ByteCount image_bytes,
                                    Result<OwnedDib> (*make)(ByteCount) = allocate) {
    auto dib = make(ByteCount(head.size()) + image_bytes);
    if (!dib) return dib;
    std::ranges::copy(head, dib->bytes().begin());
    write_header(dib->bytes(), header);
    return dib;
  }

  HGLOBAL handle() const { return block_.get(); }
  std::span<uint8_t> bytes() const { return lock_.bytes(); }

  [[nodiscard]] HGLOBAL release() {
    lock_.unlock();
    return block_.release();
  }

 private:
  static Result<OwnedDib> with_contents(ByteCount bytes, Contents contents) {
    auto block = OwnedBlock::allocate(bytes, contents);
    if (!block) return Error::kMemory;
    auto lock = LockedBlock::lock(block->get());
    if (!lock) return Error::kLock;
    return OwnedDib(std::move(*block), std::move(*lock));
  }

  static Result<OwnedDib> retried(ByteCount bytes, Result<OwnedDib> (*make)(ByteCount)) {
    auto dib = make(bytes);
    return !dib && dib.error() == Error::kMemory ? make(bytes) : std::move(dib);
  }

  OwnedDib(OwnedBlock block, LockedBlock lock) : block_(std::move(block)), lock_(std::move(lock)) {}

  OwnedBlock block_;
  LockedBlock lock_;  // declared after the block, so that it is unlocked before it is freed
};

// Releases an operation's result to the caller.
inline Result<HGLOBAL> released(Result<OwnedDib> dib) {
  if (!dib) return dib.error();
  return dib->release();
}

}  // namespace vorel
