// A window that shows a picture. Windows only.
#include "examples.h"

// ---- With a state: the window forwards its messages

static ImgDisplayState state;  // one for each window
static HGLOBAL shown;
static UINT flags;

static LRESULT CALLBACK forward(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    //! [DisplayWmCreate]
    case WM_CREATE:
      DisplayWmCreate(window, wParam, lParam, &state);  // an empty display
      return 0;
    //! [DisplayWmCreate]
    //! [DisplayWmSize]
    case WM_SIZE:
      DisplayWmSize(window, wParam, lParam, &state);  // lays the picture out again, and repaints nothing
      InvalidateRect(window, NULL, FALSE);
      return 0;
    //! [DisplayWmSize]
    //! [DisplayWmHorzScroll]
    case WM_HSCROLL: return DisplayWmHorzScroll(window, wParam, lParam, &state);
    //! [DisplayWmHorzScroll]
    //! [DisplayWmVertScroll]
    case WM_VSCROLL: return DisplayWmVertScroll(window, wParam, lParam, &state);
    case WM_MOUSEWHEEL:  // a notch is three lines
      for (int i = 0; i < 3; ++i)
        DisplayWmVertScroll(window, GET_WHEEL_DELTA_WPARAM(wParam) > 0 ? SB_LINEUP : SB_LINEDOWN, 0, &state);
      return 0;
    //! [DisplayWmVertScroll]
    //! [DisplayWmPaint]
    case WM_ERASEBKGND: return 1;  // DisplayWmPaint fills the area around the picture, so nothing flickers
    case WM_PAINT: return DisplayWmPaint(window, &state);
    //! [DisplayWmPaint]
    //! [DisplayWmDestroy]
    case WM_DESTROY:
      DisplayWmDestroy(window, wParam, lParam, &state);  // what the display owns; the DIB is still the program's
      return 0;
    //! [DisplayWmDestroy]
    default: return DefWindowProcA(window, message, wParam, lParam);
  }
}

// A window of 40 x 30 pixels on the picture at twice its size: a part is out of view each way.
static HWND show_twice_as_large(HGLOBAL dib) {
  static const int kTwice[] = {20, 10, 20, 10};
  memset(&state, 0xAB, sizeof state);
  HWND window = open_window(forward, 40, 30);
  DisplayDIBStart(window, dib, NULL, kTwice, 0, &state);
  InvalidateRect(window, NULL, FALSE);
  UpdateWindow(window);
  return window;
}

static int create(HGLOBAL dib) {
  (void)dib;
  memset(&state, 0xAB, sizeof state);
  HWND window = open_window(forward, 40, 30);
  const int is_empty = state.dib == NULL && state.bitmap == NULL && state.layout.imageWidth == 0;
  close_window(window);
  EXPECT(is_empty);
  return 0;
}

static int start_dib(HGLOBAL dib) {
  HWND window = open_window(forward, 300, 200);
  shown = dib;
  //! [DisplayDIBStart]
  // For each new picture: fitted into the window. It must live as long as it is shown.
  flags = DisplayDIBStart(window, shown, NULL, NULL, IMG_DISPLAY_FIT | IMG_DISPLAY_CENTRE, &state);
  InvalidateRect(window, NULL, FALSE);
  //! [DisplayDIBStart]
  const int left = color_shown(window, 60, 20), right = color_shown(window, 240, 20);
  close_window(window);
  EXPECT(flags == (IMG_DISPLAY_FIT | IMG_DISPLAY_CENTRE) && left == kRed && right == kGreen);
  return 0;
}

static int start(HGLOBAL dib) {
  HWND window = open_window(forward, 200, 200);
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [DisplayStart]
  const int zoom[] = {30, 10, 30, 10};  // three times as large
  int dpi[] = {96, 96};
  DisplayStart(window, bitmap, NULL, dpi, NULL, zoom, 0, &state);
  InvalidateRect(window, NULL, FALSE);
  //! [DisplayStart]
  const int left = color_shown(window, 3 * kWidth / 2 - 2, 3), right = color_shown(window, 3 * kWidth / 2 + 2, 3);
  close_window(window);
  DeleteObject(bitmap);
  EXPECT(left == kRed && right == kGreen);
  return 0;
}

static int size(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  const int before = state.layout.clientRight;
  SetWindowPos(window, NULL, 0, 0, 60, 30, SWP_NOMOVE | SWP_NOZORDER);
  const int after = state.layout.clientRight;
  close_window(window);
  EXPECT(before > 0 && after == before + 20);
  return 0;
}

static int scroll_right(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  for (int i = 0; i < 9; ++i) SendMessageA(window, WM_HSCROLL, SB_LINERIGHT, 0);
  const int color = color_shown(window, 5, 5);
  close_window(window);
  EXPECT(color == kGreen);
  return 0;
}

static int scroll_down(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  SendMessageA(window, WM_MOUSEWHEEL, MAKEWPARAM(0, -WHEEL_DELTA), 0);
  for (int i = 0; i < 4; ++i) SendMessageA(window, WM_VSCROLL, SB_LINEDOWN, 0);
  const int color = color_shown(window, 5, 5);
  close_window(window);
  EXPECT(color == kBlue);
  return 0;
}

static int set_position(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  //! [DisplaySetScrollPos]
  int lower_right[] = {state.layout.hScrollMax, state.layout.vScrollMax};
  DisplaySetScrollPos(window, &state, lower_right);
  //! [DisplaySetScrollPos]
  const int color = color_shown(window, 5, 5);
  close_window(window);
  EXPECT(color == kWhite && state.layout.hScrollPos > kWidth);
  return 0;
}

static int paint(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  const int color = color_shown(window, 5, 5);
  close_window(window);
  EXPECT(color == kRed);
  return 0;
}

static int destroy(HGLOBAL dib) {
  HWND window = open_window(forward, 40, 30);
  DisplayDIBStart(window, dib, NULL, NULL, IMG_DISPLAY_AS_BITMAP, &state);
  HBITMAP made = state.bitmap;
  const int was_there = GetObjectType(made) == OBJ_BITMAP;
  close_window(window);
  EXPECT(was_there && GetObjectType(made) == 0 && GlobalSize(dib) != 0);
  return 0;
}

// Where the window's content is drawn a second time.
static HDC copy_dc(HBITMAP* bitmap) {
  HDC screen = GetDC(NULL), memory = CreateCompatibleDC(screen);
  *bitmap = CreateCompatibleBitmap(screen, 40, 30);
  ReleaseDC(NULL, screen);
  SelectObject(memory, *bitmap);
  return memory;
}

static int draw_dib(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  HBITMAP bitmap;
  HDC memory = copy_dc(&bitmap);
  //! [DisplayDIBImageDC]
  DisplayDIBImageDC(memory, &state);  // what the window shows, for a copy of it
  //! [DisplayDIBImageDC]
  const int color = color_on(memory, 5, 5);
  DeleteDC(memory);
  DeleteObject(bitmap);
  close_window(window);
  EXPECT(color == kRed);
  return 0;
}

static int draw_bitmap(HGLOBAL dib) {
  HWND window = open_window(forward, 40, 30);
  HBITMAP bitmap = ConvertDIBToBitmap(dib), copy;
  DisplayStart(window, bitmap, NULL, NULL, NULL, NULL, IMG_DISPLAY_STRETCH | IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL,
               &state);
  HDC memory = copy_dc(&copy);
  //! [DisplayImageDC]
  DisplayImageDC(memory, &state);  // what the window shows, for a copy of it
  //! [DisplayImageDC]
  const int left = color_on(memory, 2, 2), right = color_on(memory, 37, 2);
  DeleteDC(memory);
  DeleteObject(copy);
  close_window(window);
  DeleteObject(bitmap);
  EXPECT(left == kRed && right == kGreen);
  return 0;
}

static int map_dc(HGLOBAL dib) {
  HWND window = show_twice_as_large(dib);
  //! [MapDisplayDC]
  HDC dc = GetDC(window);
  MapDisplayDC(dc, &state);  // from here on in picture pixels, scrolled and zoomed like the picture
  RECT marked = {5, 3, 10, 8};
  FillRect(dc, &marked, GetStockObject(BLACK_BRUSH));
  ReleaseDC(window, dc);
  //! [MapDisplayDC]
  const int inside = color_shown(window, 15, 10), outside = color_shown(window, 5, 5);
  close_window(window);
  EXPECT(inside == kBlack && outside == kRed);
  return 0;
}

// ---- The low-memory switch

static int get_low_memory(HGLOBAL dib) {
  (void)dib;
  //! [GetLowMemStretch]
  if (GetLowMemStretch() == 0) puts("The system stretches whole pictures.");
  //! [GetLowMemStretch]
  EXPECT(GetLowMemStretch() == 0);
  return 0;
}

static int set_low_memory(HGLOBAL dib) {
  (void)dib;
  //! [SetLowMemStretch]
  int before = SetLowMemStretch(1);  // for the whole process: DisplayDIBImage scales the visible part itself
  // ... paint pictures of 100 million pixels ...
  SetLowMemStretch(before);
  //! [SetLowMemStretch]
  EXPECT(before == 0 && GetLowMemStretch() == 0);
  return 0;
}

// ---- Without a state: all calls are made while the window handles a message

static int paint_dib(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  InvalidateRect(window, NULL, TRUE);
  //! [DisplayDIBImage]
  // On WM_PAINT. It calls BeginPaint and EndPaint.
  DisplayDIBImage(window, dib, NULL, NULL, IMG_DISPLAY_FIT);
  //! [DisplayDIBImage]
  const int left = color_shown(window, 3, 3), right = color_shown(window, 90, 3);
  close_window(window);
  EXPECT(left == kRed && right == kGreen);
  return 0;
}

static int paint_bitmap(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  InvalidateRect(window, NULL, TRUE);
  //! [DisplayImage]
  // On WM_PAINT, twice as large, without a palette.
  const int zoom[] = {20, 10, 20, 10};
  DisplayImage(window, bitmap, NULL, NULL, zoom, 0);
  //! [DisplayImage]
  const int left = color_shown(window, kWidth - 3, 3), right = color_shown(window, kWidth + 3, 3);
  close_window(window);
  DeleteObject(bitmap);
  EXPECT(left == kRed && right == kGreen);
  return 0;
}

static int scroll[4];  // two ranges and two positions, for each window
static const int kEightTimes[] = {80, 10, 80, 10};

static int size_without_state(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  memset(scroll, 0, sizeof scroll);
  //! [DisplayCPPSize]
  // On WM_SIZE, and for each new picture or ratio.
  DisplayCPPSize(window, dib, scroll, kEightTimes, 0);
  InvalidateRect(window, NULL, TRUE);
  //! [DisplayCPPSize]
  close_window(window);
  EXPECT(scroll[0] == kWidth && scroll[1] == kHeight && scroll[2] == 0);
  return 0;
}

static int paint_without_state(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  memset(scroll, 0, sizeof scroll);
  DisplayCPPSize(window, dib, scroll, kEightTimes, 0);
  scroll[2] = scroll[0];  // at the right end
  InvalidateRect(window, NULL, TRUE);
  //! [DisplayCPPImage]
  // On WM_PAINT, at the positions in `scroll`.
  DisplayCPPImage(window, dib, scroll, kEightTimes, 0);
  //! [DisplayCPPImage]
  const int color = color_shown(window, 10, 10);
  close_window(window);
  EXPECT(color == kGreen);
  return 0;
}

static int scroll_right_without_state(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  memset(scroll, 0, sizeof scroll);
  DisplayCPPSize(window, dib, scroll, kEightTimes, 0);
  WPARAM wParam = SB_PAGERIGHT;
  LPARAM lParam = 0;
  //! [DisplayCPPHScroll]
  // On WM_HSCROLL.
  DisplayCPPHScroll(window, wParam, lParam, dib, scroll, kEightTimes, 0);
  //! [DisplayCPPHScroll]
  close_window(window);
  EXPECT(scroll[2] > 0 && scroll[3] == 0);
  return 0;
}

static int scroll_down_without_state(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 100, 80);
  memset(scroll, 0, sizeof scroll);
  DisplayCPPSize(window, dib, scroll, kEightTimes, 0);
  WPARAM wParam = SB_PAGEDOWN;
  LPARAM lParam = 0;
  //! [DisplayCPPVScroll]
  // On WM_VSCROLL.
  DisplayCPPVScroll(window, wParam, lParam, dib, scroll, kEightTimes, 0);
  //! [DisplayCPPVScroll]
  close_window(window);
  EXPECT(scroll[2] == 0 && scroll[3] > 0);
  return 0;
}

const Example kDisplayExamples[] = {
    {"DisplayWmCreate", 24, create},
    {"DisplayStart", 24, start},
    {"DisplayDIBStart", 24, start_dib},
    {"DisplayWmSize", 24, size},
    {"DisplayWmHorzScroll", 24, scroll_right},
    {"DisplayWmVertScroll", 24, scroll_down},
    {"DisplaySetScrollPos", 24, set_position},
    {"DisplayWmPaint", 24, paint},
    {"DisplayWmDestroy", 24, destroy},
    {"DisplayImageDC", 24, draw_bitmap},
    {"DisplayDIBImageDC", 24, draw_dib},
    {"MapDisplayDC", 24, map_dc},
    {"GetLowMemStretch", 24, get_low_memory},
    {"SetLowMemStretch", 24, set_low_memory},
    {"DisplayImage", 24, paint_bitmap},
    {"DisplayDIBImage", 24, paint_dib},
    {"DisplayCPPImage", 24, paint_without_state},
    {"DisplayCPPSize", 24, size_without_state},
    {"DisplayCPPHScroll", 24, scroll_right_without_state},
    {"DisplayCPPVScroll", 24, scroll_down_without_state},
    {NULL, 0, NULL},
};
