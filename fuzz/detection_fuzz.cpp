// Detection of the format, under names that mean something and one that means nothing.
#include <cstdlib>

#include <vorel32.h>

#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const char* name : {"input", "input.tga", "input.fax"}) {
    const int format = GetImageFormat(fuzz::as_file(data, size, name));
    if (format < IMG_FORMAT_UNKNOWN || format > IMG_FORMAT_ENHANCED_METAFILE || format == 11) std::abort();
  }
  return 0;
}
