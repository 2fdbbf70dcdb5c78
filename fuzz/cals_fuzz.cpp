// CALS raster files.
#include <cstddef>

#include "common/entry.h"
#include "tiff/cals.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    GlobalFree(codec::read_cals({data, data + size}));
  } catch (const codec::Failure&) {  // expected of most inputs
  }
  return 0;
}
