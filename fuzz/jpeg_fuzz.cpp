// Whatever comes as a JPEG file.
#include <vorel32.h>

#include "input_file.h"

extern "C" HGLOBAL VORELCALL LoadJPEGIntoDIB(LPCSTR path);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  GlobalFree(LoadJPEGIntoDIB(fuzz::as_file(data, size)));
  return 0;
}
