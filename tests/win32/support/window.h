// Test windows, their pixels, and pictures to show in them.
#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <vector>
#include <windows.h>

#include "support/dib.h"
#include "win32/support/gdi.h"

namespace test {

// Colours that every display has.
inline constexpr std::array<COLORREF, 16> kColors = {0x000000, 0xFFFFFF, 0x000080, 0x008000, 0x008080, 0x800000,
                                                     0x800080, 0x808000, 0xC0C0C0, 0x808080, 0x0000FF, 0x00FF00,
                                                     0x00FFFF, 0xFF0000, 0xFF00FF, 0xFFFF00};
inline constexpr COLORREF kAround = 0xC0DCC0;  // of the class brush; no picture has it

// A picture of square cells in the first `colors` colours; 1-bit pictures are black and white. A palette display inverts
// indices, so only black and white come out inverted there.
struct Cells {
  int width, height, depth, cell = 1;
  unsigned colors = 16;

  size_t index(int x, int y) const {
    const auto mixed = static_cast<unsigned>(x / cell * 2654435 + y / cell * 40503 + x / cell * (y / cell) * 77);
    return (mixed >> 3) % (depth == 1 ? 2 : colors);
  }
  COLORREF at(int x, int y) const { return kColors[index(x, y)]; }

  Bytes dib() const {
    BITMAPINFOHEADER header = header_for(width, height, depth);
    const size_t table = depth == 1 ? 2 : depth <= 8 ? 16 : 0, stride = stride_of(width, depth);
    header.biClrUsed = static_cast<DWORD>(table);
    Bytes rest(4 * table + stride * static_cast<size_t>(height));
    const auto put_color = [&](size_t to, COLORREF color) {
      rest[to] = GetBValue(color), rest[to + 1] = GetGValue(color), rest[to + 2] = GetRValue(color);
    };
    for (size_t i = 0; i < table; ++i) put_color(4 * i, kColors[i]);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const size_t bit = static_cast<size_t>(x * depth), row = 4 * table + static_cast<size_t>(height - 1 - y) * stride;
        if (depth == 24)
          put_color(row + bit / 8, at(x, y));
        else
          rest[row + bit / 8] |= static_cast<uint8_t>(index(x, y) << (8 - bit % 8 - static_cast<size_t>(depth)));
      }
    return with_header(header, rest);
  }
};

// Colours of a device rectangle, rows from the top.
struct Pixels {
  int width = 0, height = 0;
  std::vector<COLORREF> colors;

  COLORREF at(int x, int y) const { return colors[static_cast<size_t>(y * width + x)]; }
  friend bool operator==(const Pixels&, const Pixels&) = default;
};

inline int differing_pixels(const Pixels& a, const Pixels& b) {
  if (a.width != b.width || a.height != b.height) return std::max(a.width * a.height, b.width * b.height);
  int count = 0;
  for (size_t i = 0; i < a.colors.size(); ++i) count += a.colors[i] != b.colors[i];
  return count;
}

inline Pixels pixels_of(HDC dc, int width, int height) {
  Pixels pixels{width, height, {}};
  BITMAPINFO info{};
  info.bmiHeader = header_for(width, -height, 32);
  void* bits = nullptr;
  HDC memory = CreateCompatibleDC(nullptr);
  const Object<HBITMAP> section(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  HGDIOBJ before = SelectObject(memory, section.get());
  BitBlt(memory, 0, 0, width, height, dc, 0, 0, SRCCOPY);
  GdiFlush();
  const auto* quads = static_cast<const RGBQUAD*>(bits);
  for (int i = 0; i < width * height; ++i)
    pixels.colors.push_back(RGB(quads[i].rgbRed, quads[i].rgbGreen, quads[i].rgbBlue));
  SelectObject(memory, before);
  DeleteDC(memory);
  return pixels;
}

// A visible window. Messages go first to a handler of the test, which returns whether it handled them. The background is not
// erased, so unpainted areas show up.
class Window {
 public:
  using Handler = std::function<bool(HWND, UINT, WPARAM, LPARAM)>;

  Window(int width, int height, Handler handler, UINT class_style = 0) : handler_(std::move(handler)) {
    const HBRUSH brush = CreateSolidBrush(kAround);
    const WNDCLASSA window_class{class_style, procedure, 0,           0, nullptr, nullptr, LoadCursor(nullptr, IDC_ARROW),
                                 brush,       nullptr,   "vorel test"};
    RegisterClassA(&window_class);
    window_ = CreateWindowA("vorel test", "", WS_POPUP, 20, 30, width, height, nullptr, nullptr, nullptr, this);
    ShowWindow(window_, SW_SHOWNOACTIVATE);
    UpdateWindow(window_);
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window() {
    DestroyWindow(window_);
    UnregisterClassA("vorel test", nullptr);  // deletes its brush
  }

  HWND get() const { return window_; }
  RECT client() const {
    RECT rect{};
    GetClientRect(window_, &rect);
    return rect;
  }
  Pixels shown() const {
    HDC dc = GetDC(window_);
    const Pixels pixels = pixels_of(dc, static_cast<int>(client().right), static_cast<int>(client().bottom));
    ReleaseDC(window_, dc);
    return pixels;
  }
  Pixels repainted() const {
    HDC dc = GetDC(window_);
    const RECT all = client();
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(DKGRAY_BRUSH)));
    ReleaseDC(window_, dc);
    InvalidateRect(window_, nullptr, FALSE);
    UpdateWindow(window_);
    return shown();
  }
  void resize(int width, int height) const {
    SetWindowPos(window_, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  int position(int bar) const { return GetScrollPos(window_, bar); }
  std::pair<int, int> range(int bar) const {
    std::pair<int, int> ends;
    GetScrollRange(window_, bar, &ends.first, &ends.second);
    return ends;
  }

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE)
      SetWindowLongPtr(window, GWLP_USERDATA,
                       reinterpret_cast<LONG_PTR>(reinterpret_cast<const CREATESTRUCT*>(lParam)->lpCreateParams));
    const auto* self = reinterpret_cast<const Window*>(GetWindowLongPtr(window, GWLP_USERDATA));
    if (self != nullptr && self->handler_(window, message, wParam, lParam)) return 0;
    return message == WM_ERASEBKGND ? 1 : DefWindowProcA(window, message, wParam, lParam);
  }

  Handler handler_;
  HWND window_ = nullptr;
};

// A window that forwards its messages to a display.
class DisplayWindow : public Window {
 public:
  DisplayWindow(int width, int height, UINT class_style = 0)
      : Window(
            width, height, [this](HWND w, UINT m, WPARAM wp, LPARAM lp) { return hand_on(w, m, wp, lp); }, class_style) {}

  ImgDisplayState state;

 private:
  bool hand_on(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
      case WM_CREATE: return DisplayWmCreate(window, wParam, lParam, &state) == 0;
      case WM_SIZE: return DisplayWmSize(window, wParam, lParam, &state) == 0;
      case WM_HSCROLL: return DisplayWmHorzScroll(window, wParam, lParam, &state) == 0;
      case WM_VSCROLL: return DisplayWmVertScroll(window, wParam, lParam, &state) == 0;
      case WM_PAINT: return DisplayWmPaint(window, &state) == 0;
      case WM_DESTROY: return DisplayWmDestroy(window, wParam, lParam, &state) == 0;
      default: return false;
    }
  }
};

// The settings of a context and its selected objects.
inline std::vector<int64_t> state_of(HDC dc) {
  std::vector<int64_t> facts = {GetMapMode(dc), GetROP2(dc),      GetStretchBltMode(dc), GetBkMode(dc),
                                GetBkColor(dc), GetTextColor(dc), GetPolyFillMode(dc),   GetGraphicsMode(dc)};
  for (UINT kind : {OBJ_PEN, OBJ_BRUSH, OBJ_FONT, OBJ_PAL, OBJ_BITMAP})
    facts.push_back(reinterpret_cast<intptr_t>(GetCurrentObject(dc, kind)));
  SIZE extent;
  POINT origin;
  for (auto* get : {GetWindowExtEx, GetViewportExtEx}) get(dc, &extent), facts.insert(facts.end(), {extent.cx, extent.cy});
  for (auto* get : {GetWindowOrgEx, GetViewportOrgEx, GetCurrentPositionEx, GetBrushOrgEx})
    get(dc, &origin), facts.insert(facts.end(), {origin.x, origin.y});
  RECT clip{};
  facts.push_back(GetClipBox(dc, &clip));
  facts.insert(facts.end(), {clip.left, clip.top, clip.right, clip.bottom});
  return facts;
}

inline BOOL CALLBACK count_window(HWND, LPARAM counter) { return ++*reinterpret_cast<int*>(counter); }

inline int windows_of_thread() {
  int count = 0;
  EnumThreadWindows(GetCurrentThreadId(), count_window, reinterpret_cast<LPARAM>(&count));
  return count;
}

}  // namespace test
