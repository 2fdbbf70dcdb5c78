// What a result costs without the operation: a zeroed block of its size, a byte written to each page, and freed. On Windows every large
// block consists of new pages, which the system clears; the native build finds the pages of freed blocks again.
#include <vorel32.h>

#include "peers/worker.h"

namespace peers {

Work prepare(const Workload& workload, const Picture&, const std::string&) {
  using enum Operation;
  if (workload.operation == kCount || workload.operation == kDrag || workload.operation == kSave) return nullptr;
  const std::size_t bytes = workload.result().bytes();
  return [bytes] {
    constexpr std::size_t kPage = 4096;
    const HGLOBAL block = GlobalAlloc(GHND, bytes);
    auto* memory = static_cast<volatile unsigned char*>(GlobalLock(block));
    if (memory == nullptr) return false;
    for (std::size_t i = 0; i < bytes; i += kPage) memory[i] = 1;
    GlobalUnlock(block);
    GlobalFree(block);
    return true;
  };
}

}  // namespace peers
