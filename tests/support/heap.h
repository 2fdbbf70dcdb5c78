// How much of the heap is in use, to find what an operation leaves behind.
#pragma once

#include <cstddef>

#ifdef _WIN32
#include <windows.h>
#else
#include <malloc.h>
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

// The C library counts bytes, not blocks: an upper bound for blocks of 64 bytes and more.
inline size_t heap_blocks() { return mallinfo2().uordblks / 64; }

#endif

}  // namespace test
