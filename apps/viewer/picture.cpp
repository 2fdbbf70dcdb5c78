#include "viewer/picture.h"

#include <algorithm>

#include "viewer/failure.h"
#include "viewer/gdi.h"

namespace vorel::viewer {
namespace {

bool states_what_is_there(const Dib& dib) {
  const size_t bytes = GlobalSize(dib.get());
  if (bytes < sizeof(BITMAPINFOHEADER)) return false;
  const DibLock lock(dib);
  const BITMAPINFOHEADER header = lock.header();
  return header.biSize == sizeof header && header.biWidth > 0 && header.biHeight != 0 && header.biHeight != LONG_MIN &&
         PaletteSize(lock.bytes().data()) <= bytes - sizeof header;
}

Dib or_failure(HGLOBAL result, const wchar_t* what) {
  if (result == nullptr) throw Failure(std::wstring(what) + reason(0, L"there is not enough memory"));
  return Dib(result);
}

Dib expanded(const Dib& dib) {
  const Dib whole = with_whole_table(dib);
  return or_failure(ExpandCompressedDIB(whole.get()), L"The run-length codes cannot be expanded: ");
}

// Says that its first row is the bottom one, and makes it so.
Dib bottom_row_first(const Dib& dib) {
  {
    const DibLock lock(dib);
    reinterpret_cast<BITMAPINFOHEADER*>(lock.bytes().data())->biHeight *= -1;
  }
  return or_failure(FlipDIBVertical(dib.get()), L"The picture cannot be put upright: ");
}

// By way of the display's own format, which has room for all colours unless it has a palette.
Dib in_24_bits(const Dib& dib) {
  const Bitmap bitmap(ConvertDIBToBitmap(dib.get()));
  return or_failure(ConvertBitmapToDIB(bitmap.get(), nullptr), L"The pixels cannot be converted: ");
}

}  // namespace

BITMAPINFOHEADER header_of(const Dib& dib) { return DibLock(dib).header(); }

Dib copy_of(const Dib& dib) {
  Dib copy(GlobalAlloc(GHND, GlobalSize(dib.get())));
  if (!copy) throw std::bad_alloc();
  std::ranges::copy(DibLock(dib).bytes(), DibLock(copy).bytes().begin());
  return copy;
}

Dib normalised(Dib dib) {
  if (!states_what_is_there(dib)) throw Failure(L"The picture is damaged");
  const BITMAPINFOHEADER header = header_of(dib);
  SetImgError(IMG_OK);
  if (header.biCompression == BI_BITFIELDS) throw Failure(L"Pixels with colour masks are not supported");
  if (header.biCompression != BI_RGB) dib = expanded(dib);
  if (header.biHeight < 0) dib = bottom_row_first(dib);
  if (header.biBitCount > 8 && header.biBitCount != 24) return in_24_bits(dib);
  const bool has_part_of_table = header.biBitCount <= 8 && header_of(dib).biClrUsed % (1u << header.biBitCount) != 0;
  return has_part_of_table ? with_whole_table(dib) : std::move(dib);
}

}  // namespace vorel::viewer
