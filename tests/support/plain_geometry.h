// Turning by any angle, skewing and scaling one pixel at a time: what the library's results are held against, and how much is
// gained by its way of doing it. No checks: these are for good pictures and parameters.
#pragma once

#include "support/dib.h"

namespace test {

// Each returns the block that the library should: header, colours, rows and what it has to spare.

Bytes plain_rotation(const Bytes& dib, int angle, int method, int* corners = nullptr);

Bytes plain_skew(const Bytes& dib, bool rows, int offset);

// 4, 8 and 24 bits.
Bytes plain_scaling(const Bytes& dib, bool cubic, int width, int height);

Bytes plain_magnification(const Bytes& dib, int width, int height, int x_factor, int y_factor, bool cubic);

// The rectangle, y from the top, by nearest pixels.
Bytes plain_nearest(const Bytes& dib, int x, int y, int width, int height, int new_width, int new_height);

}  // namespace test
