#include "display/window_display.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <tuple>

#include "dib/device_bitmap.h"
#include "dib/device_palette.h"
#include "frame/thread_context.h"

namespace vorel::display {
namespace {

// Callers compiled elsewhere hold states, so their layout must not change.
constexpr size_t kHandle = sizeof(HANDLE), kClearedBytes = kHandle == 4 ? 142 : 154;
static_assert(offsetof(ImgDisplayState, palette) == 120 && offsetof(ImgDisplayState, dib) == 120 + kHandle &&
              offsetof(ImgDisplayState, bitmap) == 120 + 2 * kHandle &&
              offsetof(ImgDisplayState, ownership) == 120 + 3 * kHandle);
static_assert(offsetof(ImgDisplayLayout, flags) == 16 && offsetof(ImgDisplayLayout, hScrollPos) == 36 &&
              offsetof(ImgDisplayLayout, centreOffsetX) == 60 && offsetof(ImgDisplayLayout, clientLeft) == 80 &&
              offsetof(ImgDisplayLayout, imageDpiX) == 112);
static_assert(sizeof(ImgDisplayState) >= kClearedBytes);

constexpr WORD kOwnsBitmap = 1, kOwnsPalette = 2;

void delete_owned_bitmap(ImgDisplayState& state) {
  if (state.ownership & kOwnsBitmap) DeleteObject(state.bitmap);
  state.bitmap = nullptr;
  state.ownership = static_cast<WORD>(state.ownership & ~kOwnsBitmap);
}

void delete_owned_palette(ImgDisplayState& state) {
  if (state.ownership & kOwnsPalette) DeleteObject(state.palette);
  state.palette = nullptr;
  state.ownership = static_cast<WORD>(state.ownership & ~kOwnsPalette);
}

void update_bar(UINT without, const ImgDisplayLayout& layout, HWND window, int bar, int least, int most,
                const int& position) {
  if (layout.flags & without) {
    SetScrollRange(window, bar, -1, -1, TRUE);
    return;
  }
  SetScrollRange(window, bar, least, most, FALSE);
  // Read after the range is set: a bar that appears or disappears resizes the window, which changes the layout.
  SetScrollPos(window, bar, position, TRUE);
}

void update_scroll_bar(HWND window, Direction direction, const ImgDisplayLayout& layout) {
  if (window == nullptr) return;
  if (direction == Direction::kHorizontal) {
    update_bar(IMG_DISPLAY_NO_HSCROLL, layout, window, SB_HORZ, layout.hScrollMin, layout.hScrollMax, layout.hScrollPos);
  } else {
    update_bar(IMG_DISPLAY_NO_VSCROLL, layout, window, SB_VERT, layout.vScrollMin, layout.vScrollMax, layout.vScrollPos);
  }
}

void update_scroll_bars(HWND window, const ImgDisplayLayout& layout) {
  update_scroll_bar(window, Direction::kHorizontal, layout);
  update_scroll_bar(window, Direction::kVertical, layout);
}

void set_client(ImgDisplayLayout& layout, const Box& client) {
  std::tie(layout.clientLeft, layout.clientTop, layout.clientRight, layout.clientBottom) =
      std::tuple(client.left, client.top, client.right, client.bottom);
}

// Hides the bars before a fitted or stretched image is laid out, so that it gets the whole window.
void hide_bars_of_fitted(HWND window, UINT flags, ImgDisplayLayout& layout) {
  if (!(flags & (IMG_DISPLAY_FIT | IMG_DISPLAY_STRETCH))) return;
  layout.flags = flags;
  layout.hScrollMin = layout.vScrollMin = layout.hScrollMax = layout.vScrollMax = -1;
  update_scroll_bars(window, layout);
}

// Fills in everything that does not depend on the image.
void fill_layout(HWND window, const DisplayRequest& request, ImgDisplayLayout& layout) {
  const WindowDc dc(window);
  layout.screenDpiX = GetDeviceCaps(dc.get(), LOGPIXELSX);
  layout.screenDpiY = GetDeviceCaps(dc.get(), LOGPIXELSY);
  layout.flags = request.flags;
  constexpr int kOneToOne[4] = {1, 1, 1, 1};
  const int* zoom = request.zoom != nullptr ? request.zoom : kOneToOne;
  std::tie(layout.zoomViewportX, layout.zoomWindowX, layout.zoomViewportY, layout.zoomWindowY) =
      std::tuple(zoom[0], zoom[1], zoom[2], zoom[3]);
  set_client(layout, client_of(window));
}

void set_image(ImgDisplayLayout& layout, int width, int height, UINT bits, Point dpi) {
  layout.imageWidth = width;
  layout.imageHeight = height;
  layout.bitsPerPixel = bits;
  layout.imageDpiX = dpi.x < 1 ? layout.screenDpiX : dpi.x;
  layout.imageDpiY = dpi.y < 1 ? layout.screenDpiY : dpi.y;
}

void lay_out(ImgDisplayLayout& layout) { set_scroll_ranges(layout, set_up_mapping(layout, Offsets::kReset)); }

// Sets positions and scroll bars for a new image and invalidates the window.
void begin_showing(HWND window, int* view, ImgDisplayLayout& layout) {
  const Mapping mapping = set_up_mapping(layout, Offsets::kReset);
  if (view != nullptr) bring_to_corner(layout, mapping, {view[0], view[1]});
  lay_out(layout);
  if (!clamp_positions(layout)) lay_out(layout);
  update_scroll_bars(window, layout);
  if (window != nullptr) InvalidateRect(window, nullptr, TRUE);
  if (view == nullptr) return;
  view[0] = layout.originLogicalX;
  view[1] = layout.originLogicalY;
  view[2] = layout.imageOriginDeviceX;
  view[3] = layout.imageOriginDeviceY;
}

// Keeps the thread's error code: displays never set it.
HBITMAP bitmap_or_null(const LockedDib& dib) {
  const int32_t code = thread_context().error_code;
  auto bitmap = bitmap_of(dib);
  thread_context().error_code = code;
  return bitmap ? bitmap->release() : nullptr;
}

HPALETTE palette_or_null(const LockedDib& dib) {
  auto palette = palette_of(dib);
  return palette ? palette->release() : nullptr;
}

void take_dib(const LockedDib& dib, ImgDisplayState& state) {
  const DibHeader& header = dib.header();
  set_image(state.layout, header.width, header.height, header.depth,
            {dots_per_inch(header.x_per_metre), dots_per_inch(header.y_per_metre)});
  state.palette = palette_or_null(dib);
  if (state.palette != nullptr) state.ownership |= kOwnsPalette;
  if (!(state.layout.flags & IMG_DISPLAY_AS_BITMAP)) return;
  state.bitmap = bitmap_or_null(dib);
  if (state.bitmap != nullptr) state.ownership |= kOwnsBitmap;
  state.layout.flags &= ~IMG_DISPLAY_AS_BITMAP;
}

Rect area_of(const Box& box) { return {box.left, box.top, static_cast<int>(box.width()), static_cast<int>(box.height())}; }

void draw_bitmap(HDC dc, HBITMAP bitmap, Rect to, Rect from, DWORD operation) {
  const MemoryDc memory(dc);
  if (!memory) return;
  const Selection selection(memory.get(), bitmap);
  StretchBlt(dc, to.x, to.y, to.width, to.height, memory.get(), from.x, from.y, from.width, from.height, operation);
}

// Draws nothing if the block holds a picture of another size than at the start.
void draw_dib(HDC dc, HGLOBAL dib, const ImgDisplayLayout& layout, Rect to, Rect from, DWORD operation) {
  const auto locked = LockedDib::lock(dib);
  if (!locked || locked->header().width != layout.imageWidth || locked->header().height != layout.imageHeight) return;
  if (const auto whole = DeviceDib::of(*locked)) whole->stretch(dc, to, from, operation);
}

// DIBs are drawn in whole rows, bitmaps only in their visible part.
bool draws_whole_rows(const ImgDisplayState& state) { return state.bitmap == nullptr; }

// Maps with the library's own arithmetic, which also determines the area around the image; the context stays in pixels.
void draw_image(HDC dc, ImgDisplayState& state, const Box& painted) {
  ImgDisplayLayout& layout = state.layout;
  const Mapping mapping = set_up_mapping(layout, Offsets::kReset);
  set_scroll_ranges(layout, mapping);
  unmap(dc);
  if (layout.bitsPerPixel == 1) {
    SetStretchBltMode(dc, BLACKONWHITE);
    SetBkColor(dc, RGB(255, 255, 255));
  } else {
    SetStretchBltMode(dc, COLORONCOLOR);
  }
  SetBkMode(dc, OPAQUE);
  const PaletteSelection selection(dc, state.palette, PaletteUse::kBackground);
  const Box part = visible_part(layout, mapping, painted, draws_whole_rows(state));
  if (part.is_empty()) return;
  const Rect to = area_of(mapping.to_device(part)), from = area_of(part);
  const DWORD operation = layout.flags & IMG_DISPLAY_INVERTED ? NOTSRCCOPY : SRCCOPY;
  if (state.bitmap != nullptr) {
    draw_bitmap(dc, state.bitmap, to, from, operation);
  } else {
    draw_dib(dc, state.dib, layout, to, from, operation);
  }
}

// A window class has a brush, or the number of a system colour plus 1.
HBRUSH class_brush(HWND window) {
  const ULONG_PTR brush = GetClassLongPtrA(window, GCLP_HBRBACKGROUND);
  constexpr ULONG_PTR kMostColors = COLOR_MENUBAR + 1;
  return brush >= 1 && brush <= kMostColors ? GetSysColorBrush(static_cast<int>(brush - 1))
                                            : reinterpret_cast<HBRUSH>(brush);
}

void fill_around(HDC dc, const Box& image, const Box& painted) {
  unmap(dc);
  ExcludeClipRect(dc, image.left, image.top, image.right, image.bottom);
  PatBlt(dc, painted.left, painted.top, static_cast<int>(painted.width() + 1), static_cast<int>(painted.height() + 1),
         PATCOPY);
}

ScrollAxis axis_of(const ImgDisplayLayout& layout, const Mapping& mapping, Direction direction) {
  const Box client = client_box(layout);
  if (direction == Direction::kHorizontal)
    return {layout.hScrollMin, layout.hScrollMax, layout.hScrollPos, scroll_unit(mapping.x.viewport),
            static_cast<int>(client.width())};
  return {layout.vScrollMin, layout.vScrollMax, layout.vScrollPos, scroll_unit(mapping.y.viewport),
          static_cast<int>(client.height())};
}

// The strip exposed when the content moves down or right (positive) or up or left (negative).
Box row_strip(const Box& client, int offset) {
  return offset > 0 ? Box{client.left, client.top, client.right, std::min(client.top + offset, client.bottom)}
                    : Box{client.left, std::max(client.bottom + offset, client.top), client.right, client.bottom};
}
Box column_strip(const Box& client, int offset) {
  return offset > 0 ? Box{client.left, client.top, std::min(client.left + offset, client.right), client.bottom}
                    : Box{std::max(client.right + offset, client.left), client.top, client.right, client.bottom};
}

// The area exposed by scrolling, and its bounding box.
struct Exposed {
  OwnedRegion region;
  Box box;
};

// Invalid parts move with the content around them and must be painted at their new place too.
void invalidate_moved(HWND window, Point offset) {
  const OwnedRegion unpainted(CreateRectRgn(0, 0, 0, 0));
  GetUpdateRgn(window, unpainted.get(), FALSE);
  OffsetRgn(unpainted.get(), offset.x, offset.y);
  InvalidateRgn(window, unpainted.get(), FALSE);
}

Exposed scroll_content(HWND window, const Box& client, Point offset) {
  const WindowDc dc(window);
  const SavedDc saved(dc.get());
  unmap(dc.get());
  Exposed exposed = {OwnedRegion(CreateRectRgn(0, 0, 0, 0)), {}};
  const RECT area = rect_of(client);
  RECT box{};
  ScrollDC(dc.get(), offset.x, offset.y, &area, &area, exposed.region.get(), &box);
  exposed.box = box_of(box);
  invalidate_moved(window, offset);
  return exposed;
}

const PerThread<int> is_resizing;

// Marks the thread as resizing a display, for a scope.
class [[nodiscard]] Resizing {
 public:
  Resizing() { *is_resizing = 1; }
  Resizing(const Resizing&) = delete;
  Resizing& operator=(const Resizing&) = delete;
  ~Resizing() { *is_resizing = 0; }
};

// The distance that content moves when a scroll position changes, limited to more than any window shows.
int distance_between(int before, int after) {
  constexpr int64_t kFar = 1 << 20;
  return static_cast<int>(std::clamp(int64_t{before} - after, -kFar, kFar));
}

// Whether painting at the new positions gives the old content, moved. It does not if the positions differ by a fraction of
// an image pixel, if painting resets them, or if groups of pixels are cut off.
bool content_moves_by(Point offset, const Mapping& before, const ImgDisplayState& state) {
  ImgDisplayLayout layout = state.layout;
  const bool whole_rows = draws_whole_rows(state);
  const Mapping after = set_up_mapping(layout, Offsets::kReset);
  return is_moved_by(offset, before, after) && shows_whole_groups(layout, before, whole_rows) &&
         shows_whole_groups(layout, after, whole_rows);
}

void paint(HWND window, const Box& box) {
  const RECT rect = rect_of(box);
  InvalidateRect(window, &rect, FALSE);
  UpdateWindow(window);
}

void paint_strip(HWND window, HRGN unpainted, const Box& strip) {
  if (strip.is_empty()) return;
  paint(window, strip);
  const RECT rect = rect_of(strip);
  const OwnedRegion painted(CreateRectRgnIndirect(&rect));
  CombineRgn(unpainted, unpainted, painted.get(), RGN_DIFF);
}

void scroll_by_strips(HWND window, const Box& client, Point offset) {
  const Exposed exposed = scroll_content(window, client, offset);
  HRGN region = exposed.region.get();
  if (offset.y != 0) paint_strip(window, region, row_strip(client, offset.y));
  if (offset.x != 0) paint_strip(window, region, column_strip(client, offset.x));
  InvalidateRgn(window, region, FALSE);  // the rest: its content was hidden by other windows
}

}  // namespace

void clear(ImgDisplayState& state) { std::memset(static_cast<void*>(&state), 0, kClearedBytes); }

void start_display(HWND window, HBITMAP bitmap, HPALETTE palette, const int* dpi, const DisplayRequest& request,
                   ImgDisplayState& state) {
  hide_bars_of_fitted(window, request.flags, state.layout);
  fill_layout(window, request, state.layout);
  if (bitmap != state.bitmap) delete_owned_bitmap(state);
  if (palette != state.palette) delete_owned_palette(state);
  state.dib = nullptr;
  state.bitmap = bitmap;
  state.palette = palette;
  const BITMAP facts = describe(bitmap).value_or(BITMAP{});
  set_image(state.layout, static_cast<int>(facts.bmWidth), static_cast<int>(facts.bmHeight),
            UINT{facts.bmPlanes} * facts.bmBitsPixel, dpi != nullptr ? Point{dpi[0], dpi[1]} : Point{});
  begin_showing(window, request.view, state.layout);
}

void start_display(HWND window, HGLOBAL dib, const DisplayRequest& request, ImgDisplayState& state) {
  hide_bars_of_fitted(window, request.flags, state.layout);
  fill_layout(window, request, state.layout);
  delete_owned_bitmap(state);
  delete_owned_palette(state);
  state.dib = dib;
  if (const auto locked = LockedDib::lock(dib)) {
    take_dib(*locked, state);
  } else {
    set_image(state.layout, 0, 0, 0, {});
  }
  state.layout.hScrollPos = state.layout.vScrollPos = 0;
  begin_showing(window, request.view, state.layout);
}

void follow_size(HWND window, ImgDisplayState& state) {
  const Resizing resizing;
  set_client(state.layout, client_of(window));
  lay_out(state.layout);
  update_scroll_bars(window, state.layout);
}

void follow_scroll(HWND window, Direction direction, ScrollCode code, uint16_t word, ImgDisplayState& state) {
  ImgDisplayLayout& layout = state.layout;
  const Mapping before = set_up_mapping(layout, Offsets::kKeep);
  const ScrollAxis axis = axis_of(layout, before, direction);
  const int position = scrolled(axis, code, word);
  if (position == axis.position) return;
  const bool across = direction == Direction::kHorizontal;
  (across ? layout.hScrollPos : layout.vScrollPos) = position;
  const int distance = distance_between(axis.position, position);
  const Point offset = {across ? distance : 0, across ? 0 : distance};
  const Box client = client_box(layout);
  const Box unpainted = content_moves_by(offset, before, state) ? scroll_content(window, client, offset).box : client;
  update_scroll_bar(window, direction, layout);
  paint(window, unpainted);
}

void scroll_to(HWND window, Point position, ImgDisplayState& state) {
  ImgDisplayLayout& layout = state.layout;
  const Mapping before = set_up_mapping(layout, Offsets::kKeep);
  const ScrollAxis across = axis_of(layout, before, Direction::kHorizontal);
  const ScrollAxis down = axis_of(layout, before, Direction::kVertical);
  layout.hScrollPos = snapped(across, position.x);
  layout.vScrollPos = snapped(down, position.y);
  const Point offset = {distance_between(across.position, layout.hScrollPos),
                        distance_between(down.position, layout.vScrollPos)};
  if (offset != Point{}) {
    const Box client = client_box(layout);
    if (content_moves_by(offset, before, state)) {
      scroll_by_strips(window, client, offset);
    } else {
      paint(window, client);
    }
  }
  update_scroll_bars(window, layout);
}

void paint_display(HWND window, const Painting& painting, ImgDisplayState& state) {
  const SavedDc saved(painting.dc());
  const Selection brush(painting.dc(), class_brush(window));
  const Mapping mapping = set_up_mapping(state.layout, Offsets::kReset);
  const bool is_drawn_in_parts = shows_whole_groups(state.layout, mapping, draws_whole_rows(state));
  draw_image(painting.dc(), state, is_drawn_in_parts ? painting.box() : client_box(state.layout));
  fill_around(painting.dc(), image_box(state.layout, mapping), painting.box());
}

void draw_display(HDC dc, ImgDisplayState& state) {
  const SavedDc saved(dc);
  unmap(dc);
  RECT clipping{};
  GetClipBox(dc, &clipping);
  draw_image(dc, state, box_of(clipping));
}

void end_display(ImgDisplayState& state) {
  if (state.ownership & kOwnsBitmap) delete_owned_bitmap(state);
  if (state.ownership & kOwnsPalette) delete_owned_palette(state);
}

}  // namespace vorel::display
