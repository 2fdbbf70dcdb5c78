#include "check/device.h"

namespace check {

test::Object<HBITMAP> DeviceInputs::make_color() {
  return test::Object<HBITMAP>(ConvertDIBToBitmap(test::block_of(test::noise(20, 20, 24)).get()));
}

HPALETTE DeviceInputs::make_palette() {
  struct {
    WORD version = 0x300, count = 2;
    PALETTEENTRY entries[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  } colors;
  return CreatePalette(reinterpret_cast<const LOGPALETTE*>(&colors));
}

HMETAFILE DeviceInputs::make_metafile() {
  HDC dc = CreateMetaFileA(nullptr);
  SetWindowExtEx(dc, 100, 100, nullptr);
  PatBlt(dc, 0, 0, 50, 100, BLACKNESS);
  return CloseMetaFile(dc);
}

DeviceInputs& Stage::device() {
  if (device_ == nullptr) device_ = std::make_unique<DeviceInputs>();
  return *device_;
}

void Stage::take(HBITMAP bitmap) {
  outcome_.gave = bitmap != nullptr;
  if (bitmap == nullptr) return;
  outcome_.add_value(test::facts_of(bitmap).bmBitsPixel);
  outcome_.add(test::bits_of(bitmap));
  DeleteObject(bitmap);
}

void Stage::take(HPALETTE palette) {
  outcome_.gave = palette != nullptr;
  PALETTEENTRY entries[256] = {};
  GetPaletteEntries(palette, 0, 256, entries);
  outcome_.add_value(entries);
  if (palette != nullptr) DeleteObject(palette);
}

}  // namespace check
