#include "viewer/gdi.h"

namespace vorel::viewer {

void put_pixels(HDC dc, POINT at, Size size, std::span<const uint32_t> pixels) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof info.bmiHeader, size.width, -size.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  SetDIBitsToDevice(dc, at.x, at.y, static_cast<DWORD>(size.width), static_cast<DWORD>(size.height), 0, 0, 0,
                    static_cast<UINT>(size.height), pixels.data(), &info, DIB_RGB_COLORS);
}

}  // namespace vorel::viewer
