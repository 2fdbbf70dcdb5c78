// Mappings, visible parts, scroll messages and painting without a state.
#include "display/mapping.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include "display/scrolling.h"
#include "display/stateless_painting.h"

using namespace vorel::display;

namespace {

constexpr UINT kFit = IMG_DISPLAY_FIT, kStretch = IMG_DISPLAY_STRETCH, kWide = IMG_DISPLAY_FIT_WIDTH;
constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();

struct Extent {
  int width, height;
};

// 96 dots per inch, zoom 1, positions 0.
ImgDisplayLayout layout_for(UINT flags, Extent image, Extent client) {
  ImgDisplayLayout layout{};
  layout.flags = flags;
  layout.zoomViewportX = layout.zoomWindowX = layout.zoomViewportY = layout.zoomWindowY = 1;
  layout.imageWidth = image.width, layout.imageHeight = image.height;
  layout.clientRight = client.width, layout.clientBottom = client.height;
  layout.screenDpiX = layout.screenDpiY = layout.imageDpiX = layout.imageDpiY = 96;
  return layout;
}

using Extents = std::array<int, 4>;  // viewport X, window X, viewport Y, window Y

Extents extents_of(const Mapping& mapping) {
  return {mapping.x.viewport, mapping.x.window, mapping.y.viewport, mapping.y.window};
}

void set_zoom(ImgDisplayLayout& layout, const Extents& zoom) {
  layout.zoomViewportX = zoom[0], layout.zoomWindowX = zoom[1];
  layout.zoomViewportY = zoom[2], layout.zoomWindowY = zoom[3];
}

TEST(Mapping, PlainZoomIsReducedTogether) {
  const struct {
    Extents zoom, expected;
  } rows[] = {
      {{1, 1, 1, 1}, {1, 1, 1, 1}},         {{16, 1, 16, 3}, {16, 1, 16, 3}},     {{12, 1, 12, 1}, {12, 1, 12, 1}},
      {{17, 2, 16, 2}, {8, 1, 8, 1}},       {{100, 100, 50, 50}, {12, 12, 6, 6}}, {{40, 10, 40, 10}, {10, 2, 10, 2}},
      {{80, 10, 80, 10}, {10, 1, 10, 1}},   {{24, 1, 24, 2}, {24, 1, 24, 2}},  // stops before a window extent of 0
      {{1, 8, 40, 40}, {1, 2, 10, 10}},     {{1, 1, 40, 40}, {1, 1, 40, 40}},  // a viewport extent stays at least 1
      {{10, 50, 10, 50}, {10, 50, 10, 50}},
  };
  for (const auto& row : rows) {
    ImgDisplayLayout layout = layout_for(0, {100, 100}, {50, 50});
    set_zoom(layout, row.zoom);
    EXPECT_EQ(extents_of(set_up_mapping(layout, Offsets::kReset)), row.expected) << testing::PrintToString(row.zoom);
  }
}

TEST(Mapping, OptionsAndResolutions) {
  const struct {
    UINT flags;
    Extent image, client;
    std::array<int, 4> dpi;  // screen X and Y, image X and Y
    Extents expected;
  } rows[] = {
      {IMG_DISPLAY_RESOLUTION, {400, 200}, {200, 200}, {96, 96, 300, 300}, {12, 37, 12, 37}},
      {IMG_DISPLAY_RESOLUTION, {400, 200}, {200, 200}, {8, 16, 10, 5}, {8, 10, 16, 5}},
      {0, {400, 200}, {200, 200}, {96, 96, 300, 300}, {1, 1, 1, 1}},
      {kFit, {400, 200}, {200, 200}, {96, 96, 96, 96}, {200, 400, 100, 200}},
      {kFit, {400, 200}, {100, 100}, {96, 96, 200, 100}, {100, 400, 100, 200}},
      {kFit, {401, 200}, {100, 100}, {96, 96, 200, 100}, {100, 401, 100, 200}},
      {kFit, {400, 200}, {100, 100}, {96, 96, 100, 200}, {100, 400, 25, 200}},
      {kFit, {400, 200}, {100, 100}, {100, 200, 96, 96}, {100, 400, 100, 200}},
      {kFit, {10, 20}, {100, 100}, {96, 96, 96, 96}, {50, 10, 100, 20}},
      {kFit | kStretch | kWide | IMG_DISPLAY_RESOLUTION, {400, 200}, {200, 200}, {96, 96, 96, 96}, {200, 400, 100, 200}},
      {kStretch, {400, 200}, {30, 70}, {96, 96, 200, 100}, {30, 400, 70, 200}},
      {kStretch | kWide | IMG_DISPLAY_RESOLUTION, {400, 200}, {30, 70}, {96, 96, 200, 100}, {30, 400, 70, 200}},
      {kWide, {400, 200}, {100, 10}, {96, 96, 96, 96}, {100, 400, 50, 200}},
      {kWide | IMG_DISPLAY_RESOLUTION, {400, 200}, {100, 10}, {96, 96, 200, 100}, {100, 400, 100, 200}},
  };
  for (const auto& row : rows) {
    ImgDisplayLayout layout = layout_for(row.flags, row.image, row.client);
    layout.screenDpiX = row.dpi[0], layout.screenDpiY = row.dpi[1];
    layout.imageDpiX = row.dpi[2], layout.imageDpiY = row.dpi[3];
    layout.hScrollPos = layout.vScrollPos = 7;
    const ImgDisplayLayout before = layout;
    EXPECT_EQ(extents_of(set_up_mapping(layout, Offsets::kReset)), row.expected) << &row - rows;
    const int position = (row.flags & kFit) != 0 ? 0 : 7;  // fitting resets the positions
    EXPECT_EQ(Point(layout.hScrollPos, layout.vScrollPos), Point(position, position)) << &row - rows;
    layout = before;
    EXPECT_EQ(extents_of(set_up_mapping(layout, Offsets::kKeep)), row.expected) << &row - rows;
    EXPECT_EQ(layout.hScrollPos, 7);
  }
}

TEST(Mapping, OriginsCentringRangesAndClamp) {
  const struct {
    UINT flags;
    int image, client, viewport, window, position;         // the same on both axes
    int offset, origin, image_origin, least, most, after;  // expected; `after`: the position after the clamp
  } rows[] = {
      {0, 400, 301, 1, 1, 0, 0, 0, 0, 0, 400, 0},
      {0, 400, 301, 1, 1, 500, 0, 500, -500, 0, 400, 400},
      {0, 400, 301, 1, 1, -3, 0, -3, 3, 0, 400, 0},
      {0, 400, 301, 3, 2, 30, 0, 20, -30, 0, 600, 30},
      {0, 400, 301, 3, 2, 31, 0, 21, -31, 0, 600, 31},  // the origin 20.67 rounds to 21, its offset -31.5 to -31
      {0, 0, 301, 1, 1, 5, 0, 5, -5, -1, -1, -1},
      {0, 4, 301, 1, 9, 0, 0, 0, 0, -1, -1, -1},  // less than half a pixel
      {IMG_DISPLAY_CENTRE, 100, 301, 1, 1, 0, -100, -100, 100, 100, 200, 0},
      {IMG_DISPLAY_CENTRE, 400, 301, 1, 1, 0, 49, 49, -49, -49, 351, 0},
      {IMG_DISPLAY_CENTRE, 400, 301, 1, 1, -60, 49, -11, 11, -49, 351, -49},
      {IMG_DISPLAY_CENTRE, 100, 301, 2, 1, 0, -50, -25, 50, 50, 250, 0},
  };
  for (const auto& row : rows) {
    ImgDisplayLayout layout = layout_for(row.flags, {row.image, row.image}, {row.client, row.client});
    set_zoom(layout, {row.viewport, row.window, row.viewport, row.window});
    layout.hScrollPos = layout.vScrollPos = row.position;
    const Mapping mapping = set_up_mapping(layout, Offsets::kReset);
    set_scroll_ranges(layout, mapping);
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(std::tuple(layout.centreOffsetX, layout.windowOriginX, layout.originLogicalX, layout.imageOriginDeviceX),
              std::tuple(row.offset, row.origin, row.origin, row.image_origin));
    EXPECT_EQ(std::tuple(layout.centreOffsetY, layout.windowOriginY, layout.originLogicalY, layout.imageOriginDeviceY),
              std::tuple(row.offset, row.origin, row.origin, row.image_origin));
    EXPECT_EQ(std::tuple(layout.hScrollMin, layout.hScrollMax), std::tuple(row.least, row.most));
    EXPECT_EQ(std::tuple(layout.vScrollMin, layout.vScrollMax), std::tuple(row.least, row.most));
    EXPECT_EQ(clamp_positions(layout), row.after == row.position);
    EXPECT_EQ(Point(layout.hScrollPos, layout.vScrollPos), Point(row.after, row.after));
  }
}

TEST(Mapping, BringsAnImagePointToTheCorner) {
  ImgDisplayLayout layout = layout_for(IMG_DISPLAY_CENTRE, {400, 400}, {301, 101});
  set_zoom(layout, {3, 2, 1, 1});
  bring_to_corner(layout, set_up_mapping(layout, Offsets::kReset), {30, 40});
  // 600 and 400 pixels are centred at -149 and -149: offsets (600 - 301) / 2 and (400 - 101) / 2.
  EXPECT_EQ(Point(layout.hScrollPos, layout.vScrollPos), Point(45 - 149, 40 - 149));
  set_up_mapping(layout, Offsets::kReset);
  EXPECT_EQ(Point(layout.originLogicalX, layout.originLogicalY), Point(30, 40));
}

TEST(VisiblePart, HasWholeGroupsAndAMargin) {
  const struct {
    int image, viewport, window, position;
    Box painted, expected;
  } rows[] = {
      {100, 3, 1, 0, {30, 30, 60, 60}, {9, 9, 21, 21}},       {400, 1, 4, 0, {10, 10, 20, 20}, {32, 32, 88, 88}},
      {400, 3, 2, 30, {0, 0, 30, 60}, {18, 18, 42, 62}},      {100, 1, 1, 0, {-5, -5, 500, 500}, {0, 0, 100, 100}},
      {100, 1, 1, 0, {99, 98, 500, 500}, {97, 96, 100, 100}},
  };
  for (const auto& row : rows) {
    ImgDisplayLayout layout = layout_for(0, {row.image, row.image}, {90, 90});
    set_zoom(layout, {row.viewport, row.window, row.viewport, row.window});
    layout.hScrollPos = layout.vScrollPos = row.position;
    const Mapping mapping = set_up_mapping(layout, Offsets::kReset);
    EXPECT_EQ(visible_part(layout, mapping, row.painted, false), row.expected) << &row - rows;
    EXPECT_EQ(visible_part(layout, mapping, row.painted, true), Box(0, row.expected.top, row.image, row.expected.bottom));
  }
}

TEST(Mapping, ContentMovesOnlyByWholeImagePixels) {
  const struct {
    int viewport, window, from, to;
    bool is_moved, whole_groups;
  } rows[] = {
      {1, 1, 5, 13, true, true},  {16, 1, 0, 16, true, true},  {16, 1, 0, 8, false, true},    {3, 2, 0, 3, true, true},
      {3, 2, 0, 4, false, true},  {16, 24, 0, 5, false, true},  // pixel 0 moves by 5, others do not
      {16, 24, 0, 8, true, true}, {1, 4, 0, 7, true, true},    {16, 24, 48, 64, true, false}, {1, 3, 14, 15, true, false},
  };
  for (const auto& row : rows) {
    ImgDisplayLayout layout = layout_for(0, {100, 100}, {20, 20});
    set_zoom(layout, {row.viewport, row.window, row.viewport, row.window});
    const auto mapping_at = [&](int position) {
      layout.hScrollPos = layout.vScrollPos = position;
      return set_up_mapping(layout, Offsets::kReset);
    };
    const Mapping from = mapping_at(row.from), to = mapping_at(row.to);
    const int way = row.from - row.to;
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(is_moved_by({way, way}, from, to), row.is_moved);
    EXPECT_FALSE(is_moved_by({way, way + 1}, from, to));
    EXPECT_EQ(shows_whole_groups(layout, to, false), row.whole_groups);
    if (!row.is_moved) continue;
    for (int i = -200; i < 200; ++i) ASSERT_EQ(to.x.to_device(i), from.x.to_device(i) + way);
  }
}

TEST(Mapping, RandomLayoutsFollowThePlainFormulas) {
  std::minstd_rand random(5);
  const auto any = [&](int least, int most) { return std::uniform_int_distribution(least, most)(random); };
  const UINT flags[] = {0, kFit, kStretch, kWide, IMG_DISPLAY_RESOLUTION};
  for (int i = 0; i < 3000; ++i) {
    ImgDisplayLayout layout = layout_for(flags[any(0, 4)] | (any(0, 1) != 0 ? IMG_DISPLAY_CENTRE : 0),
                                         {any(1, 3000), any(1, 3000)}, {any(1, 900), any(1, 900)});
    set_zoom(layout, {any(1, 90), any(1, 90), any(1, 90), any(1, 90)});
    layout.imageDpiX = any(1, 600), layout.imageDpiY = any(1, 600);
    layout.hScrollPos = any(-99, 999), layout.vScrollPos = any(-99, 999);
    const Mapping m = set_up_mapping(layout, Offsets::kReset);
    const Point p(any(-5000, 5000), any(-5000, 5000));
    const auto scaled = [](int n, int times, int by) { return static_cast<int>(std::floor(1.0 * n * times / by + 0.5)); };
    ASSERT_EQ(m.to_device(p), Point(scaled(p.x - layout.windowOriginX, m.x.viewport, m.x.window),
                                    scaled(p.y - layout.windowOriginY, m.y.viewport, m.y.window)));
    ASSERT_EQ(m.to_logical(p), Point(scaled(p.x, m.x.window, m.x.viewport) + layout.windowOriginX,
                                     scaled(p.y, m.y.window, m.y.viewport) + layout.windowOriginY));
    ASSERT_EQ(m.without_origin().to_device(Point{}), Point());

    // The drawn part covers the visible part of the painted box.
    const Box painted(any(0, 400), any(0, 400), any(401, 900), any(401, 900)), image = image_box(layout, m);
    const Box seen = intersection(image, painted), part = visible_part(layout, m, painted, false);
    if (seen.is_empty()) continue;
    const Box drawn = m.to_device(part);
    ASSERT_TRUE(intersection(drawn, seen) == seen) << i;
    ASSERT_TRUE(part.left % m.x.window == 0 && part.top % m.y.window == 0);
    ASSERT_EQ(intersection(part, Box(0, 0, layout.imageWidth, layout.imageHeight)), part);
  }
}

TEST(Mapping, HostileLayoutsStayInBounds) {
  std::minstd_rand random(6);
  const int values[] = {kLeast, kLeast + 1, -65536, -1, 0, 1, 2, 17, 65537, 1 << 30, kMost - 1, kMost};
  const auto any = [&] { return values[random() % std::size(values)]; };
  for (int i = 0; i < 20'000; ++i) {
    ImgDisplayLayout layout{};
    for (int k = 0; k < static_cast<int>(sizeof layout / sizeof(int)); ++k) reinterpret_cast<int*>(&layout)[k] = any();
    layout.flags = static_cast<UINT>(random());
    const Mapping m = set_up_mapping(layout, i % 2 == 0 ? Offsets::kReset : Offsets::kKeep);
    ASSERT_GT(std::min({m.x.viewport, m.x.window, m.y.viewport, m.y.window}), 0);
    set_scroll_ranges(layout, m);
    clamp_positions(layout);
    bring_to_corner(layout, m, {any(), any()});
    const Box part = visible_part(layout, m, {any(), any(), any(), any()}, i % 3 == 0);
    ASSERT_TRUE(part.is_empty() || intersection(part, Box(0, 0, layout.imageWidth, layout.imageHeight)) == part);
    ScrollAxis axis{any(), any(), any(), scroll_unit(any()), any()};
    if (axis.least > axis.most) std::swap(axis.least, axis.most);
    const int position = scrolled(axis, static_cast<ScrollCode>(random() % 9), static_cast<uint16_t>(any()));
    ASSERT_TRUE((position >= axis.least && position <= axis.most) || position == 0);  // a centred image
    const StatelessAxis once{any(), stateless_scale(exact_dots_per_inch(any()), any(), any(), any()), any() & kMost};
    const StatelessPart piece = stateless_part(once, any());
    if (piece.to_extent > 0 && piece.from_extent > 0) {
      ASSERT_TRUE(piece.from >= 0 && int64_t{piece.from} + piece.from_extent <= once.image) << i;
    }
    stateless_fit(once, {any(), once.scale, any() & kMost});
  }
}

TEST(Scrolling, UnitIsTheViewportExtentModulo16) {
  const int rows[][2] = {{1, 1}, {2, 2}, {12, 12}, {15, 15}, {16, 1}, {17, 1}, {18, 2}, {24, 8}, {0, 1}, {-5, 1}, {-18, 1}};
  for (const auto& [extent, unit] : rows) EXPECT_EQ(scroll_unit(extent), unit) << extent;
}

TEST(Scrolling, MessagesMoveByWholeUnits) {
  using enum ScrollCode;
  // Least, most, position, unit, the message's high word; the new position. The window is 101 pixels large.
  const struct {
    ScrollCode code;
    std::vector<std::array<int, 6>> rows;
  } tables[] = {{kLineOn,
                 {{0, 300, 100, 1, 0, 108},
                  {0, 300, 100, 12, 0, 112},
                  {0, 300, 100, 3, 0, 106},
                  {0, 300, 297, 1, 0, 300},
                  {-1, -1, -1, 12, 0, -1}}},
                {kLineBack, {{0, 300, 100, 1, 0, 92}, {0, 300, 100, 8, 0, 92}, {0, 300, 3, 12, 0, 0}}},
                {kPageOn, {{0, 300, 100, 1, 0, 150}}},
                {kPageBack, {{0, 300, 100, 12, 0, 52}}},
                {kThumbTrack,
                 {{0, 300, 100, 12, 130, 124},
                  {0, 300, 297, 12, 300, 300},
                  {0, 300, 297, 12, 299, 297},
                  {-49, 351, 0, 1, 0xFFE0, -32},
                  {0, 60'000, 0, 1, 50'000, 50'000}}},
                {kThumbPosition, {{0, 300, 100, 12, 75, 76}, {0, 300, 5, 12, 0, 0}}},
                {kStart, {{0, 300, 50, 1, 0, 0}, {0, 300, 50, 12, 0, 2}}},
                {kEnd, {{0, 300, 50, 1, 0, 300}, {0, 300, 50, 12, 0, 290}}},
                {static_cast<ScrollCode>(8), {{0, 300, 50, 12, 77, 50}}}};
  for (const auto& [code, rows] : tables)
    for (const auto& [least, most, position, unit, word, expected] : rows)
      EXPECT_EQ(scrolled({least, most, position, unit, 101}, code, static_cast<uint16_t>(word)), expected)
          << static_cast<int>(code) << " from " << position << " by " << unit;
}

TEST(Scrolling, SnappedPositionsAreWholeUnitsAwayOrAtAnEnd) {
  std::minstd_rand random(7);
  const auto any = [&](int least, int most) { return std::uniform_int_distribution(least, most)(random); };
  for (int i = 0; i < 5000; ++i) {
    ScrollAxis axis{any(-300, 0), any(1, 3000), 0, any(1, 15), 100};
    axis.position = any(axis.least, axis.most);
    const int wanted = any(-5000, 5000), position = snapped(axis, wanted);
    ASSERT_TRUE(position == axis.least || position == axis.most || (position - axis.position) % axis.unit == 0) << i;
    ASSERT_TRUE(position >= axis.least && position <= axis.most) << i;
    const int within = std::clamp(wanted, axis.least, axis.most);
    ASSERT_LT(std::abs(position - within), axis.unit) << i;
  }
}

TEST(StatelessPainting, ResolutionZoomAndOffsets) {
  EXPECT_EQ(dots_per_inch(11811), 300);
  EXPECT_EQ(dots_per_inch(19), 0);
  EXPECT_EQ(dots_per_inch(20), 1);
  EXPECT_LE(dots_per_inch(-11811), 0);
  EXPECT_NEAR(exact_dots_per_inch(11811), 300.000014, 1e-5);
  EXPECT_DOUBLE_EQ(stateless_scale(300, 96, 1, 1), 0.32);
  EXPECT_DOUBLE_EQ(stateless_scale(0, 96, 5, 2), 2.5);
  EXPECT_DOUBLE_EQ(stateless_scale(48, 96, 10, 30), 2.0 / 3);

  const StatelessAxis half{1001, 0.5, 200}, plain{100, 1, 200};
  EXPECT_EQ(half.displayed(), 501);
  EXPECT_TRUE(half.needs_scroll_bar());
  EXPECT_FALSE(plain.needs_scroll_bar());
  EXPECT_FALSE(StatelessAxis(200, 1, 200).needs_scroll_bar());
  const int offsets[][2] = {{0, 0}, {1, 1}, {500, 150}, {999, 300}, {1001, 301}};  // 301 * trunc(p / 2 + 0.5) / 501 + 0.5
  for (const auto& [position, offset] : offsets) EXPECT_EQ(half.offset(position), offset) << position;
  EXPECT_EQ(half.source_at(150), 300);
  const StatelessPart whole = stateless_part(plain, 0), scrolled = stateless_part(half, 500);
  EXPECT_EQ(std::tuple(whole.to, whole.to_extent, whole.from, whole.from_extent), std::tuple(0, 100, 0, 100));
  EXPECT_EQ(std::tuple(scrolled.to, scrolled.to_extent, scrolled.from, scrolled.from_extent), std::tuple(0, 200, 300, 400));
  const StatelessFit fit = stateless_fit({400, 0.5, 100}, {200, 2, 100});  // 200 x 400 into 100 x 100
  EXPECT_DOUBLE_EQ(fit.x, 0.125);
  EXPECT_DOUBLE_EQ(fit.y, 0.5);
}

}  // namespace
