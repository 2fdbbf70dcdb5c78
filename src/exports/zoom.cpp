// Interactive zooming.
#include <vorel32.h>

#include "display/rubber_band.h"
#include "display/zoom_ratio.h"
#include "exports/boundary.h"

using namespace vorel;
using namespace vorel::display;

namespace {

// A step is a gesture without the mouse.
template <class End>
void step(HWND window, const RECT* current, int mode, ImgZoomTracker* tracker, End end) {
  if (mode & kZoomByMouse) return;
  BZoomStart(window, nullptr, current, mode, tracker, FALSE);
  end();
}

}  // namespace

extern "C" {

void VORELCALL BZoomStart(HWND window, const POINT* start, const RECT* current, int mode, ImgZoomTracker* tracker,
                          BOOL screenCoordinates) {
  if (tracker != nullptr) start_zoom(window, start, current, mode, screenCoordinates != FALSE, *tracker);
}

void VORELCALL BZoomUpdate(HWND window, const POINT* mouse, ImgZoomTracker* tracker) {
  if (mouse != nullptr && tracker != nullptr) move_band(window, *mouse, *tracker);
}

void VORELCALL BZoomEnd(HWND window, const POINT* end, ImgZoomTracker* tracker, ImgDisplayState* state) {
  if (tracker != nullptr && state != nullptr) quietly([&] { end_zoom(window, end, *tracker, *state); });
}

void VORELCALL BZoomStep(HWND window, const RECT* current, int mode, ImgZoomTracker* tracker, ImgDisplayState* state) {
  step(window, current, mode, tracker, [&] { BZoomEnd(window, nullptr, tracker, state); });
}

void VORELCALL BZoomScreenEnd(HWND window, const POINT* end, ImgZoomTracker* tracker, ImgScreenZoom* state) {
  if (tracker != nullptr && state != nullptr) quietly([&] { end_screen_zoom(window, end, *tracker, *state); });
}

void VORELCALL BZoomScreenStep(HWND window, const RECT* current, int mode, ImgZoomTracker* tracker, ImgScreenZoom* state) {
  step(window, current, mode, tracker, [&] { BZoomScreenEnd(window, nullptr, tracker, state); });
}

void VORELCALL Zoom(HWND window, LPARAM start, int* zoom) {
  const Point from = {static_cast<int16_t>(LOWORD(start)), static_cast<int16_t>(HIWORD(start))};
  if (zoom != nullptr) quietly([&] { drag_zoom(window, from, zoom); });
}

}  // extern "C"
