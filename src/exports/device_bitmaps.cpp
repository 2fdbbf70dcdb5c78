// Palettes, device bitmaps, conversions to and from them, and operations that use them.
#include <algorithm>

#include <vorel32.h>

#include "dib/bitmap_file.h"
#include "dib/device_bitmap.h"
#include "dib/device_palette.h"
#include "exports/boundary.h"
#include "geometry/device_combine.h"
#include "geometry/device_turn.h"

using namespace vorel;
using namespace vorel::geometry;

namespace {

HBITMAP turned_bitmap(HBITMAP bitmap, DeviceTurn turn) {
  return object_for_caller([&] { return quarter_turned(bitmap, turn); });
}

BOOL rewritten_bitmap(HBITMAP bitmap, DeviceTurn turn) {
  return at_boundary(ThreadCode{}, [&] { return turn_in_place(bitmap, turn); });
}

}  // namespace

extern "C" {

HPALETTE VORELCALL CreateDIBPalette(HGLOBAL dib) {
  return object_for_caller(
      [&]() -> Result<OwnedPalette> { return palette_of(VOREL_TRY(or_error(LockedDib::lock(dib), Error::kUnreported))); });
}

HPALETTE VORELCALL GetCurrentPalette(void) { return object_for_caller(screen_palette); }

BOOL VORELCALL GetSystemPalette(RGBQUAD* colours) {
  return at_boundary(ThreadCode{}, [&]() -> Result<bool> {
    if (colours == nullptr) return Error::kUnreported;
    std::ranges::copy(VOREL_TRY(screen_colors()), reinterpret_cast<Rgb*>(colours));
    return true;
  });
}

HGLOBAL VORELCALL ConvertBitmapToDIB(HBITMAP bitmap, HPALETTE palette) {
  return at_silent_boundary([&] { return released(dib_of(bitmap, palette)); });
}

HBITMAP VORELCALL ConvertDIBToBitmap(HGLOBAL dib) {
  return object_for_caller([&] { return bitmap_of(dib); });
}

HBITMAP VORELCALL ConvertToMonochromeBitmap(HBITMAP bitmap) {
  return object_for_caller([&] { return monochrome_copy(bitmap); });
}

HBITMAP VORELCALL DuplicateBitmap(HBITMAP bitmap) {
  return object_for_caller([&] { return duplicate(bitmap); });
}

HBITMAP VORELCALL LoadBitmapFromFile(LPCSTR path) {
  return object_for_caller([&]() -> Result<OwnedBitmap> {
    const OwnedBlock block(VOREL_TRY(released(load_dib(path))));
    return bitmap_of(block.get());
  });
}

BOOL VORELCALL SaveBitmap(LPCSTR path, HBITMAP bitmap, HPALETTE palette) {
  return at_boundary(ThreadCode{}, [&]() -> Result<bool> {
    const OwnedBlock block(VOREL_TRY(released(dib_of(bitmap, palette))));
    return save_dib(path, block.get());
  });
}

HBITMAP VORELCALL RotateBitmap90(HBITMAP bitmap) { return turned_bitmap(bitmap, DeviceTurn::kCounterClockwise); }
HBITMAP VORELCALL RotateBitmap270(HBITMAP bitmap) { return turned_bitmap(bitmap, DeviceTurn::kClockwise); }
BOOL VORELCALL RotateBitmap180(HBITMAP bitmap) { return rewritten_bitmap(bitmap, DeviceTurn::kHalf); }
BOOL VORELCALL FlipBitmapVertical(HBITMAP bitmap) { return rewritten_bitmap(bitmap, DeviceTurn::kTopBottom); }
BOOL VORELCALL FlipBitmapHorizontal(HBITMAP bitmap) { return rewritten_bitmap(bitmap, DeviceTurn::kLeftRight); }

BOOL VORELCALL InvertBitmap(HBITMAP bitmap) {
  return at_silent_boundary([&] { return invert_in_place(bitmap); });
}

BOOL VORELCALL CombineBMP(int x, int y, HBITMAP* target, HBITMAP source, HBITMAP mask, int flag) {
  return at_boundary(ThreadCode{}, [&] { return combine_bitmaps({x, y}, target, source, mask, flag != 0); });
}

BOOL VORELCALL CombineDIB(int x, int y, HGLOBAL* target, HGLOBAL source, HGLOBAL mask, int flag) {
  return at_boundary(ThreadCode{}, [&] { return combine_dibs({x, y}, target, source, mask, flag != 0); });
}

}  // extern "C"
