#include "display/stateless_painting.h"

#include <algorithm>

#include "core/saturate.h"

namespace vorel::display {
namespace {

int rounded(double value) { return saturated(value + 0.5); }

}  // namespace

int StatelessAxis::displayed() const { return rounded(image * scale); }

int StatelessAxis::offset(int position) const {
  if (!needs_scroll_bar()) return 0;
  const int whole = displayed();
  const int excess = whole - client;
  const int wanted = rounded(static_cast<double>(excess) * rounded(position * scale) / whole);
  return std::clamp(wanted, 0, excess);
}

int StatelessAxis::source_at(int place) const { return std::clamp(rounded(place / scale), 0, image); }

double stateless_scale(double image_dpi, int screen_dpi, int viewport, int window) {
  const double natural = image_dpi > 0 ? screen_dpi / image_dpi : 1.0;
  return natural / (static_cast<double>(std::max(window, 1)) / std::max(viewport, 1));
}

StatelessPart stateless_part(const StatelessAxis& axis, int position) {
  if (axis.image < 1) return {};
  const int offset = axis.offset(position);
  const int end = static_cast<int>(std::min<int64_t>(axis.displayed(), int64_t{axis.client} + offset));
  // A single enlarged pixel can fill the window.
  const int from = std::min(axis.source_at(offset), axis.image - 1);
  return {0, end - offset, from, std::max(axis.source_at(end), from + 1) - from};
}

StatelessFit stateless_fit(const StatelessAxis& x, const StatelessAxis& y) {
  const double times = std::min(x.client / (x.image * x.scale), y.client / (y.image * y.scale));
  return {x.scale * times, y.scale * times};
}

double exact_dots_per_inch(int pixels_per_metre) { return pixels_per_metre * 0.025400052; }

}  // namespace vorel::display
