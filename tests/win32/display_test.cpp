// Windows that show images: client areas, scroll bars and contexts after each message.
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <tuple>

#include <vorel32.h>

#include "display/mapping.h"
#include "display/scrolling.h"
#include "display/stateless_painting.h"
#include "win32/support/window.h"

using namespace test;

namespace {

constexpr UINT kCentre = IMG_DISPLAY_CENTRE, kFit = IMG_DISPLAY_FIT, kStretch = IMG_DISPLAY_STRETCH,
               kWide = IMG_DISPLAY_FIT_WIDTH;
constexpr UINT kNoBars = IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL;

enum class Source { kDib, kBitmapOfDib, kBitmap };

// An image as a DIB and as a bitmap with its palette.
struct Image {
  Cells cells;
  Block dib = block_of(cells.dib());
  Object<HBITMAP> bitmap{ConvertDIBToBitmap(dib.get())};
  Object<HPALETTE> palette{CreateDIBPalette(dib.get())};
  explicit Image(const Cells& what) : cells(what) {}

  void start(DisplayWindow& window, Source source, UINT flags, const int* zoom = nullptr, int* view = nullptr,
             const int* dpi = nullptr) const {
    if (source == Source::kBitmap)
      DisplayStart(window.get(), bitmap.get(), palette.get(), dpi, view, zoom, flags, &window.state);
    else
      DisplayDIBStart(window.get(), dib.get(), view, zoom,
                      flags | (source == Source::kBitmapOfDib ? IMG_DISPLAY_AS_BITMAP : 0), &window.state);
  }
  void show(DisplayWindow& window, Source source, UINT flags, const int* zoom = nullptr, int* view = nullptr,
            const int* dpi = nullptr) const {
    start(window, source, flags, zoom, view, dpi);
    UpdateWindow(window.get());
  }
};

// One axis of an image in a window: device pixel `at` shows any of the image pixels first() to last().
struct Axis {
  int viewport, window, origin, size;
  int slack = viewport % window != 0 ? 1 : 0;  // the system's scaling by fractions may be a pixel off

  int floor_of(int at) const { return static_cast<int>(std::floor(1.0 * at * window / viewport)) + origin; }
  int first(int at) const { return std::clamp(floor_of(at) - slack, 0, size - 1); }
  int last(int at) const { return std::clamp(std::max(floor_of(at), floor_of(at + 1) - 1) + slack, 0, size - 1); }
};

bool shows(COLORREF color, const Cells& picture, const Axis& x, const Axis& y, int column, int row) {
  for (int v = y.first(row); v <= y.last(row); ++v)
    for (int u = x.first(column); u <= x.last(column); ++u)
      if (color == picture.at(u, v)) return true;
  return false;
}

// Counts pixels of the client area that differ from the picture in this layout.
int wrong_pixels(const Pixels& shown, const Cells& picture, ImgDisplayLayout layout) {
  const vorel::display::Mapping m = vorel::display::set_up_mapping(layout, vorel::display::Offsets::kKeep);
  const Axis x{m.x.viewport, m.x.window, layout.windowOriginX, picture.width};
  const Axis y{m.y.viewport, m.y.window, layout.windowOriginY, picture.height};
  const vorel::display::Box image = vorel::display::image_box(layout, m);
  const COLORREF change = (layout.flags & IMG_DISPLAY_INVERTED) != 0 ? 0xFFFFFF : 0;
  int wrong = 0;
  for (int row = 0; row < shown.height; ++row)
    for (int column = 0; column < shown.width; ++column) {
      const bool inside = column >= image.left && column < image.right && row >= image.top && row < image.bottom;
      const COLORREF color = shown.at(column, row);
      const bool good = inside ? shows(color ^ change, picture, x, y, column, row) : color == kAround;
      wrong += !good;
    }
  return wrong;
}

struct View {
  const char* name;
  UINT flags;
  Cells picture;  // the depth is set by the test
  std::array<int, 4> zoom;
};

const View kViews[] = {
    {"plain", 0, {300, 200, 0}, {1, 1, 1, 1}},
    {"small", 0, {40, 30, 0}, {1, 1, 1, 1}},
    {"inverted", IMG_DISPLAY_INVERTED, {40, 30, 0, 1, 2}, {1, 1, 1, 1}},
    {"centred", kCentre, {41, 30, 0}, {1, 1, 1, 1}},
    {"centred and large", kCentre, {300, 200, 0}, {1, 1, 1, 1}},
    {"zoomed in", 0, {60, 50, 0}, {12, 1, 7, 1}},
    {"zoomed in and centred", kCentre | kNoBars, {20, 10, 0}, {3, 1, 4, 1}},
    {"zoomed out", 0, {700, 500, 0, 24}, {10, 40, 10, 50}},
    {"zoomed by a fraction", 0, {200, 150, 0, 8}, {3, 2, 4, 3}},
    {"ends at half a pixel", 0, {15, 25, 0}, {7, 10, 7, 10}},
    {"fitted", kFit | kCentre, {333, 100, 0, 16}, {5, 1, 5, 1}},
    {"fitted and enlarged", kFit, {30, 12, 0}, {1, 1, 1, 1}},
    {"stretched", kStretch | kNoBars, {333, 40, 0, 16}, {1, 1, 1, 1}},
    {"fit to the width", IMG_DISPLAY_FIT_WIDTH, {333, 400, 0, 16}, {1, 1, 1, 1}},
};

template <class Check>
void for_every_view(Check check) {
  for (const View& view : kViews)
    for (int depth : {1, 4, 8, 24}) {
      Cells picture = view.picture;
      picture.depth = depth;
      const Image image(picture);
      for (Source source : {Source::kDib, Source::kBitmapOfDib, Source::kBitmap}) {
        SCOPED_TRACE(std::string(view.name) + ", " + std::to_string(depth) + " bits, source " +
                     std::to_string(static_cast<int>(source)));
        check(view, image, source);
      }
    }
}

TEST(Display, PaintsThePictureAndTheBrushAroundIt) {
  DisplayWindow window(200, 120);
  for_every_view([&](const View& view, const Image& image, Source source) {
    image.show(window, source, view.flags, view.zoom.data());
    EXPECT_EQ(wrong_pixels(window.repainted(), image.cells, window.state.layout), 0);
  });
}

TEST(Display, ScaledByResolution) {
  DisplayWindow window(200, 120);
  const Image image({90, 70, 8});
  const int dpi[] = {32, 48};
  image.show(window, Source::kBitmap, IMG_DISPLAY_RESOLUTION, nullptr, nullptr, dpi);
  const auto& layout = window.state.layout;
  EXPECT_EQ(std::tuple(layout.imageDpiX, layout.imageDpiY), std::tuple(32, 48));
  EXPECT_EQ(layout.hScrollMax, (90 * layout.screenDpiX + 16) / 32);
  EXPECT_EQ(wrong_pixels(window.repainted(), image.cells, layout), 0);
  image.show(window, Source::kDib, IMG_DISPLAY_RESOLUTION);
  EXPECT_EQ(std::tuple(layout.imageDpiX, layout.hScrollMax), std::tuple(layout.screenDpiX, 90))
      << "no resolution: the screen's";
}

TEST(Display, StartingFillsTheState) {
  DisplayWindow window(200, 120);
  const Image image({300, 200, 8});
  int view[4] = {30, 20, -1, -1};
  EXPECT_EQ(DisplayDIBStart(window.get(), image.dib.get(), view, nullptr, IMG_DISPLAY_AS_BITMAP | kNoBars, &window.state),
            IMG_DISPLAY_AS_BITMAP | kNoBars);
  const ImgDisplayState& state = window.state;
  const ImgDisplayLayout& layout = state.layout;
  EXPECT_EQ(layout.flags, kNoBars);
  EXPECT_EQ(state.ownership, 3);
  EXPECT_EQ(state.dib, image.dib.get());
  EXPECT_EQ(std::tuple(layout.imageWidth, layout.imageHeight, layout.bitsPerPixel), std::tuple(300, 200, 8u));
  EXPECT_EQ(std::tuple(layout.hScrollPos, layout.vScrollPos), std::tuple(30, 20));
  int out[4] = {40, 10, -1, -1};
  EXPECT_EQ(
      DisplayStart(window.get(), image.bitmap.get(), image.palette.get(), nullptr, out, nullptr, kNoBars, &window.state),
      kNoBars);
  EXPECT_EQ((std::array{out[0], out[1], out[2], out[3]}), (std::array{40, 10, -40, -10}));
  EXPECT_EQ(std::tuple(state.dib, state.bitmap, state.palette, state.ownership),
            std::tuple(HGLOBAL{}, image.bitmap.get(), image.palette.get(), WORD{0}));
  EXPECT_EQ(DisplayStart(window.get(), image.bitmap.get(), nullptr, nullptr, nullptr, nullptr, 7, nullptr), 0u);
  EXPECT_EQ(DisplayDIBStart(window.get(), image.dib.get(), nullptr, nullptr, 7, nullptr), 0u);
}

// One scroll bar of a window and its axis.
struct Bar {
  int number, least, most, position, other_position, unit, client;
  UINT without;
};

Bar bar_of(ImgDisplayLayout l, int number) {
  const vorel::display::Mapping m = vorel::display::set_up_mapping(l, vorel::display::Offsets::kKeep);
  if (number == SB_HORZ)
    return {number,        l.hScrollMin,          l.hScrollMax,
            l.hScrollPos,  l.vScrollPos,          vorel::display::scroll_unit(m.x.viewport),
            l.clientRight, IMG_DISPLAY_NO_HSCROLL};
  return {number,         l.vScrollMin,          l.vScrollMax,
          l.vScrollPos,   l.hScrollPos,          vorel::display::scroll_unit(m.y.viewport),
          l.clientBottom, IMG_DISPLAY_NO_VSCROLL};
}

void expect_nothing_left_to_paint(const Window& window) {
  EXPECT_FALSE(GetUpdateRect(window.get(), nullptr, FALSE));
  const Pixels strips = window.shown();
  EXPECT_TRUE(strips == window.repainted()) << "the strips that came into sight are as in a full repaint";
}

void expect_scrolled(DisplayWindow& window, int number, int code, int word) {
  const Bar before = bar_of(window.state.layout, number);
  SendMessage(window.get(), number == SB_HORZ ? WM_HSCROLL : WM_VSCROLL, MAKEWPARAM(code, word), 0);
  const Bar now = bar_of(window.state.layout, number);
  const vorel::display::ScrollAxis axis{before.least, before.most, before.position, before.unit, before.client};
  EXPECT_EQ(now.position,
            vorel::display::scrolled(axis, static_cast<vorel::display::ScrollCode>(code), static_cast<uint16_t>(word)));
  EXPECT_EQ(now.other_position, before.other_position);
  const bool is_shown = (window.state.layout.flags & now.without) == 0;
  EXPECT_EQ(window.range(number), is_shown ? std::pair(now.least, now.most) : std::pair(-1, -1));
  EXPECT_EQ(window.position(number), is_shown ? std::clamp(now.position, now.least, now.most) : -1);
  expect_nothing_left_to_paint(window);
}

TEST(Display, ScrollMessagesUpdateTheBarsAndPaintTheStrips) {
  const Image image({400, 300, 8}), large({900, 700, 4, 24});
  const struct {
    const Image& image;
    UINT flags;
    std::array<int, 4> zoom;
  } rows[] = {{image, 0, {1, 1, 1, 1}},     {image, 0, {12, 1, 3, 1}},    {image, kCentre, {1, 1, 1, 1}},
              {large, 0, {10, 30, 10, 40}}, {image, kWide, {1, 1, 1, 1}}, {image, IMG_DISPLAY_NO_VSCROLL, {3, 2, 3, 2}}};
  const int messages[][2] = {{SB_LINEDOWN, 0}, {SB_PAGEDOWN, 0},        {SB_LINEUP, 0}, {SB_THUMBTRACK, 77},
                             {SB_PAGEUP, 0},   {SB_ENDSCROLL, 5},       {SB_BOTTOM, 0}, {SB_LINEUP, 0},
                             {SB_PAGEUP, 0},   {SB_THUMBPOSITION, 130}, {SB_TOP, 0},    {SB_LINEUP, 0}};
  for (Source source : {Source::kDib, Source::kBitmapOfDib})
    for (const auto& row : rows) {
      DisplayWindow window(200, 120);
      row.image.show(window, source, row.flags, row.zoom.data());
      for (const auto& [code, word] : messages)
        for (int bar : {SB_HORZ, SB_VERT}) {
          SCOPED_TRACE(testing::Message() << "row " << &row - rows << " code " << code << " bar " << bar);
          expect_scrolled(window, bar, code, word);
        }
      for (const auto& [x, y] : {std::pair(50, 40), {45, 90}, {20, 20}, {20, 90}, {9999, 9999}, {-9999, 3}}) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows << " to " << x << " " << y);
        const int position[] = {x, y};
        EXPECT_EQ(DisplaySetScrollPos(window.get(), &window.state, position), 0);
        expect_nothing_left_to_paint(window);
      }
    }
}

// A window with another one in front of it. It paints only when the library asks for it.
class CoveredWindow : public DisplayWindow {
 public:
  CoveredWindow() : DisplayWindow(kWidth, kHeight, CS_HREDRAW | CS_VREDRAW) {
    SetWindowLong(get(), GWL_STYLE, GetWindowLong(get(), GWL_STYLE) | WS_CLIPCHILDREN);
    cover_ = CreateWindowA("static", "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, get(), nullptr, nullptr, nullptr);
  }
  void cover(int left, int top, int width, int height) const { MoveWindow(cover_, left, top, width, height, TRUE); }
  Pixels uncovered() const {
    cover(0, 0, 0, 0);
    UpdateWindow(get());
    return shown();
  }

  static constexpr int kWidth = 200, kHeight = 120;

 private:
  HWND cover_;
};

// One change by a user, a host or another window. Nothing is painted afterwards.
void change_at_random(CoveredWindow& window, const Image& image, Source source, std::minstd_rand& random) {
  const auto any = [&](int least, int most) { return std::uniform_int_distribution(least, most)(random); };
  constexpr UINT kOptions[] = {0,     0,    kCentre,           kCentre | IMG_DISPLAY_INVERTED, kCentre | kFit,
                               kWide, kFit, kStretch | kNoBars};
  constexpr std::array<int, 4> kZooms[] = {{1, 1, 1, 1},   {32, 16, 32, 16}, {64, 16, 24, 16}, {16, 2, 16, 1},
                                           {20, 1, 20, 1}, {3, 2, 3, 2},     {16, 24, 16, 24}, {12, 37, 12, 37},
                                           {1, 4, 1, 3},   {100, 1, 7, 10}};
  switch (any(0, 7)) {
    case 0: {
      int view[4] = {any(-20, image.cells.width), any(-20, image.cells.height), 0, 0};
      image.start(window, source, kOptions[any(0, std::ssize(kOptions) - 1)], kZooms[any(0, std::ssize(kZooms) - 1)].data(),
                  any(0, 1) != 0 ? view : nullptr);
      break;
    }
    case 1: window.resize(any(50, 300), any(50, 200)); break;
    case 2: window.cover(any(-50, 200), any(-50, 120), any(0, 150), any(0, 100)); break;
    case 3: {
      const RECT rect{any(0, 200), any(0, 120), any(0, 300), any(0, 200)};
      InvalidateRect(window.get(), &rect, FALSE);
      break;
    }
    case 4:
    case 5: {
      const int position[] = {any(-100, 900), any(-100, 900)};
      DisplaySetScrollPos(window.get(), &window.state, position);
      break;
    }
    default: SendMessage(window.get(), any(0, 1) != 0 ? WM_HSCROLL : WM_VSCROLL, MAKEWPARAM(any(0, 8), any(-50, 600)), 0);
  }
}

TEST(Display, EqualsAFullRepaintAfterAnySeriesOfChanges) {
  constexpr std::pair<int, Source> kImages[] = {{1, Source::kDib}, {8, Source::kBitmapOfDib}, {24, Source::kDib}};
  for (const auto& [depth, source] : kImages) {
    const Image image({301, 203, depth});
    std::minstd_rand random(static_cast<unsigned>(depth));
    CoveredWindow window;
    image.start(window, source, 0);
    for (int round = 0; round < 40; ++round) {
      const int changes = 1 + static_cast<int>(random() % 6);
      for (int i = 0; i < changes; ++i) change_at_random(window, image, source, random);
      const Pixels shown = window.uncovered();
      const ImgDisplayLayout& l = window.state.layout;
      ASSERT_EQ(differing_pixels(shown, window.repainted()), 0)
          << "round " << round << ", " << depth << " bits, flags " << l.flags << ", zoom " << l.zoomViewportX << ":"
          << l.zoomWindowX << " " << l.zoomViewportY << ":" << l.zoomWindowY;
    }
  }
}

TEST(Display, OtherScrollCodesLeaveACentredImageCentred) {
  DisplayWindow window(200, 120);
  Image image({40, 30, 8});
  image.show(window, Source::kDib, kCentre);
  SendMessage(window.get(), WM_HSCROLL, SB_ENDSCROLL, 0);
  SendMessage(window.get(), WM_VSCROLL, SB_ENDSCROLL, 0);
  window.repainted();
  const ImgDisplayLayout& layout = window.state.layout;
  EXPECT_EQ(std::tuple(layout.imageOriginDeviceX, layout.imageOriginDeviceY),
            std::tuple((layout.clientRight - 40) / 2, (layout.clientBottom - 30) / 2));
}

TEST(Display, FollowsTheWindowsSize) {
  DisplayWindow window(200, 120);
  const Image image({300, 200, 8});
  for (UINT flags : {0u, kCentre, kFit, kStretch | kNoBars})
    for (const auto& [width, height] : {std::pair(200, 120), {400, 300}, {1, 1}, {0, 0}, {70, 300}}) {
      image.show(window, Source::kDib, flags);
      window.resize(width, height);
      const RECT client = window.client();
      EXPECT_EQ(std::tuple(window.state.layout.clientRight, window.state.layout.clientBottom),
                std::tuple(client.right, client.bottom));
      if (client.right == 0 || client.bottom == 0) continue;
      EXPECT_EQ(wrong_pixels(window.repainted(), image.cells, window.state.layout), 0) << width;
    }
}

TEST(Display, MapsContextsAsItComputes) {
  DisplayWindow window(200, 120);
  for_every_view([&](const View& view, const Image& image, Source source) {
    if (image.cells.depth != 8 || source == Source::kBitmapOfDib) return;
    int corner[4] = {13, 7, 0, 0};
    image.show(window, source, view.flags, view.zoom.data(), corner);
    ImgDisplayLayout layout = window.state.layout;
    const vorel::display::Mapping m = vorel::display::set_up_mapping(layout, vorel::display::Offsets::kKeep);
    HDC dc = GetDC(window.get());
    MapDisplayDC(dc, &window.state);
    for (int i = -400; i < 400; i += 7) {
      POINT device{i, i + 1}, logical{i, i + 1};
      LPtoDP(dc, &device, 1);
      DPtoLP(dc, &logical, 1);
      const auto halves = [&](int64_t n, const vorel::display::AxisMapping& axis) {
        return 2 * n * axis.viewport % axis.window == 0 || 2 * n * axis.window % axis.viewport == 0;
      };
      if (halves(i - layout.windowOriginX, m.x) || halves(i, m.x) || halves(i + 1 - layout.windowOriginY, m.y) ||
          halves(i + 1, m.y))
        continue;
      const vorel::display::Point to_device = m.to_device(vorel::display::Point(i, i + 1)),
                                  to_logical = m.to_logical(vorel::display::Point(i, i + 1));
      EXPECT_EQ(std::tuple(to_device.x, to_device.y, to_logical.x, to_logical.y),
                std::tuple(device.x, device.y, logical.x, logical.y));
    }
    ReleaseDC(window.get(), dc);
  });
}

TEST(Display, DrawsOnAnyContext) {
  DisplayWindow window(200, 120);
  const Image image({90, 70, 8});
  const int zoom[] = {3, 1, 2, 1};
  image.show(window, Source::kDib, kNoBars, zoom);
  HDC screen = GetDC(nullptr), memory = CreateCompatibleDC(screen);
  for (auto* draw : {DisplayImageDC, DisplayDIBImageDC}) {
    const Object<HBITMAP> target(CreateCompatibleBitmap(screen, 200, 120));
    HGDIOBJ before = SelectObject(memory, target.get());
    EXPECT_EQ(draw(memory, &window.state), kNoBars);
    EXPECT_EQ(draw(memory, nullptr), 0u);
    EXPECT_TRUE(pixels_of(memory, 200, 120) == window.shown());
    SelectObject(memory, before);
  }
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
}

// Makes every call of the display for one image and window.
void call_everything(DisplayWindow& window, const Image& image, HGLOBAL dib,
                     const std::function<void(const char*)>& after_each) {
  HWND w = window.get();
  ImgDisplayState* state = &window.state;
  const int position[] = {30, 40}, zoom[] = {3, 2, 5, 4};
  int scroll[4] = {0, 0, 20, 20};
  const auto call = [&](const char* name, auto result_ignored) { (void)result_ignored, after_each(name); };
  call("DIBStart", DisplayDIBStart(w, dib, nullptr, zoom, IMG_DISPLAY_AS_BITMAP, state));
  call("WmPaint", (InvalidateRect(w, nullptr, FALSE), UpdateWindow(w)));
  call("DIBStart", DisplayDIBStart(w, dib, nullptr, nullptr, kCentre, state));
  call("WmPaint", (InvalidateRect(w, nullptr, FALSE), UpdateWindow(w)));
  call("HorzScroll", DisplayWmHorzScroll(w, SB_LINEDOWN, 0, state));
  call("VertScroll", DisplayWmVertScroll(w, SB_PAGEDOWN, 0, state));
  call("SetScrollPos", DisplaySetScrollPos(w, state, position));
  call("WmSize", DisplayWmSize(w, 0, 0, state));
  for (int low_memory : {0, 1}) {
    SetLowMemStretch(low_memory);
    call("DIBImage", (InvalidateRect(w, nullptr, FALSE), DisplayDIBImage(w, dib, scroll, zoom, 0), 0));
    call("DIBImage", (InvalidateRect(w, nullptr, FALSE), DisplayDIBImage(w, dib, nullptr, nullptr, kFit), 0));
  }
  SetLowMemStretch(0);
  call("CPPSize", (DisplayCPPSize(w, dib, scroll, zoom, 0), 0));
  call("CPPHScroll", (DisplayCPPHScroll(w, SB_LINEDOWN, 0, dib, scroll, zoom, 0), 0));
  call("CPPVScroll", (DisplayCPPVScroll(w, SB_BOTTOM, 0, dib, scroll, zoom, 0), 0));
  call("Start", DisplayStart(w, image.bitmap.get(), image.palette.get(), nullptr, nullptr, nullptr, kFit, state));
  call("WmPaint", (InvalidateRect(w, nullptr, FALSE), UpdateWindow(w)));
}

TEST(Display, LeaksNothingAndRestoresContexts) {
  const Image image({300, 200, 8});
  for (UINT style : {0, CS_OWNDC}) {
    DisplayWindow window(200, 120, style);
    std::vector<size_t> objects;
    const auto count = [&](const char*) {
      objects.push_back(gdi_objects() + 1000 * static_cast<size_t>(windows_of_thread()));
    };
    for (int i = 0; i < 3; ++i) call_everything(window, image, image.dib.get(), count);
    const auto run = static_cast<std::ptrdiff_t>(objects.size() / 3);
    EXPECT_TRUE(std::equal(objects.begin() + run, objects.end() - run, objects.end() - run))
        << testing::PrintToString(objects);

    HDC dc = GetDC(window.get());
    SetROP2(dc, R2_XORPEN), SetBkColor(dc, 0x123456), SetStretchBltMode(dc, HALFTONE);
    IntersectClipRect(dc, 10, 10, 90, 50);
    SetMapMode(dc, MM_ANISOTROPIC), SetWindowExtEx(dc, 3, 5, nullptr), SetWindowOrgEx(dc, 7, 1, nullptr);
    const auto before = state_of(dc);
    call_everything(window, image, image.dib.get(), [&](const char* name) {
      if (style == CS_OWNDC) {
        EXPECT_EQ(state_of(dc), before) << name;
      }
    });
    SelectClipRgn(dc, nullptr);
    image.show(window, Source::kBitmapOfDib, kCentre);
    InvalidateRect(window.get(), nullptr, FALSE), UpdateWindow(window.get());
    SetMapMode(dc, MM_TEXT), SetWindowOrgEx(dc, 0, 0, nullptr);
    EXPECT_EQ(wrong_pixels(window.shown(), image.cells, window.state.layout), 0) << "whatever the context's mapping";
    ReleaseDC(window.get(), dc);
    EXPECT_EQ(window.state.ownership, 3);
    DisplayWmDestroy(window.get(), 0, 0, &window.state);
    EXPECT_EQ(std::tuple(window.state.palette, window.state.bitmap, window.state.ownership),
              std::tuple(HPALETTE{}, HBITMAP{}, WORD{0}));
  }
}

TEST(Display, InvalidAndShortImagesDoNoHarm) {
  const Image image({30, 20, 8});
  const Bytes good = noise(60, 50, 8);
  std::vector<Bytes> dibs = {Bytes(good.begin(), good.begin() + 30), Bytes(good.begin(), good.begin() + 60),
                             Bytes(good.begin(), good.begin() + 1500), Bytes(1)};
  const auto add = [&](auto change) { dibs.push_back(with_header_changed(good, change)); };
  for (LONG value : {0L, -5L, 0x7FFFFFFFL, -0x7FFFFFFFL - 1}) {
    add([&](auto& header) { header.biWidth = value; });
    add([&](auto& header) { header.biWidth = header.biHeight = value; });
    add([&](auto& header) { header.biXPelsPerMeter = value, header.biClrUsed = static_cast<DWORD>(value); });
    add([&](auto& header) { header.biSize = header.biCompression = static_cast<DWORD>(value); });
  }
  DisplayWindow window(200, 120);
  int calls = 0;
  for (const Bytes& dib : dibs) call_everything(window, image, block_of(dib).get(), [&](const char*) { ++calls; });
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle()})
    call_everything(window, image, handle, [&](const char*) { ++calls; });
  image.show(window, Source::kDib, kNoBars);
  EXPECT_EQ(wrong_pixels(window.repainted(), image.cells, window.state.layout), 0) << "after " << calls << " calls";
}

TEST(Display, WithoutWindowOrState) {
  DisplayWindow window(200, 120);
  Image({30, 20, 8}).show(window, Source::kBitmapOfDib, 0);
  const int position[] = {0, 0};
  ImgDisplayState* state = &window.state;
  for (auto* handler : {DisplayWmSize, DisplayWmHorzScroll, DisplayWmVertScroll}) {
    EXPECT_EQ(handler(nullptr, 0, 0, state), 1);
    EXPECT_EQ(handler(window.get(), 0, 0, nullptr), 0);
  }
  EXPECT_EQ(DisplaySetScrollPos(nullptr, state, position), 1);
  EXPECT_EQ(DisplaySetScrollPos(window.get(), state, nullptr), 1);
  EXPECT_EQ(DisplaySetScrollPos(window.get(), nullptr, position), 0);
  InvalidateRect(window.get(), nullptr, FALSE);
  EXPECT_EQ(DisplayWmPaint(window.get(), nullptr), 0);
  EXPECT_FALSE(GetUpdateRect(window.get(), nullptr, FALSE)) << "painting nothing validates all the same";
  EXPECT_EQ(DisplayWmCreate(window.get(), 0, 0, nullptr), 0);
  EXPECT_EQ(DisplayWmDestroy(window.get(), 0, 0, nullptr), 0);
  MapDisplayDC(nullptr, nullptr);
  ImgDisplayState noise;
  std::memset(&noise, 0xAB, sizeof noise);
  EXPECT_EQ(DisplayWmCreate(window.get(), 0, 0, &noise), 0);
  const auto* bytes = reinterpret_cast<const uint8_t*>(&noise);
  constexpr long kCleared = sizeof(void*) == 4 ? 142 : 154, kSpare = static_cast<long>(sizeof noise) - kCleared;
  EXPECT_EQ(std::count(bytes, bytes + kCleared, 0), kCleared);
  EXPECT_EQ(std::count(bytes + kCleared, bytes + sizeof noise, 0xAB), kSpare);
}

// A window painted by a function of the test.
struct PaintedWindow : Window {
  explicit PaintedWindow(std::function<void(HWND)> paint)
      : Window(200, 120, [paint = std::move(paint)](HWND window, UINT message, WPARAM, LPARAM) {
          return message == WM_PAINT && (paint(window), true);
        }) {}
  bool has(LONG style) const { return (GetWindowLong(get(), GWL_STYLE) & style) != 0; }
};

TEST(StatelessPainting, PaintsBothWays) {
  const struct {
    Cells picture;
    std::array<int, 4> zoom;
    WORD flags;
    std::array<int, 4> scroll;
  } rows[] = {{{40, 30, 0}, {1, 1, 1, 1}, 0, {}},
              {{40, 30, 0, 1, 2}, {2, 1, 3, 1}, IMG_DISPLAY_INVERTED, {}},
              {{300, 200, 0}, {1, 1, 1, 1}, 0, {0, 0, 0, 0}},
              {{300, 60, 0}, {1, 1, 1, 1}, 0, {0, 0, 300, 0}},
              {{800, 900, 0, 32}, {1, 4, 1, 4}, 0, {0, 0, 0, 450}},
              {{100, 80, 0}, {4, 1, 4, 1}, 0, {0, 0, 60, 30}},
              {{777, 300, 0, 32}, {1, 1, 1, 1}, IMG_DISPLAY_FIT, {0, 0, 100, 100}}};
  for (const auto& row : rows)
    for (int depth : {1, 4, 8, 24})
      for (int low_memory : {0, 1, 2}) {  // 2: as a device bitmap
        Cells picture = row.picture;
        picture.depth = depth;
        const Image image(picture);
        PaintedWindow window([&](HWND w) {
          if (low_memory == 2)
            DisplayImage(w, image.bitmap.get(), image.palette.get(), row.scroll.data(), row.zoom.data(), row.flags);
          else
            DisplayDIBImage(w, image.dib.get(), row.scroll.data(), row.zoom.data(), row.flags);
        });
        SCOPED_TRACE(testing::Message() << "row " << &row - rows << " depth " << depth << " way " << low_memory);
        EXPECT_EQ(SetLowMemStretch(low_memory & 1), 0);
        const Pixels shown = window.repainted();
        EXPECT_EQ(SetLowMemStretch(0), low_memory & 1);
        vorel::display::StatelessAxis x{picture.width, 1.0 * row.zoom[0] / row.zoom[1], shown.width};
        vorel::display::StatelessAxis y{picture.height, 1.0 * row.zoom[2] / row.zoom[3], shown.height};
        if ((row.flags & IMG_DISPLAY_FIT) != 0) std::tie(x.scale, y.scale) = std::pair(200.0 / 777, 200.0 / 777);
        EXPECT_EQ(window.has(WS_HSCROLL), x.needs_scroll_bar());
        EXPECT_EQ(window.has(WS_VSCROLL), y.needs_scroll_bar());
        const vorel::display::StatelessPart across = stateless_part(x, row.scroll[2]),
                                            down = stateless_part(y, row.scroll[3]);
        Axis u{across.to_extent, across.from_extent, across.from, picture.width};
        Axis v{down.to_extent, down.from_extent, down.from, picture.height};
        // The library rounds to the nearest pixel: the first row and column are half as large, the last ones may be missing.
        if (low_memory == 1) u.slack = v.slack = 1;
        const int missing = low_memory == 1 ? static_cast<int>(std::max(x.scale, y.scale)) : 0;
        const COLORREF change = (row.flags & IMG_DISPLAY_INVERTED) != 0 ? 0xFFFFFF : 0;
        int wrong = 0;
        for (int j = 0; j < down.to_extent - missing; ++j)
          for (int i = 0; i < across.to_extent - missing; ++i) wrong += !shows(shown.at(i, j) ^ change, picture, u, v, i, j);
        EXPECT_EQ(wrong, 0);
      }
}

TEST(StatelessPainting, TheSystemScalesOtherDepthsInEitherCase) {
  for (int depth : {16, 32}) {
    const Block dib = block_of(with_header_changed(
        noise(40, 30, depth), [](auto& header) { header.biXPelsPerMeter = header.biYPelsPerMeter = 0; }));
    PaintedWindow window([&](HWND w) { DisplayDIBImage(w, dib.get(), nullptr, nullptr, 0); });
    const Pixels by_system = window.repainted();
    SetLowMemStretch(1);
    EXPECT_TRUE(window.repainted() == by_system) << depth;
    SetLowMemStretch(0);
  }
}

TEST(StatelessPainting, ScrollsWithItsBars) {
  const Image image({300, 200, 8});
  int scroll[4] = {};
  PaintedWindow window([&](HWND w) { DisplayCPPImage(w, image.dib.get(), scroll, nullptr, 0); });
  DisplayCPPSize(window.get(), image.dib.get(), scroll, nullptr, 0);
  EXPECT_EQ(std::tuple(scroll[0], scroll[1]), std::tuple(300, 200));
  EXPECT_EQ(window.range(SB_HORZ), std::pair(0, 300));
  const struct {
    int bar, code, word, expected;
  } rows[] = {{SB_HORZ, SB_LINEDOWN, 0, 8}, {SB_VERT, SB_THUMBTRACK, 77, 77}, {SB_VERT, SB_LINEUP, 0, 69},
              {SB_HORZ, SB_BOTTOM, 0, 300}, {SB_HORZ, SB_TOP, 0, 0},          {SB_HORZ, SB_ENDSCROLL, 9, 0}};
  for (const auto& row : rows) {
    const auto follow = row.bar == SB_HORZ ? DisplayCPPHScroll : DisplayCPPVScroll;
    follow(window.get(), MAKEWPARAM(row.code, row.word), 0, image.dib.get(), scroll, nullptr, 0);
    EXPECT_EQ(scroll[row.bar == SB_HORZ ? 2 : 3], row.expected) << &row - rows;
    EXPECT_EQ(window.position(row.bar), row.expected) << &row - rows;
    UpdateWindow(window.get());
    const Pixels shown = window.shown();
    EXPECT_TRUE(shown == window.repainted()) << &row - rows;
  }
  EXPECT_EQ(window.shown().at(5, 5), image.cells.at(5, 5 + (200 - window.shown().height) * 69 / 200));
  window.resize(400, 300);
  DisplayCPPSize(window.get(), image.dib.get(), scroll, nullptr, 0);
  EXPECT_EQ((std::array{scroll[0], scroll[1], window.range(SB_HORZ).second}),
            (std::array{-1, -1, window.range(SB_HORZ).first}));
}

}  // namespace
