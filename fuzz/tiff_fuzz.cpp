// TIFF files: how many pages they have, and the first two.
#include <cstddef>

#include "tiff/directories.h"
#include "tiff/reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  codec::MemoryBytes bytes({data, data + size});
  for (const int page : {1, 2}) try {
      codec::follow_directories(bytes);
      GlobalFree(codec::read_tiff(bytes, page));
    } catch (const codec::Failure&) {  // expected of most inputs
    }
  return 0;
}
