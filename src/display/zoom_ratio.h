// Zoom ratios, zoom steps and the part shown after a zoom: pure arithmetic.
#pragma once

#include <span>

#include "display/mapping.h"

namespace vorel::display {

// viewport : window. One side of a stepped ratio is the base.
struct Ratio {
  int viewport = 1, window = 1;
  friend bool operator==(const Ratio&, const Ratio&) = default;
};

// A thread's enlarge and reduce steps. Element 0 of a table is the number of steps (1 to 10) that follow, strictly
// increasing from the base.
struct ZoomTables {
  int enlarge[IMG_ZOOM_TABLE_ENTRIES] = {5, 10, 20, 40, 60, 80};
  int reduce[IMG_ZOOM_TABLE_ENTRIES] = {5, 10, 15, 30, 40, 50};
  int base = 10;  // represents 1 in a ratio
};

ZoomTables& thread_zoom_tables();

// The steps without their counts.
struct ZoomSteps {
  int base;
  std::span<const int> enlarge, reduce;
};

ZoomSteps zoom_steps(const ZoomTables& tables);

// Whether a table has 1 to 10 strictly increasing values, the first equal to the base.
bool is_step_table(std::span<const int, IMG_ZOOM_TABLE_ENTRIES> table, int base);

// The action of a zoom without a rectangle; the values are the low bits of the mode.
enum class ZoomAction { kKeep = 1, kStepLarger = 2, kStepSmaller = 3, kLittleLarger = 4, kLittleSmaller = 5 };

inline constexpr int kZoomByMouse = 0x10, kZoomWithoutMouse = 0x20;

// kKeep for modes other than 0x11 to 0x15 and 0x21 to 0x25.
ZoomAction zoom_action(int mode);

Ratio stepped(Ratio ratio, ZoomAction action, const ZoomSteps& steps);

// The ratio at which a rectangle of the image fills a window that shows `client` of the image at ratio 1.
Ratio filling(const Box& rectangle, const Box& client, int base);

// The upper left image point of a window that shows `client` around `centre`.
Point corner_around(Point centre, const Box& client);

// Whether the mouse moved at least 6 pixels on both axes, which makes the gesture a rectangle.
bool is_drag(Point anchor, Point mouse);

// The rectangle between two opposite corners.
Box ordered(Point a, Point b);

// The ratio of `Zoom`, in hundredths, at which a dragged rectangle fills the client area; at most 500.
//   zoom  the current viewport X, window X, viewport Y, window Y
int filling_hundredths(std::span<const int, 4> zoom, const Box& band, const Box& client);

}  // namespace vorel::display
