// Global memory with the contract of Windows: movable blocks behind opaque handles, lock counts, and harmless dead handles.
// A handle is looked up in the table before it is ever used as a pointer.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/posix/large_memory.h"
#include "platform/win32.h"

namespace {

struct Block {
  void* data = nullptr;
  size_t size = 0;
  size_t room = 0;          // of a large piece; 0 if the data is on the heap
  uint32_t generation = 0;  // counts the blocks of this entry, to tell stale handles from valid ones
  uint8_t locks = 0;
  bool used = false;
};

constexpr uint8_t kMostLocks = 255;

// A movable block's handle: the entry's generation above its index, and a mark that no address from malloc carries. In 32 bits
// there is room for the low bits of the generation.
constexpr uintptr_t kMovableMark = 2;
constexpr int kIndexBits = sizeof(uintptr_t) > 4 ? 30 : 20, kGenerationShift = kIndexBits + 2;
constexpr size_t kMostMovable = size_t{1} << kIndexBits;

HGLOBAL handle_of(size_t index, uint32_t generation) {
  return reinterpret_cast<HGLOBAL>(uintptr_t{generation} << kGenerationShift | index << 2 | kMovableMark);
}

// The content of a block until a block owns it.
class Data {
 public:
  // Null when memory is short. Fixed blocks are freed by their address alone, so their content is on the heap.
  static Data allocate(size_t bytes, bool zeroed, bool movable) {
    if (movable && bytes >= vorel::kLargeBytes) {
      const vorel::LargePiece piece = vorel::take_large(bytes, zeroed);
      return {piece.bytes, piece.room};
    }
    const size_t size = std::max<size_t>(bytes, 1);
    return {zeroed ? std::calloc(size, 1) : std::malloc(size), 0};
  }
  Data(void* bytes, size_t room) : bytes_(bytes), room_(room) {}
  Data(Data&& other) noexcept : bytes_(other.release()), room_(other.room_) {}
  Data& operator=(Data&&) = delete;
  ~Data() {
    if (room_ == 0)
      std::free(bytes_);
    else if (bytes_ != nullptr)
      vorel::give_back_large({static_cast<uint8_t*>(bytes_), room_});
  }

  void* get() const { return bytes_; }
  size_t room() const { return room_; }
  void* release() { return std::exchange(bytes_, nullptr); }

 private:
  void* bytes_;
  size_t room_;
};

void free_data(void* bytes, size_t room) { const Data freed(bytes, room); }

// The same content in memory of another size; new bytes are zero if asked for. Untouched zero pages cost nothing, so growing
// does not use realloc.
Data moved_data(const void* data, size_t size, size_t bytes, bool zeroed, bool movable) {
  Data moved = Data::allocate(bytes, zeroed, movable);
  if (moved.get() != nullptr && data != nullptr) std::memcpy(moved.get(), data, std::min(size, bytes));
  return moved;
}

class Blocks {
 public:
  // A new block of this size takes the data.
  HGLOBAL add(Data data, size_t bytes, bool movable) {
    HGLOBAL handle = movable ? add_movable(data.get(), bytes, data.room()) : add_fixed(data.get(), bytes);
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
    free_data(block->data, block->room);
    *block = Block{.generation = block->generation};
    unused_.push_back(static_cast<size_t>(block - movable_.data()));
    return nullptr;
  }

 private:
  HGLOBAL add_fixed(void* data, size_t bytes) {
    fixed_.emplace(data, bytes);
    return data;
  }

  HGLOBAL add_movable(void* data, size_t bytes, size_t room) {
    if (unused_.empty()) {
      if (movable_.size() >= kMostMovable) return nullptr;
      if (unused_.capacity() <= movable_.size())  // freeing an entry must never need memory
        unused_.reserve(movable_.size() * 2 + 1);
      movable_.emplace_back();
      unused_.push_back(movable_.size() - 1);
    }
    const size_t index = unused_.back();
    unused_.pop_back();
    Block& block = movable_[index];
    block = Block{.data = data, .size = bytes, .room = room, .generation = block.generation + 1, .used = true};
    return handle_of(index, block.generation);
  }

  // The entry behind a movable block's handle; null for a dead handle.
  Block* movable(HGLOBAL handle) {
    const auto value = reinterpret_cast<uintptr_t>(handle);
    const size_t index = value >> 2 & (kMostMovable - 1);
    if ((value & 3) != kMovableMark || index >= movable_.size()) return nullptr;
    Block& block = movable_[index];
    return block.used && handle_of(index, block.generation) == handle ? &block : nullptr;
  }

  static HGLOBAL reallocate_movable(HGLOBAL handle, Block& block, size_t bytes, UINT flags) {
    if ((flags & GMEM_MODIFY) != 0) return handle;
    const bool may_move = block.locks == 0 || (flags & GMEM_MOVEABLE) != 0;
    if (!may_move && bytes > block.size) return nullptr;
    if (may_move && bytes != 0) {
      Data data = moved_data(block.data, block.size, bytes, (flags & GMEM_ZEROINIT) != 0, true);
      if (data.get() == nullptr) return nullptr;
      free_data(block.data, block.room);
      block.room = data.room();
      block.data = data.release();
    } else if (bytes == 0) {
      if (block.locks != 0) return nullptr;
      free_data(block.data, block.room);
      block.data = nullptr;
      block.room = 0;
    }
    block.size = bytes;
    return handle;
  }

  HGLOBAL reallocate_fixed(HGLOBAL handle, size_t& size, size_t bytes, UINT flags) {
    const bool becomes_movable = (flags & GMEM_MODIFY) != 0 && (flags & GMEM_MOVEABLE) != 0;
    if (becomes_movable) {
      HGLOBAL handle_now = add_movable(handle, size, 0);
      if (handle_now != nullptr) fixed_.erase(handle);
      return handle_now;
    }
    if ((flags & GMEM_MODIFY) != 0) return handle;
    if (bytes <= size) {
      size = bytes;
      return handle;
    }
    if ((flags & GMEM_MOVEABLE) == 0) return nullptr;
    Data data = moved_data(handle, size, bytes, (flags & GMEM_ZEROINIT) != 0, false);
    if (data.get() == nullptr) return nullptr;
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

// Lives as long as the process: threads may outlast static objects.
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
  const bool movable = (flags & GMEM_MOVEABLE) != 0;
  const bool empty = movable && bytes == 0;
  Data data = empty ? Data(nullptr, 0) : Data::allocate(bytes, (flags & GMEM_ZEROINIT) != 0, movable);
  if (data.get() == nullptr && !empty) return nullptr;
  return with_blocks([&](Blocks& all) { return all.add(std::move(data), bytes, movable); });
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
