// Headers and colours of packed DIBs, and bitmap files.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include <vorel32.h>

#include "core/layout.h"
#include "dib/bitmap_file.h"
#include "dib/inversion.h"
#include "dib/packed_dib.h"
#include "exports/boundary.h"

using namespace vorel;

static_assert(sizeof(BITMAPINFOHEADER) == sizeof(DibHeader) && sizeof(BITMAPCOREHEADER) == sizeof(CoreHeader) &&
              sizeof(BITMAPFILEHEADER) == sizeof(FileHeader) && sizeof(RGBQUAD) == sizeof(Rgb) &&
              sizeof(RGBTRIPLE) == sizeof(RgbTriple));
static_assert(offsetof(BITMAPINFOHEADER, biBitCount) == offsetof(DibHeader, depth) &&
              offsetof(BITMAPINFOHEADER, biSizeImage) == offsetof(DibHeader, image_bytes) &&
              offsetof(BITMAPINFOHEADER, biClrUsed) == offsetof(DibHeader, colors_used) &&
              offsetof(BITMAPFILEHEADER, bfOffBits) == offsetof(FileHeader, bits_offset));

extern "C" {

UINT VORELCALL PaletteSize(void* header) {
  if (header == nullptr) return 0;
  // Reads no more than the stated size of the header; a header of any other size has its depth in its first 16 bytes.
  DibHeader whole{};
  std::memcpy(&whole.size, header, sizeof whole.size);
  std::memcpy(&whole, header, whole.size == kCoreHeaderBytes ? kCoreHeaderBytes : std::clamp(whole.size, 16u, kHeaderBytes));
  const uint64_t bytes = palette_bytes(whole).value();
  return bytes <= UINT32_MAX ? static_cast<UINT>(bytes) : 0;
}

HGLOBAL VORELCALL ReadDIBInfo(HFILE file) {
  return at_boundary(ThreadCode{}, [&] { return released(read_dib_info(FileRef(file))); });
}

BOOL VORELCALL InvertDIBPalette(HGLOBAL dib) {
  const auto locked = LockedDib::lock(dib);
  if (!locked || locked->header().size != kHeaderBytes) return FALSE;
  if (const auto table = locked->complete_colors(locked->header().colors_used)) {
    complement_colors(colors_in(*table));
    table->write_back();
  }
  return TRUE;
}

void VORELCALL InvertMonoDIB(HGLOBAL dib) {
  const auto locked = LockedDib::lock(dib);
  if (!locked || locked->header().depth != 1) return;
  const Layout layout = Layout::of(locked->header(), {.rows_at = RowsAt::kBehindFullTable});
  if (const auto head = locked->complete(layout.offset)) {
    swap_colors(colors_in(*head)[0], colors_in(*head)[1]);
    head->write_back();
  }
  invert_bits(locked->part(static_cast<size_t>(layout.offset.value()), layout.rows));
}

HGLOBAL VORELCALL LoadDIBFromFile(LPCSTR path) {
  return at_boundary(ThreadCode{}, [&] { return released(load_dib(path)); });
}

BOOL VORELCALL SaveDIB(LPCSTR path, HGLOBAL dib) {
  return at_boundary(ThreadCode{}, [&] { return save_dib(path, dib); });
}

}  // extern "C"
