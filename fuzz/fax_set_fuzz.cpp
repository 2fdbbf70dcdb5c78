// Counts and loads the pages of a page set. What it lists can only be files that are not there, or itself.
#include <vorel32.h>

#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* path = fuzz::as_file(data, size, "input.fax");
  GetImageFormat(path);
  GetNumberOfImagesInFaxFile(path);
  for (int page : {1, 2, 7, 2'147'483'647}) {
    int status = 0;
    GlobalFree(LoadColorFaxPage(path, page, &status));
  }
  return 0;
}
