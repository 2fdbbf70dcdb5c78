#include "display/mapping.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "core/resolution.h"
#include "core/saturate.h"

namespace vorel::display {
namespace {

// value * multiplier / divisor, rounded to the nearest whole number, halves up. A 33-bit value and a 31-bit multiplier fit.
int64_t scaled(int64_t value, int multiplier, int divisor) {
  const int64_t product = value * multiplier;
  const int64_t below = product / divisor - (product % divisor < 0 ? 1 : 0);
  return below + ((product - below * divisor) * 2 >= divisor ? 1 : 0);
}

int positive(int value) { return std::max(value, 1); }

struct Extents {
  int64_t window_x = 1, window_y = 1, viewport_x = 1, viewport_y = 1;
};

// Halves all extents until both viewport extents are at most 16. Stops before a window extent becomes 0.
Extents reduced(Extents extents) {
  constexpr int64_t kMostViewport = 16;
  while (extents.viewport_x > kMostViewport || extents.viewport_y > kMostViewport) {
    const Extents half = {extents.window_x / 2, extents.window_y / 2, std::max<int64_t>(extents.viewport_x / 2, 1),
                          std::max<int64_t>(extents.viewport_y / 2, 1)};
    if (half.window_x == 0 || half.window_y == 0) break;
    extents = half;
  }
  return extents;
}

// Corrects the image's size for pixels that are not square on the screen.
void make_proportional(const ImgDisplayLayout& layout, int& width, int& height) {
  const double ratio = static_cast<double>(positive(layout.imageDpiX)) / positive(layout.imageDpiY) *
                       (static_cast<double>(positive(layout.screenDpiY)) / positive(layout.screenDpiX));
  if (ratio > 1) {
    width = saturated(width / ratio);
  } else {
    height = saturated(height * ratio);
  }
  width = positive(width);
  height = positive(height);
}

// Scales the image to the client area, keeping its proportions: to width and height, or to the width alone.
Extents fitted(const ImgDisplayLayout& layout, bool width_alone) {
  int width = layout.imageWidth, height = layout.imageHeight;
  make_proportional(layout, width, height);
  const Box client = client_box(layout);
  double scale = static_cast<double>(client.width()) / width;
  if (!width_alone) scale = std::min(scale, static_cast<double>(client.height()) / height);
  return {layout.imageWidth, layout.imageHeight, saturated(width * scale), saturated(height * scale)};
}

Extents zoomed(const ImgDisplayLayout& layout) {
  Extents extents = {positive(layout.zoomWindowX), positive(layout.zoomWindowY), positive(layout.zoomViewportX),
                     positive(layout.zoomViewportY)};
  if (layout.flags & IMG_DISPLAY_RESOLUTION) {
    extents.viewport_x *= positive(layout.screenDpiX);
    extents.viewport_y *= positive(layout.screenDpiY);
    extents.window_x *= positive(layout.imageDpiX);
    extents.window_y *= positive(layout.imageDpiY);
  }
  return reduced(extents);
}

Extents extents_of(const ImgDisplayLayout& layout) {
  if (layout.flags & IMG_DISPLAY_FIT) return fitted(layout, false);
  if (layout.flags & IMG_DISPLAY_STRETCH) {
    const Box client = client_box(layout);
    return {layout.imageWidth, layout.imageHeight, client.width(), client.height()};
  }
  if (layout.flags & IMG_DISPLAY_FIT_WIDTH) return fitted(layout, true);
  return zoomed(layout);
}

int extent(int64_t value) { return saturated(std::max<int64_t>(value, 1)); }

// Half of the space beside the image, as an offset: negative if the image is smaller than the client area.
int centring_offset(int64_t client, int from, int to) { return saturated(-((client - to + from) / 2)); }

int rounded_down(int value, int multiple) { return std::max(value - value % multiple, 0); }

int rounded_up(int value, int multiple, int most) {
  return static_cast<int>(std::min<int64_t>((int64_t{value} + multiple - 1) / multiple * multiple, most));
}

int clamped_position(int position, int least, int most, int centre_offset) {
  if (position == 0 && centre_offset < 0) return position;
  return std::max(std::min(position, most), least);
}

}  // namespace

Box Box::grown_by(int pixels) const {
  return {saturated(int64_t{left} - pixels), saturated(int64_t{top} - pixels), saturated(int64_t{right} + pixels),
          saturated(int64_t{bottom} + pixels)};
}

Box intersection(const Box& a, const Box& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

int AxisMapping::to_device(int logical) const { return saturated(scaled(int64_t{logical} - origin, viewport, window)); }
int AxisMapping::to_logical(int device) const { return saturated(scaled(device, window, viewport) + origin); }

Box Mapping::to_device(const Box& logical) const {
  return {x.to_device(logical.left), y.to_device(logical.top), x.to_device(logical.right), y.to_device(logical.bottom)};
}

Box Mapping::to_logical(const Box& device) const {
  return {x.to_logical(device.left), y.to_logical(device.top), x.to_logical(device.right), y.to_logical(device.bottom)};
}

Mapping Mapping::without_origin() const { return {{x.window, x.viewport, 0}, {y.window, y.viewport, 0}}; }

Mapping set_up_mapping(ImgDisplayLayout& layout, Offsets offsets) {
  const bool reset = offsets == Offsets::kReset;
  const Extents extents = extents_of(layout);
  Mapping mapping = {{extent(extents.window_x), extent(extents.viewport_x)},
                     {extent(extents.window_y), extent(extents.viewport_y)}};
  if (reset) {
    layout.centreOffsetX = layout.centreOffsetY = 0;
    if (layout.flags & IMG_DISPLAY_FIT) layout.hScrollPos = layout.vScrollPos = 0;
    if (layout.flags & IMG_DISPLAY_CENTRE) {
      const Box image = image_box(layout, mapping);
      const Box client = client_box(layout);
      layout.centreOffsetX = centring_offset(client.width(), image.left, image.right);
      layout.centreOffsetY = centring_offset(client.height(), image.top, image.bottom);
    }
  }
  const Point origin = mapping.to_logical(Point{saturated(int64_t{layout.centreOffsetX} + layout.hScrollPos),
                                                saturated(int64_t{layout.centreOffsetY} + layout.vScrollPos)});
  mapping.x.origin = origin.x;
  mapping.y.origin = origin.y;
  if (reset) std::tie(layout.windowOriginX, layout.windowOriginY) = std::pair(origin.x, origin.y);
  layout.originLogicalX = origin.x;
  layout.originLogicalY = origin.y;
  const Point image_origin = mapping.to_device(Point{});
  layout.imageOriginDeviceX = image_origin.x;
  layout.imageOriginDeviceY = image_origin.y;
  return mapping;
}

bool is_moved_by(Point offset, const Mapping& before, const Mapping& after) {
  const auto moves = [](int distance, const AxisMapping& from, const AxisMapping& to) {
    return from.window == to.window && from.viewport == to.viewport &&
           (int64_t{from.origin} - to.origin) * to.viewport == int64_t{distance} * to.window;
  };
  return moves(offset.x, before.x, after.x) && moves(offset.y, before.y, after.y);
}

void set_scroll_ranges(ImgDisplayLayout& layout, const Mapping& mapping) {
  const Box image = image_box(layout, mapping.without_origin());
  layout.hScrollMin = layout.hScrollMax = layout.vScrollMin = layout.vScrollMax = -1;
  if (image.right >= 1) {
    layout.hScrollMin = saturated(-int64_t{layout.centreOffsetX});
    layout.hScrollMax = saturated(int64_t{image.right} - layout.centreOffsetX);
  }
  if (image.bottom >= 1) {
    layout.vScrollMin = saturated(-int64_t{layout.centreOffsetY});
    layout.vScrollMax = saturated(int64_t{image.bottom} - layout.centreOffsetY);
  }
}

bool clamp_positions(ImgDisplayLayout& layout) {
  const Point before = {layout.hScrollPos, layout.vScrollPos};
  layout.hScrollPos = clamped_position(before.x, layout.hScrollMin, layout.hScrollMax, layout.centreOffsetX);
  layout.vScrollPos = clamped_position(before.y, layout.vScrollMin, layout.vScrollMax, layout.centreOffsetY);
  return before == Point{layout.hScrollPos, layout.vScrollPos};
}

void bring_to_corner(ImgDisplayLayout& layout, const Mapping& mapping, Point image_point) {
  const Point device = mapping.without_origin().to_device(image_point);
  layout.hScrollPos = saturated(int64_t{device.x} - layout.centreOffsetX);
  layout.vScrollPos = saturated(int64_t{device.y} - layout.centreOffsetY);
}

Box client_box(const ImgDisplayLayout& layout) {
  return {layout.clientLeft, layout.clientTop, layout.clientRight, layout.clientBottom};
}

Box image_box(const ImgDisplayLayout& layout, const Mapping& mapping) {
  return mapping.to_device(Box{0, 0, layout.imageWidth, layout.imageHeight});
}

Box visible_part(const ImgDisplayLayout& layout, const Mapping& mapping, const Box& painted, bool whole_rows) {
  const Box shown = intersection(image_box(layout, mapping), painted);
  if (shown.is_empty()) return {};
  Box part = mapping.to_logical(shown.grown_by(1)).grown_by(1);
  part = {rounded_down(part.left, mapping.x.window), rounded_down(part.top, mapping.y.window),
          rounded_up(part.right, mapping.x.window, layout.imageWidth),
          rounded_up(part.bottom, mapping.y.window, layout.imageHeight)};
  if (whole_rows) std::tie(part.left, part.right) = std::pair(0, layout.imageWidth);
  return part;
}

bool shows_whole_groups(const ImgDisplayLayout& layout, const Mapping& mapping, bool whole_rows) {
  const Box part = visible_part(layout, mapping, client_box(layout), whole_rows);
  return (whole_rows || part.right % mapping.x.window == 0) && part.bottom % mapping.y.window == 0;
}

int dots_per_inch(int pixels_per_metre) { return saturated(pixels_per_metre * kMetresPerInch + 0.5); }

}  // namespace vorel::display
