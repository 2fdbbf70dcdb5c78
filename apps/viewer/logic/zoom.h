// Arithmetic of zooming and scrolling.
#pragma once

namespace vorel::viewer {

// viewport / window window pixels per image pixel.
struct Ratio {
  int viewport;
  int window;
  bool operator==(const Ratio&) const = default;
};

// Stands for 1 in a ratio. The display halves both numbers of a ratio until the first is at most 16, so every step below is
// drawn at exactly its ratio.
inline constexpr int kZoomBase = 16;
inline constexpr Ratio kActualSize{kZoomBase, kZoomBase};

// Tables for BZoomSetScaleSteps: a count, then the steps, from 1 to 16 and down to 1/32.
inline constexpr int kEnlargeSteps[] = {9, 16, 24, 32, 48, 64, 96, 128, 192, 256, 0};
inline constexpr int kReduceSteps[] = {10, 16, 24, 32, 48, 64, 96, 128, 192, 256, 512};

// The ratio nearest to a scale that has the base on one side, between the ends of the tables.
Ratio ratio_for(double scale);

// Pixels of the window that `pixels` of a picture take.
int scaled_length(int pixels, Ratio ratio);

// The pixel of a picture at a distance from its edge in the window, counted in the window's pixels. Negative before the edge.
int pixel_under(int distance, Ratio ratio);

// In per cent, rounded, at least 1.
int percent(double scale);

struct Extent {
  int width, height;  // pixels
  bool operator==(const Extent&) const = default;
};

struct Bars {
  bool horizontal, vertical;
  bool operator==(const Bars&) const = default;
};

// Which scroll bars a picture needs in a window.
//   picture  its displayed size
//   window   its size including the area of scroll bars
//   bar      height of a horizontal bar and width of a vertical one
Bars bars_needed(Extent picture, Extent window, Extent bar);

// Whether a picture scaled to the width of a window is higher than the window.
bool needs_bar_when_as_wide(Extent picture, Extent window);

// One direction of a picture in a window, in pixels of the window.
struct ScrolledAxis {
  int position, first;  // positions count from `first`
  int picture, window;  // extents
  int step;             // see scroll_step

  int last() const { return picture > window ? first + picture - window : first; }
};

// The unit of scrolling, in window pixels: a whole number of image pixels and of the library's own units, so that the
// content of the window can be moved without painting it again. If that is more than a line, as it can be for fitted widths,
// only the library's unit.
int scroll_step(Ratio ratio);

// The position nearest to `wanted` that is whole steps away and shows no area outside the picture. The first position is
// reached exactly. The last one can be up to a step too far, so that the picture's end is always shown.
int position_in_view(const ScrolledAxis& axis, int wanted);

// Converts wheel messages, which can report parts of a notch, to whole steps.
class WheelSteps {
 public:
  // Steps per notch of 120 units.
  explicit WheelSteps(int per_notch) : per_notch_(per_notch) {}
  int turn(int units);

 private:
  int per_notch_;
  int rest_ = 0;
};

}  // namespace vorel::viewer
