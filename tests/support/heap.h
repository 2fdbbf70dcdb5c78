// How much of the heap is in use, to find what an operation leaves behind.
#pragma once

#include <cstddef>

#ifdef _WIN32
#include <windows.h>
#else
#include <malloc.h>
#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // the compiler has it but not its header
#endif
#endif

namespace test {

#ifdef _WIN32

// Calls visit(bytes) for each block in use: global memory comes from the process heap, the C runtime has a heap of its own.
template <class Visit>
void for_each_block(Visit visit) {
  constexpr DWORD kMostHeaps = 64;
  HANDLE heaps[kMostHeaps];
  const DWORD count = GetProcessHeaps(kMostHeaps, heaps);
  for (DWORD i = 0; i < count && i < kMostHeaps; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry))
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) visit(size_t{entry.cbData});
    HeapUnlock(heaps[i]);
  }
}

inline size_t heap_blocks() {
  size_t count = 0;
  for_each_block([&](size_t) { ++count; });
  return count;
}

#else

// Bytes are counted here, not blocks: as many as make up the library's smallest block.
inline size_t heap_blocks() {
  constexpr size_t kSmallestBlock = 40;
#ifdef __SANITIZE_ADDRESS__
  return __sanitizer_get_current_allocated_bytes() / kSmallestBlock;
#else
  return mallinfo2().uordblks / kSmallestBlock;
#endif
}

#endif

}  // namespace test
