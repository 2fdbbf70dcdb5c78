// A window that shows an image: its messages, the display state and painting. Without a window, starting only fills the
// state.
#pragma once

#include "display/device_mapping.h"
#include "display/scrolling.h"
#include "frame/error.h"

namespace vorel::display {

// Options that a display starts with.
struct DisplayRequest {
  int* view;        // in: the image point for the upper left corner; out: the origins. May be null
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

// Draws the part of the image that the context's clip region shows.
void draw_display(HDC dc, ImgDisplayState& state);

// Deletes the bitmap and palette that the state owns.
void end_display(ImgDisplayState& state);

}  // namespace vorel::display
