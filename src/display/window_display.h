// A window that shows an image: what its messages do to the display state, and how it is painted. Windows may be null where
// nothing of the window is needed; states are not.
#pragma once

#include "display/device_mapping.h"
#include "display/scrolling.h"
#include "frame/error.h"

namespace vorel {

// What a display starts with, next to its image.
struct DisplayRequest {
  int* view;        // in: the image point for the left upper corner; out: where the origins lie. May be null
  const int* zoom;  // viewport X, window X, viewport Y, window Y. May be null
  UINT flags;
};

void clear(ImgDisplayState& state);

void start_display(HWND window, HBITMAP bitmap, HPALETTE palette, const int* dpi, const DisplayRequest& request,
                   ImgDisplayState& state);
void start_display(HWND window, HGLOBAL dib, const DisplayRequest& request, ImgDisplayState& state);

void follow_size(HWND window, ImgDisplayState& state);

enum class Direction { kHorizontal, kVertical };
void follow_scroll(HWND window, Direction direction, ScrollCode code, uint16_t word, ImgDisplayState& state);
void scroll_to(HWND window, Point position, ImgDisplayState& state);

void paint_display(HWND window, const Painting& painting, ImgDisplayState& state);

// Draws what is seen of the image inside the context's clipping.
void draw_display(HDC dc, ImgDisplayState& state);

// Deletes what the state owns.
void end_display(ImgDisplayState& state);

}  // namespace vorel
