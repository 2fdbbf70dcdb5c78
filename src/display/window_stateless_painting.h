// Painting an image without a display state, and scroll bars for it.
#pragma once

#include "display/device_mapping.h"
#include "display/scrolling.h"
#include "display/window_display.h"

namespace vorel::display {

// Options of painting; pointers may be null.
struct StatelessRequest {
  const int* scroll;  // four numbers; the last two are the scroll positions in image pixels
  const int* zoom;
  WORD flags;
};

// The switch of the process: the library scales the visible part instead of having the system stretch the whole image.
int low_memory_stretch();
int set_low_memory_stretch(int value);

void paint_stateless(HWND window, const Painting& painting, HBITMAP bitmap, HPALETTE palette,
                     const StatelessRequest& request);
void paint_stateless(HWND window, const Painting& painting, HGLOBAL dib, const StatelessRequest& request);

// `scroll` is the caller's: the ends of the two ranges, then the two positions.
void set_stateless_ranges(HWND window, HGLOBAL dib, int* scroll, const StatelessRequest& request);
void follow_stateless_scroll(HWND window, Direction direction, ScrollCode code, uint16_t word, HGLOBAL dib, int* scroll,
                             const StatelessRequest& request);

}  // namespace vorel::display
