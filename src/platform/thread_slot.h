// One pointer per thread to a block of global memory.
//
// On Windows it is a thread-local-storage slot: the module's entry point makes and deletes it and frees a thread's block
// when the thread detaches. On Linux, which sends no such notices, it is always there and a thread's end frees its block.
#pragma once

#include "platform/win32.h"

namespace vorel::thread_slot {

bool create();
void destroy();

HGLOBAL get();

// `free` takes the block at the thread's end, where the system sends no notice of it.
bool set(HGLOBAL block, void (*free)(HGLOBAL block));

// Ends the calling thread.
[[noreturn]] void end_thread();

}  // namespace vorel::thread_slot
