// Conversions between the display's types and the windowing system's, and a WM_PAINT in progress.
#pragma once

#include "display/mapping.h"
#include "platform/windows/gdi.h"

namespace vorel::display {

inline RECT rect_of(const Box& box) { return {box.left, box.top, box.right, box.bottom}; }
inline Box box_of(const RECT& rect) {
  return {static_cast<int>(rect.left), static_cast<int>(rect.top), static_cast<int>(rect.right),
          static_cast<int>(rect.bottom)};
}
inline Point point_of(const POINT& point) { return {static_cast<int>(point.x), static_cast<int>(point.y)}; }

// The client area; empty for a null window.
inline Box client_of(HWND window) {
  RECT client{};
  if (window != nullptr) GetClientRect(window, &client);
  return box_of(client);
}

// Resets the units to pixels.
inline void unmap(HDC dc) {
  SetMapMode(dc, MM_TEXT);
  SetWindowOrgEx(dc, 0, 0, nullptr);
}

inline void apply(HDC dc, const Mapping& mapping) {
  unmap(dc);
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowExtEx(dc, mapping.x.window, mapping.y.window, nullptr);
  SetViewportExtEx(dc, mapping.x.viewport, mapping.y.viewport, nullptr);
  SetWindowOrgEx(dc, mapping.x.origin, mapping.y.origin, nullptr);
}

// A WM_PAINT message between BeginPaint and EndPaint.
class Painting {
 public:
  explicit Painting(HWND window) : window_(window), dc_(BeginPaint(window, &paint_)) {
    // A window with its own context may have it mapped; the rectangle is then in logical units.
    POINT corners[2] = {{paint_.rcPaint.left, paint_.rcPaint.top}, {paint_.rcPaint.right, paint_.rcPaint.bottom}};
    LPtoDP(dc_, corners, 2);
    const Point first = point_of(corners[0]), last = point_of(corners[1]);
    box_ = {first.x, first.y, last.x, last.y};
  }
  Painting(const Painting&) = delete;
  Painting& operator=(const Painting&) = delete;
  ~Painting() {
    if (dc_ != nullptr) EndPaint(window_, &paint_);
  }

  explicit operator bool() const { return dc_ != nullptr; }
  HDC dc() const { return dc_; }
  Box box() const { return box_; }  // the area to paint, in pixels

 private:
  HWND window_;
  PAINTSTRUCT paint_{};
  HDC dc_;
  Box box_;
};

}  // namespace vorel::display
