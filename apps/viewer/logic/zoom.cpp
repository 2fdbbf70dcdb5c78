#include "viewer/logic/zoom.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace vorel::viewer {
namespace {

constexpr int kWheelNotch = 120;

constexpr int last_step(const int* table) { return table[table[0]]; }

int steps_of(double times, const int* table) {
  const double steps = std::clamp(kZoomBase * times, 0.0 + kZoomBase, 0.0 + last_step(table));
  return static_cast<int>(std::lround(steps));
}

}  // namespace

Ratio ratio_for(double scale) {
  return scale >= 1 ? Ratio{steps_of(scale, kEnlargeSteps), kZoomBase} : Ratio{kZoomBase, steps_of(1 / scale, kReduceSteps)};
}

int scaled_length(int pixels, Ratio ratio) {
  const int64_t length = (int64_t{pixels} * ratio.viewport * 2 + ratio.window) / (int64_t{ratio.window} * 2);
  return static_cast<int>(std::max<int64_t>(length, 1));
}

int pixel_under(int distance, Ratio ratio) {
  const int64_t along = int64_t{distance} * ratio.window;
  return static_cast<int>((along < 0 ? along - ratio.viewport + 1 : along) / ratio.viewport);
}

int percent(double scale) { return std::max(1, static_cast<int>(std::lround(scale * 100))); }

Bars bars_needed(Extent picture, Extent window, Extent bar) {
  Bars bars{picture.width > window.width, picture.height > window.height};
  if (bars.horizontal) bars.vertical = picture.height > window.height - bar.height;
  if (bars.vertical) bars.horizontal = picture.width > window.width - bar.width;
  return bars;
}

bool needs_bar_when_as_wide(Extent picture, Extent window) {
  return int64_t{picture.height} * window.width > int64_t{window.height} * picture.width;
}

int scroll_step(Ratio ratio) {
  constexpr int kMost = 16;
  const int of_library = std::max(ratio.viewport % kMost, 1);
  const int of_pixels = ratio.viewport / std::gcd(ratio.viewport, ratio.window);
  const int64_t both = std::lcm(int64_t{of_library}, int64_t{of_pixels});
  return both <= kMost ? static_cast<int>(both) : of_library;
}

int position_in_view(const ScrolledAxis& axis, int wanted) {
  if (axis.picture <= axis.window) return axis.position;
  if (wanted <= axis.first) return axis.first;
  const double steps = (std::min(wanted, axis.last()) - axis.position) / static_cast<double>(axis.step);
  const double whole = wanted >= axis.last() ? std::ceil(steps) : std::round(steps);
  return axis.position + static_cast<int>(whole) * axis.step;
}

int WheelSteps::turn(int units) {
  rest_ += units * per_notch_;
  const int steps = rest_ / kWheelNotch;
  rest_ %= kWheelNotch;
  return steps;
}

}  // namespace vorel::viewer
