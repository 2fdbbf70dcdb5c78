// The scrolling display, with and without a display state.
#include <vorel32.h>

#include "display/window_display.h"
#include "display/window_stateless_painting.h"
#include "exports/boundary.h"

using namespace vorel;
using namespace vorel::display;

namespace {

constexpr LRESULT kHandled = 0, kNoWindow = 1;

// Message handlers that need the window. Without a state they do nothing.
template <class Work>
LRESULT handle(HWND window, ImgDisplayState* state, Work work) {
  if (window == nullptr) return kNoWindow;
  if (state != nullptr) quietly(work);
  return kHandled;
}

LRESULT scroll(HWND window, Direction direction, WPARAM message, ImgDisplayState* state) {
  return handle(window, state, [&] {
    follow_scroll(window, direction, static_cast<ScrollCode>(LOWORD(message)), HIWORD(message), *state);
  });
}

void scroll_stateless(HWND window, Direction direction, WPARAM message, HGLOBAL dib, int* scroll,
                      const StatelessRequest& request) {
  if (window == nullptr || scroll == nullptr) return;
  quietly([&] {
    follow_stateless_scroll(window, direction, static_cast<ScrollCode>(LOWORD(message)), HIWORD(message), dib, scroll,
                            request);
  });
}

template <class Image>
void paint_in(HWND window, Image paint) {
  const Painting painting(window);
  if (painting) quietly([&] { paint(painting); });
}

}  // namespace

extern "C" {

LRESULT VORELCALL DisplayWmCreate(HWND, WPARAM, LPARAM, ImgDisplayState* state) {
  if (state != nullptr) clear(*state);
  return kHandled;
}

UINT VORELCALL DisplayStart(HWND window, HBITMAP bitmap, HPALETTE palette, const int* dpi, int* view, const int* zoom,
                            UINT flags, ImgDisplayState* state) {
  if (state == nullptr) return 0;
  quietly([&] { start_display(window, bitmap, palette, dpi, {view, zoom, flags}, *state); });
  return state->layout.flags;
}

UINT VORELCALL DisplayDIBStart(HWND window, HGLOBAL dib, int* view, const int* zoom, UINT flags, ImgDisplayState* state) {
  if (state == nullptr) return 0;
  quietly([&] { start_display(window, dib, {view, zoom, flags}, *state); });
  return flags;
}

LRESULT VORELCALL DisplayWmSize(HWND window, WPARAM, LPARAM, ImgDisplayState* state) {
  return handle(window, state, [&] { follow_size(window, *state); });
}

LRESULT VORELCALL DisplayWmHorzScroll(HWND window, WPARAM wParam, LPARAM, ImgDisplayState* state) {
  return scroll(window, Direction::kHorizontal, wParam, state);
}

LRESULT VORELCALL DisplayWmVertScroll(HWND window, WPARAM wParam, LPARAM, ImgDisplayState* state) {
  return scroll(window, Direction::kVertical, wParam, state);
}

LRESULT VORELCALL DisplaySetScrollPos(HWND window, ImgDisplayState* state, const int* position) {
  if (position == nullptr) return kNoWindow;
  return handle(window, state, [&] { scroll_to(window, {position[0], position[1]}, *state); });
}

LRESULT VORELCALL DisplayWmPaint(HWND window, ImgDisplayState* state) {
  paint_in(window, [&](const Painting& painting) {
    if (state != nullptr) paint_display(window, painting, *state);
  });
  return kHandled;
}

LRESULT VORELCALL DisplayWmDestroy(HWND, WPARAM, LPARAM, ImgDisplayState* state) {
  if (state != nullptr) end_display(*state);
  return kHandled;
}

UINT VORELCALL DisplayDIBImageDC(HDC dc, ImgDisplayState* state) {
  if (state == nullptr) return 0;
  quietly([&] { draw_display(dc, *state); });
  return state->layout.flags;
}

UINT VORELCALL DisplayImageDC(HDC dc, ImgDisplayState* state) { return DisplayDIBImageDC(dc, state); }

void VORELCALL MapDisplayDC(HDC dc, ImgDisplayState* state) {
  if (state != nullptr) quietly([&] { apply(dc, set_up_mapping(state->layout, Offsets::kKeep)); });
}

int VORELCALL GetLowMemStretch(void) { return low_memory_stretch(); }
int VORELCALL SetLowMemStretch(int value) { return set_low_memory_stretch(value); }

void VORELCALL DisplayDIBImage(HWND window, HGLOBAL dib, const int* scroll, const int* zoom, WORD flags) {
  paint_in(window, [&](const Painting& painting) { paint_stateless(window, painting, dib, {scroll, zoom, flags}); });
}

void VORELCALL DisplayImage(HWND window, HBITMAP bitmap, HPALETTE palette, const int* scroll, const int* zoom, WORD flags) {
  paint_in(window, [&](const Painting& painting) {
    paint_stateless(window, painting, bitmap, palette, {scroll, zoom, flags});
  });
}

void VORELCALL DisplayCPPImage(HWND window, HGLOBAL dib, const int* scroll, const int* zoom, WORD flags) {
  DisplayDIBImage(window, dib, scroll, zoom, flags);
}

void VORELCALL DisplayCPPSize(HWND window, HGLOBAL dib, int* scroll, const int* zoom, WORD flags) {
  if (window != nullptr && scroll != nullptr)
    quietly([&] { set_stateless_ranges(window, dib, scroll, {scroll, zoom, flags}); });
}

void VORELCALL DisplayCPPHScroll(HWND window, WPARAM wParam, LPARAM, HGLOBAL dib, int* scroll, const int* zoom, WORD flags) {
  scroll_stateless(window, Direction::kHorizontal, wParam, dib, scroll, {scroll, zoom, flags});
}

void VORELCALL DisplayCPPVScroll(HWND window, WPARAM wParam, LPARAM, HGLOBAL dib, int* scroll, const int* zoom, WORD flags) {
  scroll_stateless(window, Direction::kVertical, wParam, dib, scroll, {scroll, zoom, flags});
}

}  // extern "C"
