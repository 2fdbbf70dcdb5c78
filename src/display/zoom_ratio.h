// Zoom ratios and where a zoom leads: in numbers alone.
#pragma once

#include <span>

#include "display/mapping.h"

namespace vorel {

// viewport : window, one side of a stepped ratio being the base.
struct Ratio {
  int viewport = 1, window = 1;
  friend bool operator==(const Ratio&, const Ratio&) = default;
};

// A thread's zoom steps. Element 0 of a table counts the steps (1 to 10) that follow it, strictly increasing, the first one equal
// to the base.
struct ZoomTables {
  int enlarge[IMG_ZOOM_TABLE_ENTRIES] = {5, 10, 20, 40, 60, 80};
  int reduce[IMG_ZOOM_TABLE_ENTRIES] = {5, 10, 15, 30, 40, 50};
  int base = 10;  // the scale that stands for 100 % in both tables
};

ZoomTables& thread_zoom_tables();

// The same without the counts.
struct ZoomSteps {
  int base;
  std::span<const int> enlarge, reduce;
};

ZoomSteps zoom_steps(const ZoomTables& tables);

// Whether a table of IMG_ZOOM_TABLE_ENTRIES counts 1 to 10 values that rise from the base.
bool is_step_table(std::span<const int, IMG_ZOOM_TABLE_ENTRIES> table, int base);

// What a zoom without a rectangle does; the values are the low bits of the mode. Others keep the ratio, too.
enum class ZoomAction { kKeep = 1, kStepLarger = 2, kStepSmaller = 3, kLittleLarger = 4, kLittleSmaller = 5 };

inline constexpr int kZoomByMouse = 0x10, kZoomWithoutMouse = 0x20;

// None but 0x11 to 0x15 and 0x21 to 0x25 do anything but keep the ratio.
ZoomAction zoom_action(int mode);

Ratio stepped(Ratio ratio, ZoomAction action, const ZoomSteps& steps);

// The ratio at which a rectangle of the image fills a window that at ratio 1 shows `client` of it.
Ratio filling(const Box& rectangle, const Box& client, int base);

// The corner of a window whose middle shows `centre`.
Point corner_around(Point centre, const Box& client);

// Whether the mouse went far enough for a rectangle: on both axes.
bool is_drag(Point anchor, Point mouse);

// The corners of a rectangle in order.
Box ordered(Point a, Point b);

// A ratio in hundredths at which a dragged rectangle fills the client area: `Zoom`'s, at most 500.
//   zoom    viewport X, window X, viewport Y, window Y, now
int filling_hundredths(std::span<const int, 4> zoom, const Box& band, const Box& client);

}  // namespace vorel
