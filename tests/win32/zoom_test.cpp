// Interactive zooming and the lens on windows: drawing, restoring and results.
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

#include <vorel32.h>

#include "win32/support/window.h"

using namespace test;

namespace {

constexpr UINT kNoBars = IMG_DISPLAY_NO_HSCROLL | IMG_DISPLAY_NO_VSCROLL;

class ZoomedWindow : public testing::Test {
 protected:
  void show(UINT flags = 0, const int* zoom = nullptr) {
    DisplayDIBStart(window.get(), dib.get(), nullptr, zoom, kNoBars | flags, &window.state);
    before = window.repainted();
  }
  int changed_pixels() {
    const Pixels now = window.shown();
    int changed = 0;
    for (size_t i = 0; i < now.colors.size(); ++i) changed += now.colors[i] != before.colors[i];
    return changed;
  }

  Cells cells{400, 300, 8};
  Block dib = block_of(cells.dib());
  DisplayWindow window{200, 100};
  ImgZoomTracker tracker{};
  Pixels before;
};

TEST_F(ZoomedWindow, DrawsOneBandAndErasesIt) {
  for (const BOOL screen : {FALSE, TRUE}) {
    show();
    const auto at = [&](LONG x, LONG y) {
      POINT point{x, y};
      if (screen) ClientToScreen(window.get(), &point);
      return point;
    };
    const size_t objects = gdi_objects();
    const POINT start = at(50, 40), end = at(20, 90);
    BZoomStart(window.get(), &start, nullptr, 0x12, &tracker, screen);
    EXPECT_EQ(GetCapture(), window.get());
    EXPECT_EQ(std::tuple(tracker.mode, tracker.anchorX, tracker.anchorY, tracker.cornerX, tracker.cornerY),
              std::tuple(0x12, 50, 40, 50, 40));
    EXPECT_EQ(std::tuple(tracker.startViewportX, tracker.startWindowX, tracker.startViewportY, tracker.startWindowY),
              std::tuple(10, 10, 10, 10));
    for (const POINT close : {at(55, 99), at(0, 45), at(50, 40)}) {
      BZoomUpdate(window.get(), &close, &tracker);
      EXPECT_EQ(std::tuple(tracker.bandShown, changed_pixels()), std::tuple(0, 0));
    }
    for (const auto& [x, y] : {std::pair(56, 46), {150, 80}, {20, 10}, {56, 46}, {60, 40}, {20, 90}}) {
      const POINT mouse = at(x, y);
      BZoomUpdate(window.get(), &mouse, &tracker);
      EXPECT_EQ(std::tuple(tracker.bandShown != 0, tracker.cornerX, tracker.cornerY), std::tuple(true, x, y));
      if (y == 40) continue;
      EXPECT_NEAR(changed_pixels(), 2 * (std::abs(x - 50) + std::abs(y - 40)), 4) << x << " " << y;
    }
    BZoomEnd(window.get(), &end, &tracker, &window.state);
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(changed_pixels(), 0);
    EXPECT_EQ(std::tuple(tracker.resultViewportX, tracker.resultWindowX), std::tuple(20, 10))
        << "30 x 50 pixels fill 200 x 100";
    EXPECT_EQ(std::tuple(tracker.resultLeft, tracker.resultTop), std::tuple(35 - 50, 65 - 25));
    EXPECT_EQ(gdi_objects(), objects);
  }
}

TEST_F(ZoomedWindow, ClicksDragsAndSteps) {
  constexpr POINT kClick{100, 50}, kMiddle{150, 75};
  const struct {
    int mode;
    RECT current;
    const POINT* end;
    std::array<int, 4> expected;  // viewport, window, left, top
  } rows[] = {
      {0x11, {10, 10, 10, 10}, &kClick, {10, 10, 0, 0}},       {0x12, {10, 10, 10, 10}, &kClick, {20, 10, 50, 25}},
      {0x13, {10, 10, 10, 10}, &kClick, {10, 15, -50, -25}},   {0x14, {10, 10, 10, 10}, &kClick, {12, 10, 17, 9}},
      {0x15, {20, 10, 20, 10}, &kClick, {18, 10, 45, 22}},     {0x12, {30, 20, 9, 9}, &kClick, {20, 10, 50, 25}},
      {0x13, {10, 50, 10, 50}, &kClick, {10, 50, -400, -200}}, {0x16, {10, 40, 10, 40}, &kClick, {10, 40, -300, -150}},
      {0x12, {10, 10, 10, 10}, &kMiddle, {20, 10, 50, 25}},  // a drag, from (50, 25)
      {0x12, {10, 10, 10, 10}, nullptr, {20, 10, 0, 0}},       {0x22, {80, 10, 80, 10}, &kClick, {80, 10, 90, 45}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    show(IMG_DISPLAY_FIT_WIDTH);
    window.state.layout.flags = kNoBars;  // actual size, so that window points are image points
    const POINT start = row.end == &kMiddle ? POINT{50, 25} : kClick;
    BZoomStart(window.get(), &start, &row.current, row.mode, &tracker, FALSE);
    EXPECT_EQ(GetCapture() == window.get(), (row.mode & 0x10) != 0);
    BZoomEnd(window.get(), row.end, &tracker, &window.state);
    EXPECT_EQ((std::array{tracker.resultViewportX, tracker.resultWindowX, tracker.resultLeft, tracker.resultTop}),
              row.expected);
    EXPECT_EQ(std::pair(tracker.resultViewportY, tracker.resultWindowY), std::pair(row.expected[0], row.expected[1]));
    const ImgDisplayLayout& layout = window.state.layout;
    if (row.end == nullptr) continue;
    EXPECT_EQ(layout.flags, kNoBars | 4);
    EXPECT_EQ(std::tuple(layout.zoomViewportX, layout.zoomWindowX, layout.zoomViewportY, layout.zoomWindowY),
              std::tuple(row.expected[0], row.expected[1], row.expected[0], row.expected[1]));
  }
}

TEST_F(ZoomedWindow, CentresADragInAFittedImageForTheFittedSize) {
  show(IMG_DISPLAY_FIT);  // 133 x 100 window pixels show 400 x 300, the whole window 602 x 300
  const POINT start{10, 10}, end{60, 60};
  BZoomStart(window.get(), &start, nullptr, 0x12, &tracker, FALSE);
  BZoomEnd(window.get(), &end, &tracker, &window.state);
  // (10, 10) to (60, 60) are image points (30, 30) to (180, 180): 100 / 150 is 10 : 15, its middle (105, 105).
  EXPECT_EQ((std::array{tracker.resultViewportX, tracker.resultWindowX}), (std::array{10, 15}));
  EXPECT_EQ((std::array{tracker.resultLeft, tracker.resultTop}), (std::array{105 - 301, 105 - 150}));
  EXPECT_EQ(window.state.layout.flags, kNoBars | 4);
}

TEST_F(ZoomedWindow, StepsWithoutTheMouse) {
  show();
  const int position[] = {30, 20};
  DisplaySetScrollPos(window.get(), &window.state, position);
  const RECT current{20, 10, 20, 10};
  const UINT flags = window.state.layout.flags;
  BZoomStep(window.get(), &current, 0x22, &tracker, &window.state);
  EXPECT_EQ((std::array{tracker.resultViewportX, tracker.resultWindowX, tracker.resultLeft, tracker.resultTop}),
            (std::array{40, 10, 30, 20}));
  EXPECT_EQ(window.state.layout.flags, flags);
  const ImgZoomTracker stepped = tracker;
  BZoomStep(window.get(), &current, 0x12, &tracker, &window.state);
  EXPECT_EQ(std::memcmp(&stepped, &tracker, sizeof tracker), 0) << "a mouse's mode does nothing";
  BZoomEnd(window.get(), nullptr, nullptr, &window.state);
  BZoomEnd(window.get(), nullptr, &tracker, nullptr);
  BZoomStart(window.get(), nullptr, nullptr, 0x22, nullptr, FALSE);
  BZoomUpdate(window.get(), nullptr, &tracker);
  EXPECT_EQ(std::memcmp(&stepped, &tracker, sizeof tracker), 0);
}

TEST_F(ZoomedWindow, ScreenZoomsChangeTheirPart) {
  show();
  ImgScreenZoom screen{96, 96, {0, 0, 200, 100}, {0, 0, 200, 100}};
  const RECT one{10, 10, 10, 10};
  BZoomScreenStep(window.get(), &one, 0x22, &tracker, &screen);
  EXPECT_EQ((std::array{tracker.resultViewportX, tracker.resultWindowX}), (std::array{20, 10}));
  EXPECT_EQ(std::pair(screen.zoom.right - screen.zoom.left, screen.zoom.bottom - screen.zoom.top), std::pair(100L, 50L));
  EXPECT_EQ(std::pair(tracker.resultLeft + 0L, tracker.resultTop + 0L), std::pair(screen.zoom.left, screen.zoom.top));
  screen.zoom = {0, 0, 400, 200};
  const POINT start{50, 25}, end{150, 75};
  BZoomStart(window.get(), &start, nullptr, 0x12, &tracker, FALSE);
  BZoomUpdate(window.get(), &end, &tracker);
  BZoomScreenEnd(window.get(), &end, &tracker, &screen);
  EXPECT_EQ((std::array{screen.zoom.left, screen.zoom.top, screen.zoom.right, screen.zoom.bottom}),
            (std::array{100L, 50L, 300L, 150L}));
  EXPECT_EQ(changed_pixels(), 0);
  BZoomScreenEnd(window.get(), &end, &tracker, nullptr);
}

TEST_F(ZoomedWindow, TheModalLoopEndsWithTheButtonAndKeepsOtherMessages) {
  const struct {
    POINT start, end;
    std::array<int, 4> expected;
  } rows[] = {{{20, 10}, {120, 43}, {200, 100, 200, 100}},
              {{120, 43}, {20, 10}, {200, 100, 200, 100}},
              {{20, 10}, {22, 11}, {500, 100, 500, 100}},
              {{20, 10}, {20, 10}, {500, 100, 500, 100}},
              {{0, 0}, {150, 99}, {101, 100, 101, 100}}};
  for (const auto& row : rows) {
    show();
    RECT confined{}, after{};
    GetClipCursor(&confined);
    const size_t objects = gdi_objects();
    const auto post = [&](UINT message, POINT at) { PostMessage(window.get(), message, 0, MAKELPARAM(at.x, at.y)); };
    std::atomic<bool> was_missed = false;
    std::jthread alarm([&](const std::stop_token& stop) {  // wakes the loop if it waits for a message that is already there
      for (int tenths = 0; !stop.stop_requested(); ++tenths, Sleep(100))
        if (tenths > 30) was_missed = PostMessage(window.get(), WM_NULL, 0, 0);
    });
    post(WM_APP, {}), post(WM_MOUSEMOVE, {70, 80}), post(WM_MOUSEMOVE, row.end), post(WM_LBUTTONUP, row.end);
    std::array zoom = {1, 1, 1, 1};
    Zoom(window.get(), MAKELPARAM(row.start.x, row.start.y), zoom.data());
    EXPECT_EQ(zoom, row.expected) << &row - rows;
    alarm.request_stop(), alarm.join();
    EXPECT_FALSE(was_missed);
    MSG message{};
    EXPECT_TRUE(PeekMessage(&message, window.get(), WM_APP, WM_APP, PM_REMOVE));
    EXPECT_FALSE(GetUpdateRect(window.get(), nullptr, FALSE)) << "painted at once";
    EXPECT_EQ(changed_pixels(), 0);
    GetClipCursor(&after);
    EXPECT_TRUE(EqualRect(&confined, &after));
    EXPECT_EQ(gdi_objects(), objects);
  }
  for (const LPARAM outside : {MAKELPARAM(200, 10), MAKELPARAM(-1, 10), MAKELPARAM(10, 100)}) {
    std::array zoom = {3, 1, 3, 1};
    Zoom(window.get(), outside, zoom.data());
    EXPECT_EQ(zoom, (std::array{3, 1, 3, 1}));
  }
}

// The colour of the lens frame, which is 4 pixels wide; CLR_INVALID inside it.
COLORREF frame_at(int x, int y, int width, int height) {
  const int right = width - 1 - x, bottom = height - 1 - y, ring = std::min({x, y, right, bottom});
  if (ring > 3) return CLR_INVALID;
  if (ring == 0 || ring == 3) return 0;
  const bool is_last =
      bottom == ring || right == ring;  // grey wins the corners of the outer ring, white those of the inner one
  return is_last == (ring == 1) ? 0x808080 : 0xFFFFFF;
}

TEST_F(ZoomedWindow, TheLensCoversAndRestores) {
  show();
  const Object<HBITMAP> bitmap(ConvertDIBToBitmap(dib.get()));
  const Object<HPALETTE> palette(CreateDIBPalette(dib.get()));
  M_CopyBitmap(window.get(), 10, 10);
  M_StretchBitmap(bitmap.get(), 0, 0, 20, 10);
  EXPECT_EQ(changed_pixels(), 0) << "nothing before the start";
  EXPECT_EQ(std::pair(M_GetWidth(), M_GetHeight()), std::pair(180, 80));
  EXPECT_EQ(M_SetSizes(48, 28), 1);
  std::vector<size_t> objects;
  for (HPALETTE used : {palette.get(), HPALETTE{nullptr}, palette.get()}) {
    objects.push_back(gdi_objects());
    HCURSOR cursor = LoadCursor(nullptr, IDC_CROSS);
    SetCursor(cursor);
    EXPECT_EQ(M_StartMagnify(window.get(), used), 1);
    EXPECT_EQ(GetCursor(), nullptr);
    for (const auto& [at, from] :
         {std::pair(POINT{10, 10}, POINT{30, 20}), {{20, 25}, {50, 60}}, {{150, 80}, {-6, -3}}, {{0, 0}, {390, 296}}}) {
      SCOPED_TRACE(testing::Message() << from.x << " " << from.y);
      M_StretchBitmap(bitmap.get(), from.x, from.y, 24, 14);  // twice as large
      M_CopyBitmap(window.get(), at.x, at.y);
      const Pixels now = window.shown();
      int wrong = 0, wrong_frame = 0, wrong_around = 0;
      for (int y = 0; y < now.height; ++y)
        for (int x = 0; x < now.width; ++x) {
          const int u = x - at.x, v = y - at.y;
          if (u < 0 || v < 0 || u >= 48 || v >= 28) {
            wrong_around += now.at(x, y) != before.at(x, y);
          } else if (const COLORREF frame = frame_at(u, v, 48, 28); frame != CLR_INVALID) {
            wrong_frame += now.at(x, y) != frame;
          } else {
            const int from_x = from.x + u / 2, from_y = from.y + v / 2;
            const bool inside = from_x >= 0 && from_y >= 0 && from_x < cells.width && from_y < cells.height;
            wrong += now.at(x, y) != (inside ? cells.at(from_x, from_y) : 0x808080);
          }
        }
      EXPECT_EQ(std::tuple(wrong, wrong_frame, wrong_around), std::tuple(0, 0, 0));
    }
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(changed_pixels(), 0);
    EXPECT_EQ(GetCursor(), cursor);
  }
  EXPECT_EQ(objects[1], objects[2]);
  M_SetSizes(180, 80);
  RECT source{};
  int zoom[] = {2, 1, 2, 1};
  EXPECT_EQ(M_CalcRect(100, 50, zoom, &source), 1);
  EXPECT_EQ((std::array{source.left, source.top, source.right, source.bottom}), (std::array{57L, 32L, 143L, 68L}));
  EXPECT_EQ(M_CalcRect(100, 50, nullptr, &source), 0);
  EXPECT_EQ(M_CalcRect(100, 50, zoom, nullptr), 0);
}

}  // namespace
