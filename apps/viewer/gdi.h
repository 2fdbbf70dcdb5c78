// Owning types for what belongs to the window system.
#pragma once

#include <memory>
#include <type_traits>

#include "viewer/system.h"

namespace vorel::viewer {

struct DeleteGdiObject {
  void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteGdiObject>;

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

}  // namespace vorel::viewer
