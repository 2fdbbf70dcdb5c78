// The magnifying lens. There is one per process; all calls come from one thread.
#pragma once

#include "core/view.h"
#include "display/device_mapping.h"

namespace vorel::display {

Size lens_size();
void set_lens_size(Size size);

void start_lens(HWND window, HPALETTE palette);
void stop_lens();

// Draws a part of a bitmap into the lens.
//   x, y  the upper left corner of the part; it may lie outside the bitmap
void fill_lens(HBITMAP source, int x, int y, int width, int height);

// Draws the lens on the window and restores the area that it covered before.
void place_lens(HWND window, Point corner);

}  // namespace vorel::display
