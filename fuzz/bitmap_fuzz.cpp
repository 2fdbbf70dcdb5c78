// Loads a bitmap file, and does to it what needs nothing but the DIB.
#include <vorel32.h>

#include "support/dib.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const test::TempFolder folder;
  static const std::string path = folder.path("input.bmp");
  test::write_file(path, {data, data + size});
  HGLOBAL dib = LoadDIBFromFile(path.c_str());
  if (dib == nullptr) return 0;
  if (GlobalSize(dib) < 1 << 20) {  // a file may claim 2 GB of rows
    GlobalFree(RotateDIB90(dib));
    GlobalFree(FlipDIBHorizontal(dib));
    InvertDIBPalette(dib);
    InvertMonoDIB(dib);
  }
  GlobalFree(dib);
  return 0;
}
