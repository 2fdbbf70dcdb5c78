// Global memory with the contract of Windows: movable blocks behind opaque handles, lock counts, and dead handles that do no
// harm. A handle is looked up in the table before it is ever used as a pointer.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "platform/win32.h"

namespace {

struct Block {
  void* data = nullptr;
  size_t size = 0;
  uint32_t generation = 0;  // counts the blocks that this entry has held, so that old handles are told from new ones
  uint8_t locks = 0;
  bool used = false;
};

constexpr uint8_t kMostLocks = 255;

// A movable block's handle: the entry's generation above its index, and a mark that no address from malloc carries.
constexpr uintptr_t kMovableMark = 2;
constexpr size_t kMostMovable = size_t{1} << 30;

HGLOBAL handle_of(size_t index, uint32_t generation) {
  return reinterpret_cast<HGLOBAL>(uintptr_t{generation} << 32 | index << 2 | kMovableMark);
}

void* new_data(size_t bytes, bool zeroed) {
  const size_t size = std::max<size_t>(bytes, 1);
  return zeroed ? std::calloc(size, 1) : std::malloc(size);
}

// Copies the content to memory of another size; new bytes are zero on request. Fresh zero pages cost nothing until they are
// touched, so growing does not use realloc.
void* moved_data(const void* data, size_t size, size_t bytes, bool zeroed) {
  void* moved = new_data(bytes, zeroed);
  if (moved != nullptr && data != nullptr) std::memcpy(moved, data, std::min(size, bytes));
  return moved;
}

using DataPtr = std::unique_ptr<void, decltype(&std::free)>;

class Blocks {
 public:
  HGLOBAL allocate(UINT flags, size_t bytes) {
    const bool zeroed = (flags & GMEM_ZEROINIT) != 0;
    const bool movable = (flags & GMEM_MOVEABLE) != 0;
    const bool empty = movable && bytes == 0;
    DataPtr data(empty ? nullptr : new_data(bytes, zeroed), &std::free);
    if (data == nullptr && !empty) return nullptr;
    HGLOBAL handle = movable ? add_movable(data.get(), bytes) : add_fixed(data.get(), bytes);
    if (handle != nullptr) static_cast<void>(data.release());
    return handle;
  }

  HGLOBAL reallocate(HGLOBAL handle, size_t bytes, UINT flags) {
    if (Block* block = movable(handle)) return reallocate_movable(handle, *block, bytes, flags);
    const auto fixed = fixed_.find(handle);
    return fixed == fixed_.end() ? nullptr : reallocate_fixed(handle, fixed->second, bytes, flags);
  }

  void* lock(HGLOBAL handle) {
    if (fixed_.contains(handle)) return handle;
    Block* block = movable(handle);
    if (block == nullptr || block->data == nullptr) return nullptr;
    if (block->locks < kMostLocks) ++block->locks;
    return block->data;
  }

  BOOL unlock(HGLOBAL handle) {
    if (fixed_.contains(handle)) return TRUE;
    Block* block = movable(handle);
    if (block == nullptr || block->locks == 0) return FALSE;
    return --block->locks > 0 ? TRUE : FALSE;
  }

  size_t size(HGLOBAL handle) {
    if (const auto fixed = fixed_.find(handle); fixed != fixed_.end()) return fixed->second;
    const Block* block = movable(handle);
    return block == nullptr ? 0 : block->size;
  }

  HGLOBAL free(HGLOBAL handle) {
    if (handle == nullptr) return nullptr;
    if (fixed_.erase(handle) != 0) {
      std::free(handle);
      return nullptr;
    }
    Block* block = movable(handle);
    if (block == nullptr) return handle;
    std::free(block->data);
    *block = Block{.generation = block->generation};
    unused_.push_back(static_cast<size_t>(block - movable_.data()));
    return nullptr;
  }

 private:
  HGLOBAL add_fixed(void* data, size_t bytes) {
    fixed_.emplace(data, bytes);
    return data;
  }

  HGLOBAL add_movable(void* data, size_t bytes) {
    if (unused_.empty()) {
      if (movable_.size() >= kMostMovable) return nullptr;
      if (unused_.capacity() <= movable_.size())  // giving an entry back must never need memory
        unused_.reserve(movable_.size() * 2 + 1);
      movable_.emplace_back();
      unused_.push_back(movable_.size() - 1);
    }
    const size_t index = unused_.back();
    unused_.pop_back();
    Block& block = movable_[index];
    block = Block{.data = data, .size = bytes, .generation = block.generation + 1, .used = true};
    return handle_of(index, block.generation);
  }

  // The entry behind a movable block's handle; null for a dead handle.
  Block* movable(HGLOBAL handle) {
    const auto value = reinterpret_cast<uintptr_t>(handle);
    const size_t index = (value & 0xFFFFFFFFu) >> 2;
    if ((value & 3) != kMovableMark || index >= movable_.size()) return nullptr;
    Block& block = movable_[index];
    return block.used && block.generation == value >> 32 ? &block : nullptr;
  }

  static HGLOBAL reallocate_movable(HGLOBAL handle, Block& block, size_t bytes, UINT flags) {
    if ((flags & GMEM_MODIFY) != 0) return handle;
    const bool may_move = block.locks == 0 || (flags & GMEM_MOVEABLE) != 0;
    if (!may_move && bytes > block.size) return nullptr;
    if (may_move && bytes != 0) {
      void* data = moved_data(block.data, block.size, bytes, (flags & GMEM_ZEROINIT) != 0);
      if (data == nullptr) return nullptr;
      std::free(block.data);
      block.data = data;
    } else if (bytes == 0) {
      if (block.locks != 0) return nullptr;
      std::free(block.data);
      block.data = nullptr;
    }
    block.size = bytes;
    return handle;
  }

  HGLOBAL reallocate_fixed(HGLOBAL handle, size_t& size, size_t bytes, UINT flags) {
    const bool becomes_movable = (flags & GMEM_MODIFY) != 0 && (flags & GMEM_MOVEABLE) != 0;
    if (becomes_movable) {
      HGLOBAL handle_now = add_movable(handle, size);
      if (handle_now != nullptr) fixed_.erase(handle);
      return handle_now;
    }
    if ((flags & GMEM_MODIFY) != 0) return handle;
    if (bytes <= size) {
      size = bytes;
      return handle;
    }
    if ((flags & GMEM_MOVEABLE) == 0) return nullptr;
    DataPtr data(moved_data(handle, size, bytes, (flags & GMEM_ZEROINIT) != 0), &std::free);
    if (data == nullptr) return nullptr;
    add_fixed(data.get(), bytes);
    fixed_.erase(handle);
    std::free(handle);
    return data.release();
  }

  std::vector<Block> movable_;
  std::vector<size_t> unused_;
  std::unordered_map<void*, size_t> fixed_;
};

std::mutex blocks_mutex;

// Lives as long as the process: threads may outlast the static objects.
Blocks& blocks() {
  static auto* const all = new Blocks;
  return *all;
}

// Runs one step on the table. If the table cannot grow, the call returns zero.
template <class Step>
auto with_blocks(Step step) noexcept -> decltype(step(blocks())) {
  try {
    const std::lock_guard guard(blocks_mutex);
    return step(blocks());
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace

extern "C" {

HGLOBAL GlobalAlloc(UINT flags, size_t bytes) {
  return with_blocks([&](Blocks& all) { return all.allocate(flags, bytes); });
}

HGLOBAL GlobalReAlloc(HGLOBAL block, size_t bytes, UINT flags) {
  return with_blocks([&](Blocks& all) { return all.reallocate(block, bytes, flags); });
}

void* GlobalLock(HGLOBAL block) {
  return with_blocks([&](Blocks& all) { return all.lock(block); });
}

BOOL GlobalUnlock(HGLOBAL block) {
  return with_blocks([&](Blocks& all) { return all.unlock(block); });
}

size_t GlobalSize(HGLOBAL block) {
  return with_blocks([&](Blocks& all) { return all.size(block); });
}

HGLOBAL GlobalFree(HGLOBAL block) {
  return with_blocks([&](Blocks& all) { return all.free(block); });
}

}  // extern "C"
