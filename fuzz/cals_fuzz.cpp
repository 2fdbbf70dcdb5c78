// CALS raster files.
#include <cstddef>

#include "common/entry.h"
#include "tiff/cals.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  GlobalFree(codec::at_entry(nullptr, [&] { return codec::read_cals({data, data + size}); }));
  return 0;
}
