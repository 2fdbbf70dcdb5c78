#include "display/window_stateless_painting.h"

#include <algorithm>

#include "core/pixel.h"
#include "core/saturate.h"
#include "dib/device_bitmap.h"
#include "dib/device_palette.h"
#include "display/stateless_painting.h"
#include "geometry/dib_scaling.h"

namespace vorel::display {
namespace {

int low_memory = 0;

struct StatelessImage {
  int width = 0, height = 0;
  double x_dpi = 0, y_dpi = 0;  // 0 if the image does not state its resolution

  bool has_pixels() const { return width > 0 && height > 0; }
};

struct StatelessLayout {
  StatelessAxis x, y;
};

StatelessImage image_of(const LockedDib& dib) {
  const DibHeader& header = dib.header();
  return {header.width, header.height, exact_dots_per_inch(header.x_per_metre), exact_dots_per_inch(header.y_per_metre)};
}

StatelessLayout layout_of(HWND window, const StatelessImage& image, const int* zoom) {
  constexpr int kOneToOne[4] = {1, 1, 1, 1};
  if (zoom == nullptr) zoom = kOneToOne;
  const WindowDc dc(window);
  return {{image.width, stateless_scale(image.x_dpi, GetDeviceCaps(dc.get(), LOGPIXELSX), zoom[0], zoom[1])},
          {image.height, stateless_scale(image.y_dpi, GetDeviceCaps(dc.get(), LOGPIXELSY), zoom[2], zoom[3])}};
}

void measure_client(HWND window, StatelessLayout& layout) {
  const Box client = client_of(window);
  layout.x.client = static_cast<int>(client.width());
  layout.y.client = static_cast<int>(client.height());
}

// Shows or hides the scroll bars. Each change resizes the client area, so it is measured again.
StatelessLayout settled_layout(HWND window, const StatelessImage& image, const StatelessRequest& request) {
  StatelessLayout layout = layout_of(window, image, request.zoom);
  measure_client(window, layout);
  const bool is_fitted = (request.flags & IMG_DISPLAY_FIT) != 0;
  ShowScrollBar(window, SB_HORZ, !is_fitted && layout.x.needs_scroll_bar());
  measure_client(window, layout);
  ShowScrollBar(window, SB_VERT, !is_fitted && layout.y.needs_scroll_bar());
  measure_client(window, layout);
  if (is_fitted) {
    const StatelessFit fit = stateless_fit(layout.x, layout.y);
    layout.x.scale = fit.x;
    layout.y.scale = fit.y;
  }
  return layout;
}

// Calls draw(to, from) with the target in window pixels and the source in image pixels.
template <class Draw>
void paint_part(HWND window, const StatelessImage& image, const StatelessRequest& request, Draw draw) {
  if (!image.has_pixels()) return;
  const StatelessLayout layout = settled_layout(window, image, request);
  const StatelessPart x = stateless_part(layout.x, request.scroll != nullptr ? request.scroll[2] : 0);
  const StatelessPart y = stateless_part(layout.y, request.scroll != nullptr ? request.scroll[3] : 0);
  if (x.from_extent < 1 || y.from_extent < 1 || x.to_extent < 1 || y.to_extent < 1) return;
  draw(Rect{x.to, y.to, x.to_extent, y.to_extent}, Rect{x.from, y.from, x.from_extent, y.from_extent});
}

DWORD operation_of(const StatelessRequest& request) { return request.flags & IMG_DISPLAY_INVERTED ? NOTSRCCOPY : SRCCOPY; }

void prepare(HDC dc) {
  unmap(dc);
  SetStretchBltMode(dc, COLORONCOLOR);
}

bool is_scaled_here(const DibHeader& header) {
  return low_memory != 0 && with_depth(header.depth, [](auto) {}) && header.compression == Compression::kNone &&
         header.size == kHeaderBytes;
}

// Scales the visible part in memory and draws it. Returns false if that fails.
bool draw_scaled_here(HDC dc, const LockedDib& dib, Rect to, Rect from, DWORD operation) {
  auto seen = geometry::ScaleDIBRect(dib, from, {to.width, to.height});
  if (!seen) return false;
  const OwnedBlock block(seen->release());
  const auto locked = LockedDib::lock(block.get());
  const auto whole = locked ? DeviceDib::of(*locked) : std::nullopt;
  return whole && whole->stretch(dc, to, {0, 0, to.width, to.height}, operation);
}

void draw_part(HDC dc, const LockedDib& dib, Rect to, Rect from, DWORD operation) {
  if (is_scaled_here(dib.header()) && draw_scaled_here(dc, dib, to, from, operation)) return;
  if (const auto whole = DeviceDib::of(dib)) whole->stretch(dc, to, from, operation);
}

// Positions are in image pixels, so lines and pages are converted from window pixels.
ScrollAxis scroll_axis(const StatelessAxis& image, int end, int position) {
  constexpr int kLine = 8;
  const auto positions = [&](int pixels) { return std::max(saturated(pixels / image.scale + 0.5), 1); };
  return {0, end, position, 1, positions(image.client), positions(kLine)};
}

void set_bar(HWND window, int bar, int end, int position) {
  SetScrollRange(window, bar, end < 0 ? -1 : 0, end, FALSE);
  SetScrollPos(window, bar, position, TRUE);
}

}  // namespace

int low_memory_stretch() { return low_memory; }

int set_low_memory_stretch(int value) { return std::exchange(low_memory, value); }

void paint_stateless(HWND window, const Painting& painting, HBITMAP bitmap, HPALETTE palette,
                     const StatelessRequest& request) {
  const auto facts = describe(bitmap);
  if (!facts) return;
  const StatelessImage image = {static_cast<int>(facts->bmWidth), static_cast<int>(facts->bmHeight)};
  const SavedDc saved(painting.dc());
  prepare(painting.dc());
  paint_part(window, image, request, [&](Rect to, Rect from) {
    const PaletteSelection selection(painting.dc(), palette, PaletteUse::kBackground);
    const MemoryDc memory(painting.dc());
    if (!memory) return;
    const Selection selected(memory.get(), bitmap);
    StretchBlt(painting.dc(), to.x, to.y, to.width, to.height, memory.get(), from.x, from.y, from.width, from.height,
               operation_of(request));
  });
}

void paint_stateless(HWND window, const Painting& painting, HGLOBAL dib, const StatelessRequest& request) {
  const auto locked = LockedDib::lock(dib);
  if (!locked) return;
  const auto palette = palette_of(*locked);
  const SavedDc saved(painting.dc());
  prepare(painting.dc());
  paint_part(window, image_of(*locked), request, [&](Rect to, Rect from) {
    const PaletteSelection selection(painting.dc(), palette ? palette->get() : nullptr, PaletteUse::kBackground);
    draw_part(painting.dc(), *locked, to, from, operation_of(request));
  });
}

void set_stateless_ranges(HWND window, HGLOBAL dib, int* scroll, const StatelessRequest& request) {
  const auto locked = LockedDib::lock(dib);
  const StatelessImage image = locked ? image_of(*locked) : StatelessImage{};
  const StatelessLayout layout = image.has_pixels() ? settled_layout(window, image, request) : StatelessLayout{};
  const bool is_fitted = (request.flags & IMG_DISPLAY_FIT) != 0;
  scroll[0] = !is_fitted && layout.x.needs_scroll_bar() ? image.width : -1;
  scroll[1] = !is_fitted && layout.y.needs_scroll_bar() ? image.height : -1;
  scroll[2] = std::clamp(scroll[2], 0, std::max(scroll[0], 0));
  scroll[3] = std::clamp(scroll[3], 0, std::max(scroll[1], 0));
  set_bar(window, SB_HORZ, scroll[0], scroll[2]);
  set_bar(window, SB_VERT, scroll[1], scroll[3]);
}

void follow_stateless_scroll(HWND window, Direction direction, ScrollCode code, uint16_t word, HGLOBAL dib, int* scroll,
                             const StatelessRequest& request) {
  const bool across = direction == Direction::kHorizontal;
  const int end = scroll[across ? 0 : 1];
  int& position = scroll[across ? 2 : 3];
  const auto locked = LockedDib::lock(dib);
  if (end < 0 || !locked) return;
  StatelessLayout layout = layout_of(window, image_of(*locked), request.zoom);
  measure_client(window, layout);
  const ScrollAxis axis = scroll_axis(across ? layout.x : layout.y, end, position);
  position = scrolled(axis, code, word);
  if (position == axis.position) return;
  SetScrollPos(window, across ? SB_HORZ : SB_VERT, position, TRUE);
  InvalidateRect(window, nullptr, FALSE);
  UpdateWindow(window);
}

}  // namespace vorel::display
