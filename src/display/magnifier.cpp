#include "display/magnifier.h"

#include <algorithm>

#include "dib/device_bitmap.h"

namespace vorel::display {
namespace {

// The GDI objects are deleted when the lens stops or the module is unloaded.
struct ImgMagnifier {
  bool active = false;
  HWND window = nullptr;
  OwnedBitmap lens;      // keeps the size that was set when the lens started
  OwnedBitmap snapshot;  // the client area when the lens started
  HPALETTE palette = nullptr;
  HCURSOR saved_cursor = nullptr;
  Size size = {180, 80};
  Point last;  // the last position of the lens
};

ImgMagnifier magnifier;

Size size_of(const OwnedBitmap& bitmap) {
  const BITMAP facts = describe(bitmap.get()).value_or(BITMAP{});
  return {static_cast<int>(facts.bmWidth), static_cast<int>(facts.bmHeight)};
}

// A bitmap selected into a memory context, with the palette selected into it and into the other context.
class SelectedBitmap {
 public:
  SelectedBitmap(HDC other, HBITMAP bitmap)
      : memory_(other),
        selection_(memory_.get(), bitmap),
        palette_(memory_.get(), magnifier.palette, PaletteUse::kBackground),
        other_palette_(other, magnifier.palette, PaletteUse::kBackground) {}
  HDC dc() const { return memory_.get(); }

 private:
  MemoryDc memory_;
  Selection selection_;
  PaletteSelection palette_, other_palette_;
};

OwnedBitmap snapshot_of(HWND window) {
  const Box client = client_of(window);
  const WindowDc dc(window);
  const int width = static_cast<int>(client.width()), height = static_cast<int>(client.height());
  OwnedBitmap snapshot(CreateCompatibleBitmap(dc.get(), width, height));
  const SavedDc saved(dc.get());
  unmap(dc.get());
  const SelectedBitmap copy(dc.get(), snapshot.get());
  BitBlt(copy.dc(), 0, 0, width, height, dc.get(), 0, 0, SRCCOPY);
  return snapshot;
}

// Restores the area under the last lens position from the snapshot.
void restore_covered(HDC dc) {
  const Size size = size_of(magnifier.lens);
  const SelectedBitmap copy(dc, magnifier.snapshot.get());
  BitBlt(dc, magnifier.last.x, magnifier.last.y, size.width, size.height, copy.dc(), magnifier.last.x, magnifier.last.y,
         SRCCOPY);
}

void draw_line(HDC dc, HGDIOBJ pen, std::initializer_list<Point> points) {
  const Selection selection(dc, pen);
  MoveToEx(dc, points.begin()->x, points.begin()->y, nullptr);
  for (const Point* point = points.begin() + 1; point != points.end(); ++point) LineTo(dc, point->x, point->y);
}

void draw_outline(HDC dc, HGDIOBJ pen, int inset, Size size) {
  const int right = size.width - 1 - inset, bottom = size.height - 1 - inset;
  draw_line(dc, pen, {{inset, inset}, {right, inset}, {right, bottom}, {inset, bottom}, {inset, inset}});
}

// A one-pixel ring: `first` at the top and left, `second` at the right and bottom.
void draw_ring(HDC dc, HGDIOBJ first, HGDIOBJ second, int inset, Size size) {
  const int right = size.width - 1 - inset, bottom = size.height - 1 - inset;
  draw_line(dc, first, {{inset, inset}, {right, inset}});
  draw_line(dc, second, {{right, inset}, {right, bottom}, {inset - 1, bottom}});
  draw_line(dc, first, {{inset, bottom - 1}, {inset, inset}});
}

void draw_frame(HDC dc, Size size) {
  const OwnedPen white(CreatePen(PS_SOLID, 1, RGB(0xFF, 0xFF, 0xFF)));
  const OwnedPen grey(CreatePen(PS_SOLID, 1, RGB(0x80, 0x80, 0x80)));
  HGDIOBJ black = GetStockObject(BLACK_PEN);
  draw_outline(dc, black, 0, size);
  draw_outline(dc, black, 3, size);
  draw_ring(dc, white.get(), grey.get(), 1, size);
  draw_ring(dc, grey.get(), white.get(), 2, size);
}

// The rectangle clipped to the bitmap; may be empty.
Box inside_bitmap(HBITMAP bitmap, int x, int y, int width, int height) {
  const BITMAP facts = describe(bitmap).value_or(BITMAP{});
  const int64_t right = std::min<int64_t>(int64_t{x} + width, facts.bmWidth);
  const int64_t bottom = std::min<int64_t>(int64_t{y} + height, facts.bmHeight);
  return {std::max(x, 0), std::max(y, 0), static_cast<int>(std::max<int64_t>(right, 0)),
          static_cast<int>(std::max<int64_t>(bottom, 0))};
}

// Copies a part of the source to its place in the lens; the mapping of the lens context enlarges it. If the device refuses
// the size, smaller sizes are tried.
void copy_part(HDC lens, HDC source, Box part, Point corner) {
  const int to_x = part.left - corner.x, to_y = part.top - corner.y;
  const auto copy = [&](int width, int height, DWORD operation) {
    return BitBlt(lens, to_x, to_y, width, height, source, part.left, part.top, operation) != FALSE;
  };
  const auto width = [&] { return static_cast<int>(part.width()); };
  const auto height = [&] { return static_cast<int>(part.height()); };
  if (copy(width(), height(), SRCCOPY)) return;
  while (part.right > part.left && !copy(width(), 1, BLACKNESS)) --part.right;
  while (part.bottom > part.top && !copy(1, height(), SRCCOPY)) --part.bottom;
  copy(width(), height(), SRCCOPY);
}

void fill_mapped(HDC lens, HBITMAP source, int x, int y, int width, int height) {
  const Box part = inside_bitmap(source, x, y, width, height);
  if (width < 1 || height < 1 || part.is_empty()) return;
  const SavedDc saved(lens);
  apply(lens, {{width, std::max(magnifier.size.width, 1)}, {height, std::max(magnifier.size.height, 1)}});
  const SelectedBitmap picture(lens, source);
  copy_part(lens, picture.dc(), part, {x, y});
}

}  // namespace

Size lens_size() { return magnifier.size; }
void set_lens_size(Size size) { magnifier.size = size; }

void start_lens(HWND window, HPALETTE palette) {
  if (!IsWindow(window)) return;
  magnifier.window = window;
  magnifier.palette = palette;
  UpdateWindow(window);
  magnifier.snapshot = snapshot_of(window);
  HCURSOR shown = SetCursor(nullptr);
  if (!magnifier.active) magnifier.saved_cursor = shown;
  magnifier.active = true;
  const WindowDc dc(window);
  magnifier.lens = OwnedBitmap(CreateCompatibleBitmap(dc.get(), magnifier.size.width, magnifier.size.height));
}

void stop_lens() {
  if (!magnifier.active) return;
  magnifier.active = false;
  {
    const WindowDc dc(magnifier.window);
    const SavedDc saved(dc.get());
    unmap(dc.get());
    restore_covered(dc.get());
  }
  SetCursor(magnifier.saved_cursor);
  magnifier.snapshot = {};
  magnifier.lens = {};
  magnifier.palette = nullptr;
}

void fill_lens(HBITMAP source, int x, int y, int width, int height) {
  if (!magnifier.active) return;
  const WindowDc window(magnifier.window);
  const SelectedBitmap lens(window.get(), magnifier.lens.get());
  const Size size = size_of(magnifier.lens);
  {
    const Selection brush(lens.dc(), GetStockObject(GRAY_BRUSH));
    PatBlt(lens.dc(), 0, 0, size.width, size.height, PATCOPY);
  }
  fill_mapped(lens.dc(), source, x, y, width, height);
  draw_frame(lens.dc(), magnifier.size);
}

void place_lens(HWND window, Point corner) {
  if (!magnifier.active) return;
  const WindowDc dc(window);
  const SavedDc unmapped(dc.get());
  unmap(dc.get());
  {
    const SavedDc unclipped(dc.get());
    const Size size = size_of(magnifier.lens);
    ExcludeClipRect(dc.get(), corner.x, corner.y, corner.x + size.width, corner.y + size.height);
    restore_covered(dc.get());
  }
  const Size size = size_of(magnifier.lens);
  const SelectedBitmap lens(dc.get(), magnifier.lens.get());
  BitBlt(dc.get(), corner.x, corner.y, size.width, size.height, lens.dc(), 0, 0, SRCCOPY);
  magnifier.last = corner;
}

}  // namespace vorel::display
