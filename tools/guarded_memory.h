// Memory for the DLL in which each block ends at a page without access: a byte read or written behind a block ends the
// program. The DLL's import table is patched.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <windows.h>

#include "support/guarded_pages.h"
#include "win32/support/imports.h"

namespace guarded {

// A piece of memory that ends, up to an alignment, at a page without access.
class Piece {
 public:
  Piece(size_t bytes, size_t alignment)
      : bytes_(bytes), room_((bytes + alignment - 1) / alignment * alignment), pages_(room_) {}

  uint8_t* data() const { return pages_ ? pages_.end() - room_ : nullptr; }  // null when memory is short
  size_t bytes() const { return bytes_; }

 private:
  size_t bytes_, room_;
  test::GuardedPages pages_;
};

struct Block {
  std::unique_ptr<Piece> piece;
  int locks = 0;
};

// Of memory whose address is its handle.
constexpr size_t kFixedAlignment = 8;

struct Memory {
  size_t alignment = 1;  // of movable blocks
  std::mutex mutex;
  std::unordered_map<void*, Block> blocks;                 // by handle
  std::unordered_map<void*, std::unique_ptr<Piece>> heap;  // by address
  uintptr_t handles = 0;                                   // no handle is used twice
};
// Lives as long as the process.
inline Memory& memory() {
  static auto* const all = new Memory;
  return *all;
}

inline Block* block_of(HGLOBAL handle) {
  const auto found = memory().blocks.find(handle);
  return found == memory().blocks.end() ? nullptr : &found->second;
}

inline HGLOBAL WINAPI global_alloc(UINT flags, SIZE_T bytes) {
  const std::lock_guard guard(memory().mutex);
  const bool is_movable = (flags & GMEM_MOVEABLE) != 0;
  auto piece = std::make_unique<Piece>(bytes, is_movable ? memory().alignment : kFixedAlignment);
  if (piece->data() == nullptr) return nullptr;
  if ((flags & GMEM_ZEROINIT) == 0) std::memset(piece->data(), 0xA5, bytes);
  auto* const handle = is_movable ? reinterpret_cast<HGLOBAL>(++memory().handles << 4 | 2) : piece->data();
  memory().blocks[handle] = {std::move(piece)};
  return handle;
}
inline LPVOID WINAPI global_lock(HGLOBAL handle) {
  const std::lock_guard guard(memory().mutex);
  Block* const block = block_of(handle);
  if (block == nullptr) return nullptr;
  ++block->locks;
  return block->piece->data();
}
inline BOOL WINAPI global_unlock(HGLOBAL handle) {
  const std::lock_guard guard(memory().mutex);
  Block* const block = block_of(handle);
  return block != nullptr && block->locks > 0 && --block->locks > 0;
}
inline SIZE_T WINAPI global_size(HGLOBAL handle) {
  const std::lock_guard guard(memory().mutex);
  const Block* const block = block_of(handle);
  return block == nullptr ? 0 : block->piece->bytes();
}
inline HGLOBAL WINAPI global_free(HGLOBAL handle) {
  const std::lock_guard guard(memory().mutex);
  return memory().blocks.erase(handle) != 0 ? nullptr : handle;
}

// The heap of the DLL: scratch memory and what its C++ library takes.
inline void* heap_alloc(size_t bytes) {
  const std::lock_guard guard(memory().mutex);
  auto piece = std::make_unique<Piece>(bytes, kFixedAlignment);
  uint8_t* const data = piece->data();
  if (data != nullptr) memory().heap[data] = std::move(piece);
  return data;
}
inline void* __cdecl heap_calloc(size_t count, size_t bytes) {
  return bytes != 0 && count > SIZE_MAX / 2 / bytes ? nullptr : heap_alloc(count * bytes);
}
inline void* __cdecl heap_malloc(size_t bytes) {
  void* const data = heap_alloc(bytes);
  if (data != nullptr) std::memset(data, 0xA5, bytes);
  return data;
}
// Blocks from before the table was patched are the system's.
inline void* __cdecl heap_realloc(void* data, size_t bytes) {
  if (data == nullptr) return heap_malloc(bytes);
  const std::lock_guard guard(memory().mutex);
  const auto found = memory().heap.find(data);
  if (found == memory().heap.end()) return std::realloc(data, bytes);
  auto piece = std::make_unique<Piece>(bytes, kFixedAlignment);
  uint8_t* const moved = piece->data();
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, data, std::min(bytes, found->second->bytes()));
  memory().heap.erase(found);
  memory().heap[moved] = std::move(piece);
  return moved;
}
inline void __cdecl heap_free(void* data) {
  {
    const std::lock_guard guard(memory().mutex);
    if (memory().heap.erase(data) != 0) return;
  }
  std::free(data);
}

// Patches the table of the loaded DLL for as long as the process runs.
inline void guard_dll(size_t alignment) {
  memory().alignment = alignment;
  const auto replace = [](const char* name, auto* function) {
    test::exchange_import(test::import_slot(name), reinterpret_cast<void*>(function));
  };
  replace("GlobalAlloc", global_alloc);
  replace("GlobalLock", global_lock);
  replace("GlobalUnlock", global_unlock);
  replace("GlobalSize", global_size);
  replace("GlobalFree", global_free);
  replace("calloc", heap_calloc);
  replace("malloc", heap_malloc);
  replace("realloc", heap_realloc);
  replace("free", heap_free);
}

}  // namespace guarded
