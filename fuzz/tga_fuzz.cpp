// Whatever comes as a TGA file.
#include <cstdint>

#include "common/entry.h"
#include "tga/tga.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  GlobalFree(codec::at_entry(nullptr, [&] { return codec::read_tga({data, size}); }));
  return 0;
}
