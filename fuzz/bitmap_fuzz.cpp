// Loads a bitmap file, and does to it what needs nothing but the DIB.
#include <vorel32.h>

#include "scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::ScratchFile file(".bmp");
  HGLOBAL dib = LoadDIBFromFile(file.with({data, size}));
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
