// The DLL on memory that is kept: the native build reuses the pages of freed blocks, but on Windows each large block consists of new
// pages, which the system clears. Stands in for the system's global memory in the import tables of the DLL and of this program.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>
#include <windows.h>

#include "win32/support/imports.h"

namespace {

struct Block {
  void* data;
  std::size_t bytes, room;
};

std::vector<Block> kept;
constexpr std::size_t kMostKept = 4;

Block block_with_room(std::size_t bytes, bool is_zeroed) {
  const auto fits = [&](const Block& block) { return block.room >= bytes && block.room / 2 <= bytes; };
  const auto found = std::ranges::find_if(kept, fits);
  if (found == kept.end()) return {std::calloc(bytes, 1), bytes, bytes};
  const Block block{found->data, bytes, found->room};
  kept.erase(found);
  if (is_zeroed) std::memset(block.data, 0, bytes);
  return block;
}

// As the system's: the handle of fixed memory is its address, other handles are told by this bit.
constexpr uintptr_t kIsMovable = 2;

HGLOBAL handle_of(Block* block) { return reinterpret_cast<HGLOBAL>(reinterpret_cast<uintptr_t>(block) | kIsMovable); }

// Null for fixed memory.
Block* block_of(HGLOBAL handle) {
  const auto bits = reinterpret_cast<uintptr_t>(handle);
  return (bits & kIsMovable) != 0 ? reinterpret_cast<Block*>(bits & ~kIsMovable) : nullptr;
}

HGLOBAL WINAPI allocate(UINT flags, SIZE_T bytes) {
  if ((flags & GMEM_MOVEABLE) == 0) return std::calloc(std::max<SIZE_T>(bytes, 1), 1);
  const Block block = block_with_room(std::max<SIZE_T>(bytes, 1), (flags & GMEM_ZEROINIT) != 0);
  return block.data == nullptr ? nullptr : handle_of(new Block(block));
}
LPVOID WINAPI lock(HGLOBAL handle) { return block_of(handle) == nullptr ? handle : block_of(handle)->data; }
BOOL WINAPI unlock(HGLOBAL) { return FALSE; }
SIZE_T WINAPI size(HGLOBAL handle) { return block_of(handle) == nullptr ? 0 : block_of(handle)->bytes; }
HGLOBAL WINAPI release(HGLOBAL handle) {
  auto* const block = block_of(handle);
  if (block == nullptr) {
    std::free(handle);
    return nullptr;
  }
  kept.push_back(*block);
  delete block;
  if (kept.size() > kMostKept) {
    std::free(kept.front().data);
    kept.erase(kept.begin());
  }
  return nullptr;
}

void stand_in(const char* module) {
  const struct {
    std::string_view name;
    void* function;
  } functions[] = {{"GlobalAlloc", reinterpret_cast<void*>(allocate)},
                   {"GlobalLock", reinterpret_cast<void*>(lock)},
                   {"GlobalUnlock", reinterpret_cast<void*>(unlock)},
                   {"GlobalSize", reinterpret_cast<void*>(size)},
                   {"GlobalFree", reinterpret_cast<void*>(release)}};
  test::for_each_import(GetModuleHandleA(module), [&](std::string_view name, void** slot) {
    for (const auto& function : functions)
      if (name == function.name) test::exchange_import(slot, function.function);
  });
}

// A fault ends the program, without a debugger that waits.
LONG WINAPI give_up(EXCEPTION_POINTERS*) { ExitProcess(1); }

[[maybe_unused]] const bool stands_in =
    (SetUnhandledExceptionFilter(give_up), stand_in(nullptr), stand_in("VOREL32.DLL"), true);

}  // namespace
