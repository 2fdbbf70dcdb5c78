// What scroll messages do to positions: in numbers alone.
#pragma once

#include "display/mapping.h"

namespace vorel {

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
  int unit;    // positions move by whole numbers of this: the pixels that a whole group of image pixels takes
  int client;  // the window's extent
  int shortest_line = 8;
};

// How far a position moves at once, for a viewport extent.
int scroll_unit(int viewport_extent);

// Where a scroll message leads.
//   word  the high word of its wParam: where the thumb is. Taken with its sign where that is in range, else without
int scrolled(const ScrollAxis& axis, ScrollCode code, uint16_t word);

// The position nearest to a wanted one that is whole units away from where the axis stands, and in its range. A centred image
// smaller than the window stands at 0, outside its range, until it is moved.
int snapped(const ScrollAxis& axis, int64_t wanted);

}  // namespace vorel
