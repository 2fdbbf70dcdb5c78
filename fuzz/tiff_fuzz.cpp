// TIFF files: their chain of pages, and the first two of them.
#include <cstddef>

#include "tiff/directories.h"
#include "tiff/reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  codec::MemoryBytes bytes({data, data + size});
  codec::at_entry(nullptr, [&] { return codec::follow_directories(bytes).pages; });
  for (const int page : {1, 2}) GlobalFree(codec::at_entry(nullptr, [&] { return codec::read_tiff(bytes, page); }));
  return 0;
}
