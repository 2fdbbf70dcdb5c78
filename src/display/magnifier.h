// The magnifying lens of the process. Used from one thread.
#pragma once

#include "core/view.h"
#include "display/device_mapping.h"

namespace vorel {

Size lens_size();
void set_lens_size(Size size);

void start_lens(HWND window, HPALETTE palette);
void stop_lens();

// Draws a part of a bitmap into the lens.
//   x, y  the part's left upper corner, which may lie outside the bitmap
void fill_lens(HBITMAP source, int x, int y, int width, int height);

// Puts the lens on the window and puts back what it covered before.
void place_lens(HWND window, Point corner);

}  // namespace vorel
