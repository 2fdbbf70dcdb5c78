#include "display/zoom_ratio.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "core/saturate.h"
#include "frame/thread_context.h"

namespace vorel::display {
namespace {

const PerThread<ZoomTables> zoom_tables;

constexpr int kMostSteps = IMG_ZOOM_TABLE_ENTRIES - 1;

std::span<const int> values_of(const int (&table)[IMG_ZOOM_TABLE_ENTRIES]) {
  return std::span(table).subspan(1, static_cast<size_t>(std::clamp(table[0], 1, kMostSteps)));
}

int product_quotient(int a, int b, int divisor) { return saturated(int64_t{a} * b / divisor); }

// Converts a ratio to one with the base on one side, as closely as whole numbers allow.
Ratio with_base(Ratio ratio, int base) {
  if (ratio.viewport == base || ratio.window == base) return ratio;
  if (ratio.viewport == 0 || ratio.window == 0) return {base, base};
  if (ratio.viewport <= ratio.window) return {base, product_quotient(ratio.window, base, ratio.viewport)};
  return {product_quotient(ratio.viewport, base, ratio.window), base};
}

int next_value(std::span<const int> values, int value) {
  const auto found = std::ranges::find_if(values, [&](int step) { return step >= value; });
  if (found == values.end()) return values.back();
  return *found == value && found + 1 != values.end() ? found[1] : *found;
}

int previous_value(std::span<const int> values, int value) {
  const auto found = std::find_if(values.rbegin(), values.rend(), [&](int step) { return step <= value; });
  if (found == values.rend()) return values.front();
  return *found == value && found + 1 != values.rend() ? found[1] : *found;
}

int increment(int value) {
  if (value < 10) return 1;
  if (value < 30) return 2;
  return product_quotient(value, 5, 100);
}

// A quirk that is kept: the result can exceed the last step once.
int increased(int value, std::span<const int> values) {
  if (value >= values.back()) return values.back();
  return saturated(int64_t{value} + increment(value));
}

int decreased(int value, int base) { return value <= base ? base : value - increment(value); }

Ratio step_larger(Ratio ratio, const ZoomSteps& steps) {
  if (ratio.window == steps.base) return {next_value(steps.enlarge, ratio.viewport), ratio.window};
  if (ratio.viewport == steps.base) return {ratio.viewport, previous_value(steps.reduce, ratio.window)};
  return ratio;
}

Ratio step_smaller(Ratio ratio, const ZoomSteps& steps) {
  if (ratio.viewport == steps.base) return {ratio.viewport, next_value(steps.reduce, ratio.window)};
  if (ratio.window == steps.base) return {previous_value(steps.enlarge, ratio.viewport), ratio.window};
  return ratio;
}

Ratio little_larger(Ratio ratio, const ZoomSteps& steps) {
  if (ratio.window != steps.base) return {ratio.viewport, decreased(ratio.window, steps.base)};
  return {increased(ratio.viewport, steps.enlarge), ratio.window};
}

Ratio little_smaller(Ratio ratio, const ZoomSteps& steps) {
  if (ratio.viewport == steps.base) return {ratio.viewport, increased(ratio.window, steps.reduce)};
  if (ratio.window == steps.base) return {decreased(ratio.viewport, steps.base), ratio.window};
  return ratio;
}

double extent_ratio(int64_t a, int64_t b) { return static_cast<double>(a) / static_cast<double>(b); }

// The ratio at which a band fills the client area, in single precision, capped. A band without extent gives the cap.
float capped_ratio(int viewport, int window, int64_t client, int64_t band) {
  constexpr float kMost = 5.0f;
  const float now = window == 0 ? 1.0f : static_cast<float>(viewport) / static_cast<float>(window);
  const float ratio = now * static_cast<float>(client) / static_cast<float>(band);
  return ratio < kMost ? ratio : kMost;  // the cap for NaN too
}

}  // namespace

ZoomTables& thread_zoom_tables() { return *zoom_tables; }

ZoomSteps zoom_steps(const ZoomTables& tables) { return {tables.base, values_of(tables.enlarge), values_of(tables.reduce)}; }

bool is_step_table(std::span<const int, IMG_ZOOM_TABLE_ENTRIES> table, int base) {
  if (table[0] < 1 || table[0] > kMostSteps || table[1] != base) return false;
  const auto values = table.subspan(1, static_cast<size_t>(table[0]));
  return std::ranges::adjacent_find(values, std::greater_equal{}) == values.end();
}

ZoomAction zoom_action(int mode) {
  const int kind = mode & ~0xF;
  const int action = mode & 0xF;
  const bool is_known = (kind == kZoomByMouse || kind == kZoomWithoutMouse) && action >= 1 && action <= 5;
  return is_known ? static_cast<ZoomAction>(action) : ZoomAction::kKeep;
}

Ratio stepped(Ratio ratio, ZoomAction action, const ZoomSteps& steps) {
  switch (action) {
    case ZoomAction::kKeep: return ratio;
    case ZoomAction::kStepLarger: return step_larger(with_base(ratio, steps.base), steps);
    case ZoomAction::kStepSmaller: return step_smaller(with_base(ratio, steps.base), steps);
    case ZoomAction::kLittleLarger: return little_larger(ratio, steps);
    case ZoomAction::kLittleSmaller: return little_smaller(ratio, steps);
  }
  return ratio;
}

Ratio filling(const Box& rectangle, const Box& client, int base) {
  const auto times = [&](int64_t width, int64_t height) {
    return std::min(extent_ratio(client.width(), width), extent_ratio(client.height(), height));
  };
  double scale = times(rectangle.width(), rectangle.height());
  if (std::isinf(scale)) scale = times(1, 1);  // a rectangle of less than an image pixel
  if (!(scale > 0)) return {base, base};
  if (scale >= 1) return {saturated(base * scale + 0.5), base};
  return {base, saturated(base / scale + 0.5)};
}

Point corner_around(Point centre, const Box& client) {
  return {saturated(centre.x - client.width() / 2), saturated(centre.y - client.height() / 2)};
}

bool is_drag(Point anchor, Point mouse) {
  constexpr int64_t kLeast = 6;
  return std::abs(int64_t{mouse.x} - anchor.x) >= kLeast && std::abs(int64_t{mouse.y} - anchor.y) >= kLeast;
}

Box ordered(Point a, Point b) { return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)}; }

int filling_hundredths(std::span<const int, 4> zoom, const Box& band, const Box& client) {
  const float across = capped_ratio(zoom[0], zoom[1], client.width(), band.width());
  const float down = capped_ratio(zoom[2], zoom[3], client.height(), band.height());
  return static_cast<int>(std::max(std::min(across, down), -2e7f) * 100);
}

}  // namespace vorel::display
