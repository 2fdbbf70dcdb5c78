// Arithmetic of zooming and of scroll bars, in plain numbers.
#pragma once

namespace vorel::viewer {

// Image pixels are drawn viewport / window times as large.
struct Ratio {
  int viewport;
  int window;
  bool operator==(const Ratio&) const = default;
};

// What stands for 1 in a ratio. The display keeps the first number of a ratio below 17 by halving both, so with 16 every step
// below is drawn exactly as large as it says.
inline constexpr int kZoomBase = 16;
inline constexpr Ratio kActualSize{kZoomBase, kZoomBase};

// Tables for BZoomSetScaleSteps: a count, then the steps. From 1 to 16 times, and down to 1/32.
inline constexpr int kEnlargeSteps[] = {9, 16, 24, 32, 48, 64, 96, 128, 192, 256, 0};
inline constexpr int kReduceSteps[] = {10, 16, 24, 32, 48, 64, 96, 128, 192, 256, 512};

// The ratio nearest to a scale that has the base on one side, between the ends of the tables.
Ratio ratio_for(double scale);

// Per cent, rounded; at least 1.
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
//   picture  as it is displayed
//   window   with the room that bars may take
//   bar      height of a horizontal bar and width of a vertical one
Bars bars_needed(Extent picture, Extent window, Extent bar);

// Whether a picture that is made as wide as a window is then too high for it.
bool needs_bar_when_as_wide(Extent picture, Extent window);

// Where the middle of a shown stretch stays within a picture: the position nearest to `position` at which a window shows as
// much of the picture as it can. All in device units, positions from `first` on.
int position_in_view(int position, int first, int picture, int window);

// Turns of a mouse wheel, which come in parts of a notch, into whole steps.
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
