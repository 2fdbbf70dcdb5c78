// The viewer's arithmetic and texts.
#include <array>
#include <future>
#include <gtest/gtest.h>

#include "viewer/logic/command_line.h"
#include "viewer/logic/histogram.h"
#include "viewer/logic/history.h"
#include "viewer/logic/key.h"
#include "viewer/logic/neighbours.h"
#include "viewer/logic/print_layout.h"
#include "viewer/logic/recent_files.h"
#include "viewer/logic/recently_used.h"
#include "viewer/logic/step_text.h"
#include "viewer/logic/texts.h"
#include "viewer/logic/work_queue.h"
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

// A pixel of the window belongs to the picture's pixel whose length it lies on.
TEST(ViewerZoom, FindsThePixelUnderADistance) {
  for (const Ratio ratio : {Ratio{16, 1}, kActualSize, Ratio{16, 24}, Ratio{701, 1200}}) {
    const int length = scaled_length(1200, ratio);
    EXPECT_EQ(pixel_under(0, ratio), 0);
    EXPECT_EQ(pixel_under(-1, ratio),
              ratio == kActualSize || ratio.viewport > ratio.window ? -1 : -ratio.window / ratio.viewport - 1);
    EXPECT_LT(pixel_under(length - 1, ratio), 1200);
    EXPECT_GE(pixel_under(length, ratio), 1199);
  }
  EXPECT_EQ(scaled_length(3, {1, 32}), 1) << "a picture never disappears";
}

TEST(ViewerHistory, ReturnsStepByStepAndKnowsWhatIsSaved) {
  History<int> history(0);
  EXPECT_TRUE(history.is_saved());
  for (int state = 1; state <= 3; ++state) history.change(state);
  history.undo();
  history.set_saved();
  history.undo();
  EXPECT_EQ(history.now(), 1);
  EXPECT_FALSE(history.is_saved());
  history.redo();
  EXPECT_TRUE(history.is_saved());
  history.undo();
  history.change(9);
  EXPECT_FALSE(history.can_redo());
  EXPECT_FALSE(history.is_saved()) << "the saved state is gone";
  for (int state = 10; state < 60; ++state) history.change(state);
  int steps = 0;
  for (; history.can_undo(); ++steps) history.undo();
  EXPECT_EQ(steps, 20);
  EXPECT_EQ(history.now(), 39);
}

TEST(ViewerCache, KeepsWhatWasUsedLast) {
  RecentlyUsed<int, char> cache(100);
  cache.keep(1, 'a', 40);
  cache.keep(2, 'b', 40);
  EXPECT_EQ(cache.find(1), 'a');
  cache.keep(3, 'c', 40);
  EXPECT_FALSE(cache.has(2));
  EXPECT_TRUE(cache.has(1) && cache.has(3));
  cache.keep(1, 'd', 60);
  EXPECT_EQ(cache.find(1), 'd');
  EXPECT_TRUE(cache.has(3));
  cache.keep(4, 'e', 101);
  EXPECT_FALSE(cache.has(4));
  cache.keep(5, 'f', 100);
  EXPECT_EQ(cache.find(5), 'f');
}

TEST(ViewerWork, UrgentWorkNeverWaitsForOther) {
  using enum WorkQueue::Urgency;
  std::promise<void> go_on, urgent_is_done, rest_is_done;
  std::vector<int> order;
  WorkQueue queue;
  queue.add(kSometime, [&, gate = go_on.get_future().share()] { gate.wait(); });
  queue.add(kSometime, [&] { order.push_back(3), rest_is_done.set_value(); });
  queue.add(kSoon, [&] { order.push_back(1); });
  queue.drop(kSoon);
  queue.add(kSoon, [&] { order.push_back(2); });
  queue.add(kNow, [&] { urgent_is_done.set_value(); });
  urgent_is_done.get_future().wait();
  go_on.set_value();
  rest_is_done.get_future().wait();
  EXPECT_EQ(order, (std::vector{2, 3}));
}

TEST(ViewerRecentFiles, AreFewAndTheLastComesFirst) {
  RecentFiles files = RecentFiles::parse("b\na\n\n");
  EXPECT_EQ(files.text(), "b\na\n");
  files.add("a");
  EXPECT_EQ(files.text(), "a\nb\n");
  for (char name = 'c'; name < 'z'; ++name) files.add(std::string(1, name));
  EXPECT_EQ(files.paths().size(), RecentFiles::kMost);
  EXPECT_EQ(files.paths().front(), "y");
  files.remove("x");
  EXPECT_EQ(files.paths()[1], "w");
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
  EXPECT_EQ(resolution_text(picture), L"");
  picture.x_per_metre = 8031;
  picture.y_per_metre = 3858;
  EXPECT_EQ(resolution_text(picture), L"204 x 98 dpi");
  EXPECT_EQ(pixel_text({12, 34, 0xFF0080}), L"12, 34: 255 0 128");
  EXPECT_EQ(doubled(L"a&b", L'&'), L"a&&b");
  EXPECT_EQ(plain_name(L"Scale, &linear..."), L"Scale, linear");
  EXPECT_EQ(as_reason("Not enough memory."), L"Not enough memory");
}

std::array<int, 4> numbers_of(Rect rect) { return {rect.x, rect.y, rect.width, rect.height}; }
using Box = std::array<int, 4>;

// Paper of 8 x 10 inches with margins of half an inch at the left and of one inch elsewhere, in dots that are twice as dense across.
const Sheet kSheet = {{200, 100}, {1600, 1000}, {100, 100, 1300, 800}};

TEST(ViewerPreview, FitsTheWindowWhateverItsShape) {
  const Rect printed = {100, 50, 600, 300};                                 // dots
  const PreviewBoxes high = preview_boxes(kSheet, {printed}, {104, 1024});  // 10 pixels an inch
  EXPECT_EQ(numbers_of(high.paper), (Box{12, 462, 80, 100}));
  EXPECT_EQ(numbers_of(high.printable), (Box{17, 472, 65, 80}));
  EXPECT_EQ(numbers_of(high.pictures[0]), (Box{22, 477, 30, 30}));
  const PreviewBoxes wide = preview_boxes(kSheet, {printed}, {1024, 224});  // 20 pixels an inch
  EXPECT_EQ(numbers_of(wide.paper), (Box{432, 12, 160, 200}));
  EXPECT_EQ(numbers_of(wide.pictures[0]), (Box{452, 42, 60, 60}));
  EXPECT_GE(preview_boxes(kSheet, {printed}, {0, 0}).paper.width, 0);
}

// 6.5 x 8 inches can be printed: two pictures of 3 x 2 inches are largest one above the other.
TEST(ViewerPreview, PutsSeveralOnASheet) {
  const DibHeader wide = {.width = 300, .height = 200, .depth = 1, .x_per_metre = 3937, .y_per_metre = 3937};
  DibHeader high = wide;
  std::swap(high.width, high.height);
  PrintLayout layout;
  layout.per_sheet = 2;
  const auto two = printed_boxes(layout, {wide, high}, kSheet);
  EXPECT_EQ(numbers_of(two[0]), (Box{74, 8, 1152, 384}));
  EXPECT_EQ(numbers_of(two[1]), (Box{394, 408, 512, 384}));
  layout.per_sheet = 4;
  const auto four = printed_boxes(layout, {high, high, high, wide}, kSheet);
  for (size_t i = 0; i < four.size(); ++i)
    for (size_t j = 0; j < i; ++j)
      EXPECT_TRUE(four[i].x >= four[j].x + four[j].width || four[i].y >= four[j].y + four[j].height);
  EXPECT_EQ(layout_text(layout), L"4 to a sheet");
  EXPECT_EQ(sheets_of(5, 2), (std::vector<std::vector<size_t>>{{0, 1}, {2, 3}, {4}}));
  EXPECT_EQ(printing_order(3, 2, true), (std::vector<size_t>{0, 1, 2, 0, 1, 2}));
  EXPECT_EQ(printing_order(3, 2, false), (std::vector<size_t>{0, 0, 1, 1, 2, 2}));
}

TEST(ViewerHistogram, ShowsRareLevels) {
  const std::vector<uint64_t> counts = {10'000, 1, 0, 2'500};
  EXPECT_EQ(bars_of(counts, 4, 100), (std::vector{100, 1, 0, 50}));
  EXPECT_EQ(bars_of(counts, 2, 10), (std::vector{10, 5}));
  EXPECT_EQ(bars_of(counts, 8, 10).size(), 8u);
}

TEST(ViewerCommandLine, QuotesAsProgramsTakeApart) {
  EXPECT_EQ(command_line({L"a.exe", L"b c", L"", LR"(say "x")", LR"(C:\my dir\)", LR"(C:\plain\)"}),
            LR"(a.exe "b c" "" "say \"x\"" "C:\my dir\\" C:\plain\)");
}

TEST(ViewerSteps, AreWrittenAsTheToolTakesThem) {
  const int numbers[] = {5, -30};
  EXPECT_EQ(filled("tone --brightness {0} --contrast {1}", numbers), "tone --brightness 5 --contrast -30");
  EXPECT_EQ(filled("x 0.{0:2}", numbers), "x 0.05");
  EXPECT_EQ(chained(chained("", "rotate 90"), "invert"), "rotate 90 | invert");
  EXPECT_EQ(as_lines("rotate 90 | invert"), "rotate 90\ninvert\n");
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
