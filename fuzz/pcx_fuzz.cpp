// Whatever comes as a PCX file.
#include <cstdint>

#include "common/entry.h"
#include "pcx/pcx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  GlobalFree(codec::at_entry(nullptr, [&] { return codec::read_pcx({data, size}); }));
  return 0;
}
