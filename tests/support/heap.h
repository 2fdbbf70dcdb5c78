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

// Blocks in use in the process heap, which global memory comes from.
inline size_t heap_blocks() {
  PROCESS_HEAP_ENTRY entry{};
  size_t count = 0;
  HANDLE heap = GetProcessHeap();
  HeapLock(heap);
  while (HeapWalk(heap, &entry))
    if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) ++count;
  HeapUnlock(heap);
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
