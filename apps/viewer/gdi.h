// Owning types for what belongs to the window system.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>

#include "core/view.h"
#include "viewer/system.h"

namespace vorel::viewer {

struct DeleteGdiObject {
  void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteGdiObject>;
using OwnedFont = std::unique_ptr<std::remove_pointer_t<HFONT>, DeleteGdiObject>;
using OwnedPalette = std::unique_ptr<std::remove_pointer_t<HPALETTE>, DeleteGdiObject>;

// The device context of a window's client area, for a scope.
class WindowDc {
 public:
  explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  ~WindowDc() { ReleaseDC(window_, dc_); }
  HDC get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

// A palette in a device context, for a scope.
class SelectedPalette {
 public:
  SelectedPalette(HDC dc, HPALETTE palette, bool in_background)
      : dc_(dc), previous_(palette != nullptr ? SelectPalette(dc, palette, in_background) : nullptr) {
    if (previous_ != nullptr) changed_ = RealizePalette(dc);
  }
  SelectedPalette(const SelectedPalette&) = delete;
  SelectedPalette& operator=(const SelectedPalette&) = delete;
  ~SelectedPalette() {
    if (previous_ != nullptr) SelectPalette(dc_, previous_, TRUE);
  }
  UINT changed() const { return changed_; }  // entries of the system's palette

 private:
  HDC dc_;
  HPALETTE previous_;
  UINT changed_ = 0;
};

// The painting of a window's invalid part, for a scope.
class Painting {
 public:
  explicit Painting(HWND window) : window_(window) { BeginPaint(window, &paint_); }
  Painting(const Painting&) = delete;
  Painting& operator=(const Painting&) = delete;
  ~Painting() { EndPaint(window_, &paint_); }
  HDC dc() const { return paint_.hdc; }
  const RECT& area() const { return paint_.rcPaint; }

 private:
  HWND window_;
  PAINTSTRUCT paint_{};
};

// Rows of pixels 0x00RRGGBB from the top.
void put_pixels(HDC dc, POINT at, Size size, std::span<const uint32_t> pixels);

}  // namespace vorel::viewer
