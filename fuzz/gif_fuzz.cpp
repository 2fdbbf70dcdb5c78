// GIF files: their pages, the first two and the last.
#include <vorel32.h>

#include "input_file.h"

extern "C" HGLOBAL VORELCALL LoadGIFIntoDIB(LPCSTR path, int page, int* status);
extern "C" int VORELCALL GetNumberOfImagesInGIFFile(LPCSTR path, int* status);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* path = fuzz::as_file(data, size);
  int status = 0;
  const int pages = GetNumberOfImagesInGIFFile(path, &status);
  for (const int page : {1, 2, pages}) GlobalFree(LoadGIFIntoDIB(path, page, &status));
  return 0;
}
