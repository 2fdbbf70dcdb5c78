// The cost of a call without its pixels: allocating a zeroed block of the result's size, writing a byte to each page and freeing
// it; and a call for a picture of one pixel, which shows the wait cursor. On Windows every large block consists of new pages,
// which the system clears; the native build reuses the pages of freed blocks and has no cursor.
#include <algorithm>

#include <vorel32.h>

#include "peers/worker.h"

namespace peers {

Work prepare(const Workload& workload, const Picture&, const std::string&) {
  using enum Operation;
  if (workload.operation == kCount || workload.operation == kDrag || workload.operation == kSave) return nullptr;
  const std::size_t bytes = workload.result().bytes();
  std::vector<std::uint8_t> file = bitmap_file({{1, 1, 24}, {1, 2, 3}});
  file.erase(file.begin(), file.begin() + 14);  // the file header
  const HGLOBAL pixel = GlobalAlloc(GHND, file.size());
  std::ranges::copy(file, static_cast<std::uint8_t*>(GlobalLock(pixel)));
  GlobalUnlock(pixel);
  return [bytes, pixel] {
    constexpr std::size_t kPage = 4096;
    GlobalFree(RotateDIB90(pixel));
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
