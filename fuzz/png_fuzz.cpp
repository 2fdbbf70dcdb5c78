// Whatever comes as a PNG file.
#include <vorel32.h>

#include "input_file.h"

extern "C" HGLOBAL VORELCALL LoadPNGIntoDIB(LPCSTR path, int* status);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  int status = 0;
  GlobalFree(LoadPNGIntoDIB(fuzz::as_file(data, size), &status));
  return 0;
}
