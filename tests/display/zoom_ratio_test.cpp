// Steps and ratios of interactive zooming, and the source rectangle of the lens.
#include "display/zoom_ratio.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "display/lens.h"

using namespace vorel::display;

namespace {

constexpr std::array kEnlarge = {10, 20, 40, 60, 80}, kReduce = {10, 15, 30, 40, 50};
constexpr ZoomSteps kSteps{10, kEnlarge, kReduce};

TEST(ZoomRatio, StepsAndSmallIncrements) {
  using enum ZoomAction;
  // Viewport and window before and after. Steps first convert a ratio without the base to one with it.
  const struct {
    ZoomAction action;
    std::vector<std::array<int, 4>> rows;
  } tables[] = {{kStepLarger,
                 {{10, 10, 20, 10},
                  {60, 10, 80, 10},
                  {80, 10, 80, 10},
                  {99, 10, 80, 10},
                  {15, 10, 20, 10},
                  {5, 10, 10, 10},
                  {10, 15, 10, 10},
                  {10, 50, 10, 40},
                  {10, 60, 10, 50},
                  {10, 12, 10, 10},
                  {10, 5, 10, 10},
                  {30, 20, 20, 10},
                  {20, 30, 10, 10},
                  {1, 1, 20, 10},
                  {0, 5, 20, 10}}},
                {kStepSmaller,
                 {{10, 10, 10, 15},
                  {10, 50, 10, 50},
                  {10, 16, 10, 30},
                  {10, 5, 10, 10},
                  {20, 10, 10, 10},
                  {99, 10, 80, 10},
                  {5, 10, 10, 10},
                  {30, 20, 10, 10},
                  {20, 30, 10, 30},
                  {7, 0, 10, 15},
                  {3, 17, 10, 50}}},
                {kLittleLarger,
                 {{10, 10, 12, 10},
                  {29, 10, 31, 10},
                  {30, 10, 31, 10},
                  {5, 10, 6, 10},
                  {79, 10, 82, 10},
                  {82, 10, 80, 10},
                  {80, 10, 80, 10},
                  {10, 50, 10, 48},
                  {10, 11, 10, 9},
                  {10, 9, 10, 10},
                  {7, 13, 7, 11}}},
                {kLittleSmaller,
                 {{10, 10, 10, 12},
                  {10, 49, 10, 51},
                  {10, 51, 10, 50},
                  {20, 10, 18, 10},
                  {11, 10, 9, 10},
                  {5, 10, 10, 10},
                  {7, 13, 7, 13}}},
                {kKeep, {{30, 20, 30, 20}, {7, 13, 7, 13}}}};
  for (const auto& [action, rows] : tables)
    for (const auto& [viewport, window, new_viewport, new_window] : rows)
      EXPECT_EQ(stepped({viewport, window}, action, kSteps), Ratio(new_viewport, new_window)) << viewport << " : " << window;
}

TEST(ZoomRatio, RecognisedModes) {
  for (int mode = -1; mode < 0x60; ++mode) {
    const int low = mode & 0xF, high = mode & ~0xF;
    const bool counts = (high == 0x10 || high == 0x20) && low >= 1 && low <= 5;
    EXPECT_EQ(zoom_action(mode), counts ? static_cast<ZoomAction>(low) : ZoomAction::kKeep) << mode;
  }
}

TEST(ZoomRatio, RectanglesFillTheWindow) {
  const Box client(0, 0, 200, 100);
  const struct {
    Box rectangle;
    Ratio expected;
  } rows[] = {
      {{50, 25, 150, 75}, {20, 10}}, {{50, 25, 150, 26}, {20, 10}},                                // the smaller of both
      {{0, 0, 200, 100}, {10, 10}},  {{-100, 0, 300, 100}, {10, 20}}, {{0, 0, 30, 15}, {67, 10}},  // 66.67
      {{0, 0, 270, 135}, {10, 14}},                                                                // 13.5
      {{0, 0, 201, 1}, {10, 10}},                                                                  // 10.05
  };
  for (const auto& row : rows) EXPECT_EQ(filling(row.rectangle, client, 10), row.expected) << &row - rows;
  EXPECT_EQ(filling({0, 0, 100, 50}, client, 1000), Ratio(2000, 1000));
  EXPECT_EQ(corner_around({100, 50}, {0, 0, 51, 31}), Point(75, 35));
  EXPECT_EQ(corner_around({5, 5}, {-10, -10, 41, 41}), Point(-20, -20));
  EXPECT_EQ(ordered({9, 2}, {3, 7}), Box(3, 2, 9, 7));
  const Point anchor(50, 50);
  for (const Point drag : {Point(56, 44), Point(44, 56), Point(99, 99)}) EXPECT_TRUE(is_drag(anchor, drag));
  for (const Point click : {Point(55, 99), Point(0, 45), Point(50, 50)}) EXPECT_FALSE(is_drag(anchor, click));
}

TEST(ZoomRatio, DraggedHundredths) {
  const Box client(0, 0, 300, 300);
  const struct {
    std::array<int, 4> zoom;
    Box band;
    int expected;
  } rows[] = {
      {{1, 1, 1, 1}, {10, 20, 160, 120}, 200}, {{1, 1, 1, 1}, {0, 0, 3, 3}, 500},     {{1, 1, 1, 1}, {0, 0, 0, 0}, 500},
      {{1, 1, 1, 1}, {5, 0, 5, 200}, 150},     {{3, 2, 3, 2}, {0, 0, 100, 100}, 450}, {{7, 0, 9, 0}, {0, 0, 150, 150}, 200},
      {{1, 1, 1, 2}, {0, 0, 150, 100}, 150},   {{1, 1, 1, 1}, {0, 0, 130, 1}, 230},   {{1, 4, 1, 4}, {0, 0, 300, 300}, 25},
  };
  for (const auto& row : rows) EXPECT_EQ(filling_hundredths(row.zoom, row.band, client), row.expected) << &row - rows;
}

TEST(Lens, SourceRectangle) {
  const struct {
    std::array<int, 4> zoom, after;
    Box expected;  // around (100, 50), for 180 x 80
  } rows[] = {
      {{1, 2, 1, 2}, {10, 10, 10, 10}, {14, 14, 186, 86}}, {{2, 1, 2, 1}, {2, 1, 2, 1}, {57, 32, 143, 68}},
      {{0, 0, 3, 1}, {10, 10, 3, 1}, {14, 38, 186, 62}},   {{7, 2, 1, 2}, {7, 2, 10, 10}, {76, 14, 125, 86}},
      {{0, -3, 1, 1}, {10, 10, 1, 1}, {14, 14, 186, 86}},
  };
  for (const auto& row : rows) {
    std::array<int, 4> zoom = row.zoom;
    EXPECT_EQ(lens_source({100, 50}, zoom, 180, 80), row.expected) << &row - rows;
    EXPECT_EQ(zoom, row.after) << &row - rows;
  }
  for (std::array<int, 4> zoom : {std::array{2, 1, 0, 1}, std::array{2, 1, 1, 0}})
    EXPECT_EQ(lens_source({100, 50}, zoom, 180, 80), std::nullopt);
}

TEST(ZoomRatio, HostileNumbersDoNoHarm) {
  std::minstd_rand random(8);
  const int values[] = {std::numeric_limits<int>::min(), -65536, -1, 0, 1, 9, 10, 65537, std::numeric_limits<int>::max()};
  const auto any = [&] { return values[random() % std::size(values)]; };
  for (int i = 0; i < 20'000; ++i) {
    const Ratio ratio = stepped({any(), any()}, static_cast<ZoomAction>(random() % 7), kSteps);
    const Ratio filled = filling({any(), any(), any(), any()}, {any(), any(), any(), any()}, 1000);
    ASSERT_TRUE(filled.viewport >= 0 && filled.window >= 0) << ratio.viewport;
    corner_around({any(), any()}, {any(), any(), any(), any()});
    is_drag({any(), any()}, {any(), any()});
    std::array zoom = {any(), any(), any(), any()};
    ASSERT_LE(filling_hundredths(zoom, {any(), any(), any(), any()}, {any(), any(), any(), any()}), 500);
    lens_source({any(), any()}, zoom, any(), any());
  }
}

using Table = std::array<int, IMG_ZOOM_TABLE_ENTRIES>;

TEST(ZoomSteps, AreSetTogetherOrNotAtAllAndBelongToTheThread) {
  Table enlarge{}, reduce{};
  EXPECT_EQ(BZoomGetScaleSteps(enlarge.data(), reduce.data()), 10);
  EXPECT_EQ(enlarge, (Table{5, 10, 20, 40, 60, 80}));
  EXPECT_EQ(reduce, (Table{5, 10, 15, 30, 40, 50}));

  const Table good = {3, 7, 8, 20, 5, -1, 0, 0, 0, 0, 99}, full = {10, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const struct {
    int base;
    Table table;
  } refused[] = {{0, {}},
                 {-7, {1, -7}},
                 {1001, {1, 1001}},
                 {8, good},
                 {7, {0, 7}},
                 {7, {11, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}},
                 {10, {3, 10, 20, 20}},
                 {10, {2, 10, 9}},
                 {7, {-1, 7}}};
  for (const auto& [base, table] : refused) {
    EXPECT_EQ(BZoomSetScaleSteps(base, table.data(), nullptr), 0) << &table - &refused[0].table;
    EXPECT_EQ(BZoomSetScaleSteps(base, nullptr, table.data()), 0);
  }
  EXPECT_EQ(BZoomSetScaleSteps(7, full.data(), enlarge.data()), 0) << "one table fails: neither is taken";
  EXPECT_EQ(BZoomSetScaleSteps(0, nullptr, nullptr), 0);
  Table now{};
  EXPECT_EQ(BZoomGetScaleSteps(now.data(), nullptr), 10);
  EXPECT_EQ(now, enlarge);

  std::thread([&] {
    EXPECT_EQ(BZoomSetScaleSteps(7, full.data(), good.data()), 1);
    EXPECT_EQ(BZoomGetScaleSteps(enlarge.data(), reduce.data()), 7);
    EXPECT_EQ(enlarge, full);
    EXPECT_EQ(reduce, good) << "entries beyond the count are kept as they are";
    EXPECT_EQ(BZoomSetScaleSteps(1000, nullptr, nullptr), 1);
    EXPECT_EQ(BZoomGetScaleSteps(nullptr, reduce.data()), 1000);
    EXPECT_EQ(reduce, good);
  }).join();
  EXPECT_EQ(BZoomGetScaleSteps(nullptr, nullptr), 10);
}

}  // namespace
