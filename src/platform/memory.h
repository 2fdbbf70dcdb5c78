// Owning types for global memory: a block that the library allocates, a lock on any block, and a scratch buffer.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "core/byte_count.h"
#include "platform/win32.h"

namespace vorel {

// A lock on a global block, released with its scope.
class LockedBlock {
 public:
  // None for a null, dead or discarded handle.
  static std::optional<LockedBlock> lock(HGLOBAL handle) {
    void* data = handle == nullptr ? nullptr : GlobalLock(handle);
    if (data == nullptr) return std::nullopt;
    return LockedBlock(handle, {static_cast<uint8_t*>(data), GlobalSize(handle)});
  }

  LockedBlock(LockedBlock&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)), bytes_(std::exchange(other.bytes_, {})) {}
  LockedBlock& operator=(LockedBlock&&) = delete;
  ~LockedBlock() { unlock(); }

  std::span<uint8_t> bytes() const { return bytes_; }

  // Ends the lock before its scope does.
  void unlock() {
    if (handle_ != nullptr) GlobalUnlock(std::exchange(handle_, nullptr));
  }

  // The lock outlives its scope.
  void leave_locked() { handle_ = nullptr; }

 private:
  LockedBlock(HGLOBAL handle, std::span<uint8_t> bytes) : handle_(handle), bytes_(bytes) {}

  HGLOBAL handle_;
  std::span<uint8_t> bytes_;
};

// The initial content of a new block. Memory that is overwritten in full need not be cleared first.
enum class Contents { kZero, kUnset };

// A global block that is freed with its scope unless it is released to the caller.
class OwnedBlock {
 public:
  // A movable block; none when memory is short or no block can be that large.
  static std::optional<OwnedBlock> allocate(ByteCount bytes, Contents contents = Contents::kZero) {
    const UINT flags = contents == Contents::kZero ? GHND : GMEM_MOVEABLE;
    HGLOBAL handle = bytes.fits_block() ? GlobalAlloc(flags, static_cast<size_t>(bytes.value())) : nullptr;
    if (handle == nullptr) return std::nullopt;
    return OwnedBlock(handle);
  }

  explicit OwnedBlock(HGLOBAL handle) : handle_(handle) {}
  OwnedBlock(OwnedBlock&& other) noexcept : handle_(other.release()) {}
  OwnedBlock& operator=(OwnedBlock&&) = delete;
  ~OwnedBlock() {
    if (handle_ != nullptr) GlobalFree(handle_);
  }

  HGLOBAL get() const { return handle_; }
  [[nodiscard]] HGLOBAL release() { return std::exchange(handle_, nullptr); }

 private:
  HGLOBAL handle_;
};

// Zero-filled scratch memory.
class ZeroedBuffer {
 public:
  static std::optional<ZeroedBuffer> allocate(ByteCount bytes) {
    if (!bytes.fits_block()) return std::nullopt;
    const auto size = static_cast<size_t>(bytes.value());
    auto* data = static_cast<uint8_t*>(std::calloc(size == 0 ? 1 : size, 1));
    if (data == nullptr) return std::nullopt;
    return ZeroedBuffer(data, size);
  }

  ZeroedBuffer() = default;

  std::span<uint8_t> bytes() const { return {data_.get(), size_}; }

 private:
  struct Free {
    void operator()(uint8_t* data) const { std::free(data); }
  };

  ZeroedBuffer(uint8_t* data, size_t size) : data_(data), size_(size) {}

  std::unique_ptr<uint8_t, Free> data_;
  size_t size_ = 0;
};

}  // namespace vorel
