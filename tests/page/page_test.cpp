// What is found out about pages, and done to them, on pages drawn with known properties.
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "common/forms.h"
#include "common/operations.h"
#include "common/page/content.h"
#include "common/page/orientation.h"
#include "common/page/slant.h"
#include "common/page/specks.h"
#include "common/page/threshold.h"
#include "common/problem.h"
#include "page/drawn_page.h"

using namespace test;
using namespace vorel;
using namespace vorel::programs;

namespace {

constexpr Resolution kUsual = {5906, 5906};  // 150 dpi
constexpr Size kA4 = {1240, 1754};

uint32_t mixed(uint32_t number) {
  number = (number ^ number >> 16) * 0x45D9F3Bu;
  return number ^ number >> 16;
}

// Lines of stems like those of letters, in metres from the centre. One in three rises above the small ones, one in twelve reaches
// below the line.
bool is_text(Place at) {
  constexpr double kLine = 0.005, kSmall = 0.0018, kTall = 0.0011, kStem = 0.0004, kLetter = 0.0014;
  if (std::abs(at.x) > 0.075 || std::abs(at.y) > 0.11) return false;
  const double line = std::floor(at.y / kLine), column = std::floor(at.x / kLetter);
  const double down = at.y - line * kLine - 0.0016, right = at.x - column * kLetter;
  const uint32_t letter = mixed(static_cast<uint32_t>(line + 1000) * 7919 + static_cast<uint32_t>(column + 1000));
  if (letter % 7 == 0 || right > 2 * kStem) return false;
  const bool is_stem = right<kStem, is_bar = down> kSmall * 0.8;
  const double top = letter % 3 == 0 ? -kTall : 0, bottom = kSmall + (letter % 12 == 1 ? kTall : 0);
  return down >= top && down < bottom && (is_stem || (is_bar && down < kSmall));
}

Picture text_page(double degrees, int depth = 1, Resolution resolution = kUsual, Size size = kA4) {
  return drawn(size, depth, Table::kGray, resolution, is_text, degrees);
}

TEST(Slant, OfDrawnTextIsFoundAtEveryDepthAndResolution) {
  for (const double degrees : {0.0, 0.1, -0.73, 4.2, -14.6}) {
    for (const auto& [depth, resolution, size] :
         {std::tuple(1, kUsual, kA4), std::tuple(1, Resolution{5906, 2953}, Size{1240, 877}), std::tuple(8, kUsual, kA4)}) {
      const Slant slant = find_slant(text_page(degrees, depth, resolution, size));
      EXPECT_NEAR(slant.degrees, degrees, 0.05) << depth << " bits, " << resolution.y;
      EXPECT_TRUE(slant.is_sure());
      EXPECT_FALSE(slant.goes_down);
      EXPECT_TRUE(slant.is_worth_turning() == (degrees != 0) || degrees == 0.1);  // so little may be less than is sure
    }
    const Slant sideways = find_slant(turned(text_page(degrees), 90));
    EXPECT_NEAR(sideways.degrees, degrees, 0.05);
    EXPECT_TRUE(sideways.goes_down);
  }
}

TEST(Slant, IsWorthTurningHoweverSure) {
  EXPECT_TRUE((Slant{.degrees = 3, .uncertainty = 0.1, .confidence = 0.2}).is_worth_turning());
  EXPECT_FALSE((Slant{.degrees = 3, .uncertainty = 4, .confidence = 1}).is_worth_turning());
}

TEST(Slant, IsNotFoundWhereThereAreNoLines) {
  std::minstd_rand random;
  const auto rings = [](Place at) { return std::fmod(std::hypot(at.x, at.y), 0.01) < 0.0004; };
  const auto specks = [&](Place) { return random() % 500 == 0; };
  const auto nothing = [](Place) { return false; };
  for (const Shape& shape : {Shape(rings), Shape(specks), Shape(nothing)})
    EXPECT_FALSE(find_slant(drawn(kA4, 1, Table::kGray, kUsual, shape, 0)).is_sure());
  EXPECT_FALSE(find_slant(blank_page({1, 1}, 1, Table::kGray, {})).is_sure());
  // A slanted page in front of a scanner's straight dark edge.
  Picture page = text_page(3);
  for (int y = 0; y < 200; ++y) std::ranges::fill(page.pixels().row(y), uint8_t{0});
  EXPECT_NEAR(find_slant(page).degrees, 3, 0.05);
}

TEST(Orientation, OfDrawnTextIsFoundAndOthersAreLeftAlone) {
  for (const int turn : {0, 90, 180, 270}) {
    const Orientation found = find_orientation(turned(text_page(1.5), turn));
    EXPECT_TRUE(found.is_sure());
    EXPECT_EQ((found.turn + turn) % 360, 0);
  }
  const auto capitals = [](Place at) { return std::fmod(at.y + 1, 0.005) < 0.0025 && std::fmod(at.x + 1, 0.0015) < 0.0005; };
  EXPECT_FALSE(find_orientation(drawn(kA4, 1, Table::kGray, kUsual, capitals, 0)).is_sure());
  // A grey strip above a dark panel is like a line of which there is less than between lines.
  const Picture page = text_page(0, 8);
  for (int y = 0; y < page.height(); ++y) {
    const uint8_t level = y < 10 || (y >= 40 && y < 70) ? 255 : y < 40 ? 90 : 0;
    std::ranges::fill(page.pixels().row_from_top(y).first(310), level);
  }
  const Orientation beside_panel = find_orientation(page);
  EXPECT_TRUE(beside_panel.is_sure());
  EXPECT_EQ(beside_panel.turn, 0);
}

TEST(Content, IsWhatIsNeitherBorderNorSpeck) {
  const auto scan = [](Place at) {  // 210 x 297 mm
    const bool is_border = at.x < -0.095 || at.y > 0.14, is_speck = std::hypot(at.x - 0.08, at.y + 0.12) < 0.00015;
    const bool is_block = at.x > -0.05 && at.x < 0.03 && at.y > -0.1 && at.y < 0.02 && std::fmod(at.y + 1, 0.004) < 0.002;
    return is_border || is_speck || is_block;
  };
  const auto millimetres = [](double value) { return static_cast<int>(value * 5.906); };
  const auto expect_box = [&](const Rect& box, double left, double top, double width, double height) {
    const int slack = millimetres(2);
    EXPECT_NEAR(box.x, millimetres(105 + left), slack);
    EXPECT_NEAR(box.y, millimetres(148.5 + top), slack);
    EXPECT_NEAR(box.width, millimetres(width), 2 * slack);
    EXPECT_NEAR(box.height, millimetres(height), 2 * slack);
  };
  const Picture page = drawn(kA4, 1, Table::kGray, kUsual, scan, 0);
  expect_box(content_box(page, {0, 0}).value(), -50, -100, 80, 119);
  expect_box(content_box(page, {millimetres(5), millimetres(5)}).value(), -55, -105, 90, 129);
  expect_box(content_box(page, {9999, 9999}).value(), -95, -148.5, 200, 288);  // borders stay outside
  EXPECT_NEAR(ink_percent(page, 0), 100 * 80 * 60 / 210.0 / 297, 1);

  const auto blank = [](Place at) { return at.x < -0.095 || std::hypot(at.x - 0.08, at.y + 0.12) < 0.00015; };
  for (const int depth : {1, 8, 24}) {
    const Picture empty = drawn(kA4, depth, Table::kGray, kUsual, blank, 0);
    EXPECT_FALSE(content_box(empty, {10, 10})) << depth;
    EXPECT_LT(ink_percent(empty, 0.03), 0.001) << depth;
    EXPECT_GT(ink_percent(text_page(0, depth), 0.03), 1) << depth;
  }
}

// Removed by filling from each pixel.
Picture plainly_despeckled(Picture page, Size most, uint32_t color) {
  const DibView rows = page.pixels();
  const auto get = [&](int x, int y) { return Pixel<1>::load(rows.row(y).data(), x); };
  std::vector<bool> seen(static_cast<size_t>(page.width() * page.height()));
  for (int start = 0; start < page.width() * page.height(); ++start) {
    std::vector<int> found;
    const auto visit = [&](int x, int y) {
      if (x < 0 || y < 0 || x >= page.width() || y >= page.height() || get(x, y) != color) return;
      const auto at = static_cast<size_t>(y * page.width() + x);
      if (!seen[at]) found.push_back(static_cast<int>(at));
      seen[at] = true;
    };
    visit(start % page.width(), start / page.width());
    int left = page.width(), right = 0, top = page.height(), bottom = 0;
    for (size_t i = 0; i < found.size(); ++i) {
      const int x = found[i] % page.width(), y = found[i] / page.width();
      left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
      for (int j = -1; j <= 1; ++j)
        for (int k = -1; k <= 1; ++k) visit(x + k, y + j);
    }
    if (right - left < most.width && bottom - top < most.height)
      for (const int at : found) Pixel<1>::store(rows.row(at / page.width()).data(), at % page.width(), color ^ 1);
  }
  return page;
}

TEST(Specks, AgreeWithFilling) {
  std::minstd_rand random(5);
  for (const Size size : {Size{1, 1}, Size{63, 40}, Size{64, 9}, Size{200, 90}})
    for (const unsigned density : {3u, 5u, 12u})
      for (const Size most : {Size{1, 1}, Size{3, 2}, Size{20, 30}}) {
        Picture page = blank_page(size, 1, Table::kGray, {});
        for (int y = 0; y < size.height; ++y)
          for (int x = 0; x < size.width; ++x)
            Pixel<1>::store(page.pixels().row(y).data(), x, (random() >> 8) % density != 0);
        for (const auto& [colors, color] : {std::pair(SpeckColors::kInk, 0u), std::pair(SpeckColors::kPaper, 1u)}) {
          const Despeckled done = despeckled(page.copy(), most, colors);
          EXPECT_EQ(compared(done.picture, plainly_despeckled(page.copy(), most, color)).different, 0u)
              << size.width << " wide, one in " << density;
          EXPECT_EQ(compared(done.picture, page).different, done.pixels);
        }
      }
  EXPECT_THROW(despeckled(blank_page({2, 2}, 8, Table::kGray, {}), {1, 1}, SpeckColors::kInk), Problem);
}

TEST(Threshold, SauvolaAgreesWithSummingEachWindow) {
  std::minstd_rand random(7);
  Picture page = blank_page({61, 43}, 8, Table::kGray, {});
  for (int y = 0; y < 43; ++y)
    for (uint8_t& level : page.pixels().row(y)) level = static_cast<uint8_t>((random() >> 8) % (y < 20 ? 256 : 40));
  for (const int window : {1, 3, 15, 201}) {
    const Sauvola local{.window = window, .k = 0.3};
    const Picture result = thresholded(page.copy(), local);
    for (int y = 0; y < 43; ++y)
      for (int x = 0; x < 61; ++x) {
        double count = 0, sum = 0, squares = 0;
        for (int j = std::max(0, y - window / 2); j <= std::min(42, y + window / 2); ++j)
          for (int i = std::max(0, x - window / 2); i <= std::min(60, x + window / 2); ++i, ++count) {
            const double level = page.pixels().row(j)[static_cast<size_t>(i)];
            sum += level, squares += level * level;
          }
        const double mean = sum / count, deviation = std::sqrt(std::max(0.0, squares / count - mean * mean));
        const double level = mean * (1 + local.k * (deviation / 128 - 1)),
                     own = page.pixels().row(y)[static_cast<size_t>(x)];
        if (std::abs(own - level) < 1e-6) continue;
        ASSERT_EQ(Pixel<1>::load(result.pixels().row(y).data(), x), own > level ? 1u : 0u) << window << ' ' << x << ' ' << y;
      }
  }
}

TEST(Threshold, SeparatesTwoTones) {
  Picture page = blank_page({100, 10}, 24, Table::kGray, {});
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 100; ++x) Pixel<24>::store(page.pixels().row(y).data(), x, x < 30 ? 0x202020 : 0xC8C8C8);
  EXPECT_EQ(otsu_level(page), (33 + 200 + 1) / 2);
  const auto whites = [&](int level) {
    const Picture result = thresholded(page.copy(), level);
    return compared(result, blank_page({100, 10}, 1, Table::kGray, {})).different;
  };
  EXPECT_EQ(whites(otsu_level(page)), 700u);
  EXPECT_EQ(whites(32), 1000u);
  EXPECT_EQ(whites(33), 700u);
  EXPECT_EQ(whites(201), 0u);
}

}  // namespace
