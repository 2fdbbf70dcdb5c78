// The viewer's arithmetic and texts.
#include <array>
#include <gtest/gtest.h>

#include "viewer/logic/key.h"
#include "viewer/logic/neighbours.h"
#include "viewer/logic/print_layout.h"
#include "viewer/logic/texts.h"
#include "viewer/logic/zoom.h"

namespace vorel::viewer {
namespace {

TEST(ViewerKeys, AreNamedAsMenusShowThem) {
  EXPECT_EQ(key_text({'S', true, true}), L"Ctrl+Shift+S");
  EXPECT_EQ(key_text({kPageDownKey}), L"PgDn");
  EXPECT_EQ(key_text({kRightKey, true}), L"Ctrl+Right");
  EXPECT_EQ(key_text({}), L"");
}

TEST(ViewerZoom, GivesTheRatioNearestToAScale) {
  EXPECT_EQ(ratio_for(1), kActualSize);
  EXPECT_EQ(ratio_for(2.5), (Ratio{40, kZoomBase}));
  EXPECT_EQ(ratio_for(0.4), (Ratio{kZoomBase, 40}));
  EXPECT_EQ(ratio_for(0.0001), (Ratio{kZoomBase, 512}));
  EXPECT_EQ(ratio_for(1000), (Ratio{256, kZoomBase}));
}

TEST(ViewerZoom, HasTablesThatTheLibraryTakes) {
  for (const int* table : {kEnlargeSteps, kReduceSteps}) {
    EXPECT_EQ(table[1], kZoomBase);
    ASSERT_LE(table[0], 10);
    for (int i = 2; i <= table[0]; ++i) EXPECT_GT(table[i], table[i - 1]);
  }
}

// The display halves both numbers of a ratio until the first is below 17: nothing may be lost on the way.
TEST(ViewerZoom, HasStepsThatAreDrawnExactly) {
  for (int i = 1; i <= kEnlargeSteps[0]; ++i) {
    int viewport = kEnlargeSteps[i], window = kZoomBase;
    for (; viewport > 16; viewport /= 2, window /= 2) EXPECT_EQ(viewport % 2 + window % 2, 0) << kEnlargeSteps[i];
  }
}

TEST(ViewerZoom, RoundsPerCents) {
  EXPECT_EQ(percent(0.3333), 33);
  EXPECT_EQ(percent(16), 1600);
  EXPECT_EQ(percent(0.0001), 1);
}

TEST(ViewerBars, ComeWhereAPictureIsLarger) {
  const struct {
    Extent picture;
    Bars bars;
  } cases[] = {
      {{100, 100}, {false, false}}, {{101, 80}, {true, false}},
      {{80, 101}, {false, true}},   {{101, 90}, {true, true}},  // the bar across covers the last rows
      {{90, 101}, {true, true}},    {{200, 200}, {true, true}},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(bars_needed(row.picture, {100, 100}, {15, 15}), row.bars) << row.picture.width << " x " << row.picture.height;
  }
  EXPECT_TRUE(needs_bar_when_as_wide({50, 60}, {100, 100}));
  EXPECT_FALSE(needs_bar_when_as_wide({60, 50}, {100, 100}));
}

TEST(ViewerScrolling, GoesByWholeImagePixelsAndTheLibrarysSteps) {
  const struct {
    Ratio ratio;
    int step;
  } cases[] = {{{1, 1}, 1},   {{16, 8}, 2},   {{16, 1}, 16}, {{12, 8}, 12},     {{12, 1}, 12},
               {{16, 24}, 2}, {{16, 512}, 1}, {{7, 3}, 7},   {{701, 1200}, 13}, {{1600, 1200}, 4}};
  for (const auto& row : cases) EXPECT_EQ(scroll_step(row.ratio), row.step) << row.ratio.viewport << ":" << row.ratio.window;
}

TEST(ViewerScrolling, KeepsAWindowfulInView) {
  ScrolledAxis axis{.position = 1, .first = -50, .picture = 300, .window = 100, .step = 12};
  const int positions[][2] = {{-80, -50}, {-50, -50}, {6, 1},     {8, 13},   {25, 25},
                              {-3, 1},    {149, 145}, {150, 157}, {999, 157}};
  for (const auto& [wanted, expected] : positions) EXPECT_EQ(position_in_view(axis, wanted), expected) << wanted;
  axis.position = 157;
  EXPECT_EQ(position_in_view(axis, 157), 157) << "a step beyond the last position is in view";
  axis.position = 160;
  EXPECT_EQ(position_in_view(axis, 160), 160);
  axis.position = 250;
  EXPECT_EQ(position_in_view(axis, 250), 154);
  axis = {.position = 5, .first = 5, .picture = 100, .window = 100, .step = 1};
  EXPECT_EQ(position_in_view(axis, 80), 5) << "nothing to scroll";
}

TEST(ViewerWheel, LosesNoPartOfANotch) {
  WheelSteps wheel(3);
  int steps = 0;
  for (int i = 0; i < 8; ++i) steps += wheel.turn(15);
  EXPECT_EQ(steps, 3);
  EXPECT_EQ(wheel.turn(-240), -6);
}

TEST(ViewerFolder, CountsAsPeopleDo) {
  const std::vector<std::wstring> names = {L"page10.tif", L"Page9.tif", L"page010a.tif", L"cover.png", L"page9b.tif"};
  const std::vector<std::wstring> in_order = {L"cover.png", L"Page9.tif", L"page9b.tif", L"page10.tif", L"page010a.tif"};
  for (size_t i = 0; i < names.size(); ++i) {
    const std::wstring& name = in_order[i];
    const auto next = i + 1 < names.size() ? std::optional(in_order[i + 1]) : std::nullopt;
    const auto before = i > 0 ? std::optional(in_order[i - 1]) : std::nullopt;
    EXPECT_EQ(neighbour(names, name, 1), next) << i;
    EXPECT_EQ(neighbour(names, name, -1), before) << i;
  }
  EXPECT_EQ(neighbour(names, L"gone.gif", 1), L"Page9.tif");
  EXPECT_EQ(neighbour(names, L"gone.gif", -1), L"cover.png");
}

TEST(ViewerTexts, TellAboutAPicture) {
  PictureFacts picture{.name = L"fax.tif", .width = 640, .height = 480, .depth = 1, .percent = 50};
  EXPECT_EQ(title_text({}), L"Vorel Viewer");
  EXPECT_EQ(title_text(picture), L"fax.tif - 50 % - Vorel Viewer");
  EXPECT_EQ(page_text(picture), L"1 page");
  picture.page = 2;
  picture.pages = 5;
  picture.changed = true;
  EXPECT_EQ(title_text(picture), L"fax.tif* (page 2 of 5) - 50 % - Vorel Viewer");
  EXPECT_EQ(size_text(picture), L"640 x 480 pixels, 1 bit");
  EXPECT_EQ(plain_name(L"Scale, &linear..."), L"Scale, linear");
  EXPECT_EQ(as_reason("Not enough memory."), L"Not enough memory");
}

std::array<int, 4> numbers_of(Rect rect) { return {rect.x, rect.y, rect.width, rect.height}; }
using Box = std::array<int, 4>;

// Paper of 8 x 10 inches with margins of half an inch at the left and of one inch elsewhere, in dots that are twice as dense across.
const Sheet kSheet = {{200, 100}, {1600, 1000}, {100, 100, 1300, 800}};

TEST(ViewerPreview, FitsTheWindowWhateverItsShape) {
  const Rect printed = {100, 50, 600, 300};                               // dots
  const PreviewBoxes high = preview_boxes(kSheet, printed, {104, 1024});  // 10 pixels an inch
  EXPECT_EQ(numbers_of(high.paper), (Box{12, 462, 80, 100}));
  EXPECT_EQ(numbers_of(high.printable), (Box{17, 472, 65, 80}));
  EXPECT_EQ(numbers_of(high.picture), (Box{22, 477, 30, 30}));
  const PreviewBoxes wide = preview_boxes(kSheet, printed, {1024, 224});  // 20 pixels an inch
  EXPECT_EQ(numbers_of(wide.paper), (Box{432, 12, 160, 200}));
  EXPECT_EQ(numbers_of(wide.picture), (Box{452, 42, 60, 60}));
  EXPECT_GE(preview_boxes(kSheet, printed, {0, 0}).paper.width, 0);
}

TEST(ViewerPreview, PlacesPicturesByTheChosenLayout) {
  const DibHeader picture = {
      .width = 300, .height = 200, .depth = 1, .x_per_metre = 3937, .y_per_metre = 3937};  // 3 x 2 inches
  PrintLayout layout;
  EXPECT_EQ(numbers_of(printed_box(layout, picture, kSheet)), (Box{0, 183, 1300, 433}));
  EXPECT_EQ(layout_text(layout), L"fit, centred");
  layout.sizing = PageSizing::kTrueSize;
  layout.is_centred_down = false;
  EXPECT_EQ(numbers_of(printed_box(layout, picture, kSheet)), (Box{350, 0, 600, 200}));
  EXPECT_EQ(layout_text(layout), L"true size, centred across");
  layout.goes_by_resolution = false;
  EXPECT_EQ(numbers_of(printed_box(layout, picture, kSheet)), (Box{500, 0, 300, 200}));
  EXPECT_EQ(printed_size_text({0, 0, 300, 200}, kSheet), L"38 x 51 mm on paper of 203 x 254 mm");
  layout = {PageSizing::kStretch, false, false, false};
  EXPECT_EQ(numbers_of(printed_box(layout, picture, kSheet)), (Box{0, 0, 1300, 800}));
  EXPECT_EQ(layout_text(layout), L"stretch, a dot a pixel");
}

}  // namespace
}  // namespace vorel::viewer
