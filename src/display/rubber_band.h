// Interactive zooming: the gestures of a tracker, and the modal loop of `Zoom`.
#pragma once

#include "display/device_mapping.h"

namespace vorel::display {

// Pointers to points and ratios may be null.
void start_zoom(HWND window, const POINT* start, const RECT* current, int mode, bool screen_coordinates,
                ImgZoomTracker& tracker);
void move_band(HWND window, const POINT& mouse, ImgZoomTracker& tracker);
void end_zoom(HWND window, const POINT* end, ImgZoomTracker& tracker, ImgDisplayState& state);
void end_screen_zoom(HWND window, const POINT* end, ImgZoomTracker& tracker, ImgScreenZoom& state);

// zoom: viewport X, window X, viewport Y, window Y
void drag_zoom(HWND window, Point start, int* zoom);

}  // namespace vorel::display
