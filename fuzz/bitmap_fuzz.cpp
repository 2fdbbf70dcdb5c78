// Loads a bitmap file, and does to it what needs nothing but the DIB.
#include <vorel32.h>

#include "calls.h"
#include "input_file.h"

namespace {

// Whether the rows that a file claims are no more than this.
bool claims_at_most(const uint8_t* data, size_t size, uint64_t most) {
  const size_t at = size >= 2 && data[0] == 'B' && data[1] == 'M' ? sizeof(BITMAPFILEHEADER) : 0;  // without file header too
  BITMAPINFOHEADER header{};
  if (size <= at) return true;
  std::memcpy(&header, data + at, std::min(size - at, sizeof header));
  if (header.biSize == sizeof(BITMAPCOREHEADER)) {
    BITMAPCOREHEADER core{};
    std::memcpy(&core, &header, sizeof core);
    header = {};
    header.biSize = sizeof core;
    header.biWidth = core.bcWidth;
    header.biHeight = core.bcHeight;
    header.biPlanes = core.bcPlanes;
    header.biBitCount = core.bcBitCount;
  }
  header.biWidth = std::abs(std::max<int32_t>(header.biWidth, -INT32_MAX));
  return fuzz::claim_of_rows_either_way(header) <= most && header.biSizeImage <= most;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr uint64_t kMostLoaded = uint64_t{64} << 20;
  if (!claims_at_most(data, size, kMostLoaded)) return 0;
  HGLOBAL dib = LoadDIBFromFile(fuzz::as_file(data, size));
  if (dib == nullptr) return 0;
  if (claims_at_most(data, size, fuzz::Input(data, size).most_bytes())) {
    GlobalFree(RotateDIB90(dib));
    GlobalFree(FlipDIBHorizontal(dib));
    InvertDIBPalette(dib);
    InvertMonoDIB(dib);
  }
  GlobalFree(dib);
  return 0;
}
