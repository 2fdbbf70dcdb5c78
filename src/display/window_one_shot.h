// Painting an image without a display state, and scroll bars for it.
#pragma once

#include "display/device_mapping.h"
#include "display/scrolling.h"
#include "display/window_display.h"

namespace vorel {

// How an image is painted; pointers may be null.
struct OneShotRequest {
  const int* scroll;  // the third and fourth number: how far it is scrolled, in image pixels
  const int* zoom;
  WORD flags;
};

// The process's switch: stretch what is seen in memory of the library's instead of having the system stretch the image.
int low_memory_stretch();
int set_low_memory_stretch(int value);

void paint_once(HWND window, const Painting& painting, HBITMAP bitmap, HPALETTE palette, const OneShotRequest& request);
void paint_once(HWND window, const Painting& painting, HGLOBAL dib, const OneShotRequest& request);

// The caller's four numbers: the ends of the ranges, and the positions.
void set_one_shot_ranges(HWND window, HGLOBAL dib, int* scroll, const OneShotRequest& request);
void follow_one_shot_scroll(HWND window, Direction direction, ScrollCode code, uint16_t word, HGLOBAL dib, int* scroll,
                            const OneShotRequest& request);

}  // namespace vorel
