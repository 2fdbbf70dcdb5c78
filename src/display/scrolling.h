// Scroll positions and the messages that change them: pure arithmetic.
#pragma once

#include "display/mapping.h"

namespace vorel::display {

// The codes of scroll messages; the values are the system's, the same for both directions.
enum class ScrollCode {
  kLineBack = 0,
  kLineOn = 1,
  kPageBack = 2,
  kPageOn = 3,
  kThumbPosition = 4,
  kThumbTrack = 5,
  kStart = 6,
  kEnd = 7
};

// One direction in which a window scrolls, in the units of its scroll bar.
struct ScrollAxis {
  int least, most, position;
  int unit;    // positions move by multiples of this: device pixels of a whole group of image pixels
  int client;  // extent of the client area
  int shortest_line = 8;
};

// The unit of an axis with this viewport extent.
int scroll_unit(int viewport_extent);

// The position after a scroll message.
//   word  the high word of its wParam, the thumb's position: signed if that is in range, else unsigned
int scrolled(const ScrollAxis& axis, ScrollCode code, uint16_t word);

// The position nearest to `wanted` that is a whole number of units from the current position, clamped to the range. A
// centred image smaller than the window stays at 0, outside its range, until it is scrolled.
int snapped(const ScrollAxis& axis, int64_t wanted);

}  // namespace vorel::display
