// Interactive zooming and the magnifying lens. Windows only.
#include "examples.h"

static ImgDisplayState state;
static ImgZoomTracker tracker;

static LRESULT CALLBACK zooming(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const ImgDisplayLayout* layout = &state.layout;
  //! [BZoomStart]
  if (message == WM_LBUTTONDOWN) {
    POINT mouse = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
    RECT ratio = {layout->zoomViewportX, layout->zoomWindowX, layout->zoomViewportY, layout->zoomWindowY};
    BZoomStart(window, &mouse, &ratio, 0x12, &tracker, FALSE);  // a band; a click without one is a step larger
    return 0;
  }
  //! [BZoomStart]
  //! [BZoomUpdate]
  if (message == WM_MOUSEMOVE && GetCapture() == window) {
    POINT mouse = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
    BZoomUpdate(window, &mouse, &tracker);
    return 0;
  }
  //! [BZoomUpdate]
  //! [BZoomEnd]
  if (message == WM_LBUTTONUP && GetCapture() == window) {
    POINT mouse = {(short)LOWORD(lParam), (short)HIWORD(lParam)};
    BZoomEnd(window, &mouse, &tracker, &state);
    int view[] = {tracker.resultLeft, tracker.resultTop, 0, 0};
    int zoom[] = {tracker.resultViewportX, tracker.resultWindowX, tracker.resultViewportY, tracker.resultWindowY};
    DisplayDIBStart(window, state.dib, view, zoom, state.layout.flags, &state);
    InvalidateRect(window, NULL, FALSE);
    return 0;
  }
  //! [BZoomEnd]
  if (message == WM_CREATE) return DisplayWmCreate(window, wParam, lParam, &state);
  if (message == WM_PAINT) return DisplayWmPaint(window, &state);
  if (message == WM_DESTROY) return DisplayWmDestroy(window, wParam, lParam, &state);
  return DefWindowProcA(window, message, wParam, lParam);
}

static HWND show(HGLOBAL dib) {
  HWND window = open_window(zooming, kWidth, kHeight);
  DisplayDIBStart(window, dib, NULL, NULL, IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL, &state);
  InvalidateRect(window, NULL, FALSE);
  UpdateWindow(window);
  return window;
}

static int zoom_start(HGLOBAL dib) {
  HWND window = show(dib);
  SendMessageA(window, WM_LBUTTONDOWN, 0, MAKELPARAM(34, 6));
  const int captured = GetCapture() == window;
  ReleaseCapture();
  close_window(window);
  EXPECT(captured && tracker.mode == 0x12 && tracker.anchorX == 34 && tracker.anchorY == 6);
  return 0;
}

static int zoom_update(HGLOBAL dib) {
  HWND window = show(dib);
  SendMessageA(window, WM_LBUTTONDOWN, 0, MAKELPARAM(34, 6));
  SendMessageA(window, WM_MOUSEMOVE, 0, MAKELPARAM(50, 18));
  const int band = tracker.bandShown, changed = color_shown(window, 42, 6) != kGreen;
  SendMessageA(window, WM_MOUSEMOVE, 0, MAKELPARAM(34, 6));
  ReleaseCapture();
  close_window(window);
  EXPECT(band && changed && tracker.cornerX == 34);
  return 0;
}

static int zoom_end(HGLOBAL dib) {
  HWND window = show(dib);
  SendMessageA(window, WM_LBUTTONDOWN, 0, MAKELPARAM(34, 6));
  SendMessageA(window, WM_MOUSEMOVE, 0, MAKELPARAM(50, 18));
  SendMessageA(window, WM_LBUTTONUP, 0, MAKELPARAM(50, 18));
  const int first = color_shown(window, 2, 2), last = color_shown(window, kWidth - 2, kHeight - 2);
  close_window(window);
  EXPECT(tracker.resultViewportX == 40 && tracker.resultWindowX == 10);  // 16 x 12 pixels fill 64 x 48
  EXPECT(tracker.resultLeft == 36 && tracker.resultTop == 7 && first == kGreen &&
         last == kGreen);  // 40 : 10 is drawn as 5 : 1
  return 0;
}

static int zoom_step(HGLOBAL dib) {
  HWND window = show(dib);
  //! [BZoomStep]
  // On "Zoom in": a step larger, without the mouse.
  const ImgDisplayLayout* layout = &state.layout;
  RECT ratio = {layout->zoomViewportX, layout->zoomWindowX, layout->zoomViewportY, layout->zoomWindowY};
  BZoomStep(window, &ratio, 0x22, &tracker, &state);
  int zoom[] = {tracker.resultViewportX, tracker.resultWindowX, tracker.resultViewportY, tracker.resultWindowY};
  DisplayDIBStart(window, dib, NULL, zoom, layout->flags, &state);
  InvalidateRect(window, NULL, FALSE);
  //! [BZoomStep]
  const int color = color_shown(window, kWidth - 2, kHeight - 2);
  close_window(window);
  EXPECT(zoom[0] == 20 && zoom[1] == 10 && color == kRed);
  return 0;
}

static int screen_end(HGLOBAL dib) {
  HWND window = show(dib);
  //! [BZoomScreenEnd]
  ImgScreenZoom screen = {96, 96, {0, 0, 64, 48}, {0, 0, 64, 48}};  // the picture fills the window
  POINT start = {16, 12}, end = {48, 36};
  BZoomStart(window, &start, NULL, 0x12, &tracker, FALSE);
  BZoomScreenEnd(window, &end, &tracker, &screen);
  StretchBlt(GetDC(window), 0, 0, 64, 48, GetDC(window), screen.zoom.left, screen.zoom.top,
             screen.zoom.right - screen.zoom.left, screen.zoom.bottom - screen.zoom.top, SRCCOPY);
  //! [BZoomScreenEnd]
  close_window(window);
  EXPECT(screen.zoom.left == 16 && screen.zoom.top == 12 && screen.zoom.right == 48 && screen.zoom.bottom == 36);
  return 0;
}

static int screen_step(HGLOBAL dib) {
  HWND window = show(dib);
  //! [BZoomScreenStep]
  ImgScreenZoom screen = {96, 96, {0, 0, 64, 48}, {0, 0, 64, 48}};
  RECT ratio = {10, 10, 10, 10};
  BZoomScreenStep(window, &ratio, 0x22, &tracker, &screen);
  printf("%ld x %ld picture pixels fill the window.\n", screen.zoom.right - screen.zoom.left,
         screen.zoom.bottom - screen.zoom.top);
  //! [BZoomScreenStep]
  close_window(window);
  EXPECT(screen.zoom.right - screen.zoom.left == 32 && screen.zoom.bottom - screen.zoom.top == 24);
  return 0;
}

static int drag(HGLOBAL dib) {
  HWND window = show(dib);
  const LPARAM lParam = MAKELPARAM(10, 10);
  PostMessageA(window, WM_MOUSEMOVE, 0, MAKELPARAM(26, 22));
  PostMessageA(window, WM_LBUTTONUP, 0, MAKELPARAM(26, 22));
  //! [Zoom]
  // On WM_LBUTTONDOWN. It returns when the button is released.
  int zoom[] = {1, 1, 1, 1};
  Zoom(window, lParam, zoom);
  printf("%d %%\n", 100 * zoom[0] / zoom[1]);
  //! [Zoom]
  close_window(window);
  EXPECT(zoom[0] == 400 && zoom[1] == 100);
  return 0;
}

// ---- The lens

static int lens_sizes(HGLOBAL dib) {
  (void)dib;
  //! [M_SetSizes]
  M_SetSizes(48, 38);  // 40 x 30 pixels in a frame of 4
  //! [M_SetSizes]
  EXPECT(M_GetWidth() == 48 && M_GetHeight() == 38);
  return 0;
}

static int lens_width(HGLOBAL dib) {
  (void)dib;
  M_SetSizes(48, 38);
  POINT mouse = {100, 50};
  //! [M_GetWidth]
  int left = mouse.x - M_GetWidth() / 2;  // the lens is centred on the mouse
  //! [M_GetWidth]
  EXPECT(left == 76);
  return 0;
}

static int lens_height(HGLOBAL dib) {
  (void)dib;
  M_SetSizes(48, 38);
  POINT mouse = {100, 50};
  //! [M_GetHeight]
  int top = mouse.y - M_GetHeight() / 2;
  //! [M_GetHeight]
  EXPECT(top == 31);
  return 0;
}

static int lens_start(HGLOBAL dib) {
  HWND window = show(dib);
  M_SetSizes(28, 28);
  //! [M_StartMagnify]
  // On WM_RBUTTONDOWN: a snapshot of the window is taken, and the cursor is hidden.
  SetCapture(window);
  M_StartMagnify(window, NULL);
  //! [M_StartMagnify]
  ReleaseCapture();
  M_CopyBitmap(window, 10, 10);
  const int framed = color_shown(window, 11, 24) != kRed;
  M_StopMagnify();
  close_window(window);
  EXPECT(framed);
  return 0;
}

static int lens_stop(HGLOBAL dib) {
  HWND window = show(dib);
  M_StartMagnify(window, NULL);
  M_CopyBitmap(window, 10, 10);
  SetCapture(window);
  //! [M_StopMagnify]
  // On WM_RBUTTONUP: what the lens covered and the cursor are back.
  ReleaseCapture();
  M_StopMagnify();
  //! [M_StopMagnify]
  const int color = color_shown(window, 11, 15);
  close_window(window);
  EXPECT(color == kRed);
  return 0;
}

static int lens_part(HGLOBAL dib) {
  (void)dib;
  M_SetSizes(48, 38);
  //! [M_CalcRect]
  // The part of the picture about (100, 50) that fills the lens four times as large.
  int zoom[] = {40, 10, 40, 10};
  RECT part;
  if (!M_CalcRect(100, 50, zoom, &part)) return fail_with("M_CalcRect", IMG_E_PARAMETER);
  //! [M_CalcRect]
  EXPECT(part.right - part.left == 10 && part.left == 95 && part.top < 50 && part.bottom > 50);
  return 0;
}

// Moves a lens of 20 x 20 pixels over the window, filled with the picture's lower right quarter.
static int lens_moved(HGLOBAL dib) {
  HWND window = show(dib);
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  POINT mouse = {20, 20};
  M_SetSizes(28, 28);
  M_StartMagnify(window, NULL);
  //! [M_StretchBitmap]
  // On WM_MOUSEMOVE: fills the lens; M_CopyBitmap shows it.
  M_StretchBitmap(bitmap, 40, 30, 10, 10);  // in bitmap pixels; M_CalcRect computes them
  //! [M_StretchBitmap]
  //! [M_CopyBitmap]
  M_CopyBitmap(window, mouse.x - M_GetWidth() / 2, mouse.y - M_GetHeight() / 2);
  //! [M_CopyBitmap]
  const int magnified = color_shown(window, 20, 20), beside = color_shown(window, 2, 2);
  M_StopMagnify();
  DeleteObject(bitmap);
  close_window(window);
  EXPECT(magnified == kWhite && beside == kRed);
  return 0;
}

const Example kZoomExamples[] = {
    {"Zoom", 24, drag},
    {"BZoomStart", 24, zoom_start},
    {"BZoomUpdate", 24, zoom_update},
    {"BZoomEnd", 24, zoom_end},
    {"BZoomStep", 24, zoom_step},
    {"BZoomScreenEnd", 24, screen_end},
    {"BZoomScreenStep", 24, screen_step},
    {"M_SetSizes", 24, lens_sizes},
    {"M_GetWidth", 24, lens_width},
    {"M_GetHeight", 24, lens_height},
    {"M_StartMagnify", 24, lens_start},
    {"M_StopMagnify", 24, lens_stop},
    {"M_CalcRect", 24, lens_part},
    {"M_StretchBitmap", 24, lens_moved},
    {"M_CopyBitmap", 24, lens_moved},
    {NULL, 0, NULL},
};
