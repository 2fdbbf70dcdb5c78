// Turns by fractions of a degree, beside shapes whose turned form is known.
#include "common/page/turn.h"

#include <cmath>
#include <gtest/gtest.h>

#include "common/forms.h"
#include "common/problem.h"
#include "page/drawn_page.h"

using namespace test;
using namespace vorel;
using namespace vorel::programs;

namespace {

// A share of the pixels: how much darker or lighter they are, all together.
double difference(const Picture& a, const Picture& b) {
  const Picture one = luminance_of(a), other = luminance_of(b);
  double sum = 0;
  for (int y = 0; y < one.height(); ++y)
    for (size_t x = 0; x < static_cast<size_t>(one.width()); ++x)
      sum += std::abs(one.pixels().row(y)[x] - other.pixels().row(y)[x]);
  return sum / 255 / one.width() / one.height();
}

bool is_hook(Place at) {
  const bool is_bar = at.x > -0.3 && at.x < 0.25 && at.y > -0.2 && at.y < -0.05;
  return is_bar || std::hypot(at.x - 0.2, at.y - 0.15) < 0.1;
}

TEST(TurnedBy, AShapeOnPaperTurns) {
  for (const int depth : {1, 4, 8, 24})
    for (const double degrees : {0.3, -1.25, 14.9, 44.5, -60.7, 179.6, 361.5})
      for (const auto& [resolution, size] :
           {std::pair(Resolution{200, 200}, Size{203, 151}), std::pair(Resolution{200, 100}, Size{203, 76})}) {
        for (const Table table : {Table::kGray, Table::kColor}) {
          SCOPED_TRACE(testing::Message() << depth << " bits " << degrees << " degrees, down " << resolution.y);
          const Picture turned = turned_by(drawn(size, depth, table, resolution, is_hook, 0), degrees, Background::kWhite);
          const Resolution now{turned.header().x_per_metre, turned.header().y_per_metre};
          EXPECT_EQ(now.x == resolution.x, std::abs(std::remainder(degrees, 180)) < 45 || resolution.x == resolution.y);
          const Picture wanted = drawn({turned.width(), turned.height()}, depth, table, now, is_hook, degrees);
          EXPECT_EQ(turned.depth(), depth);
          EXPECT_LT(difference(turned, wanted), 0.012);
        }
      }
}

// Nothing that reaches the edges is lost, and what is outside is background.
TEST(TurnedBy, TheCanvasHoldsThePicture) {
  const auto all = [](Place) { return true; };
  for (const int depth : {1, 8, 24})
    for (const double degrees : {0.5, -30.0}) {
      const Picture page = drawn({120, 80}, depth, Table::kGray, {100, 100}, all, 0);
      const Picture whole = turned_by(page.copy(), degrees, Background::kWhite);
      const Picture white = blank_page({whole.width(), whole.height()}, depth, Table::kGray, {});
      for (int y = 0; y < white.height(); ++y) std::ranges::fill(white.pixels().row(y), uint8_t{0xFF});
      const double black = difference(whole, white) * whole.width() * whole.height();
      EXPECT_NEAR(black, 120 * 80, 40) << depth << " bits " << degrees;
      const Picture same = turned_by(page.copy(), degrees, Background::kBlack, Canvas::kSame);
      EXPECT_EQ(same.width(), 120);
      EXPECT_EQ(difference(same, page), 0);
    }
}

TEST(TurnedBy, LinesOfOnePixelStayWhole) {
  for (const double degrees : {0.05, 0.7, -3.3, 11.0}) {
    Picture page = blank_page({400, 301}, 1, Table::kGray, {});
    for (int y = 0; y < 301; ++y) std::ranges::fill(page.pixels().row(y), static_cast<uint8_t>(y == 150 ? 0 : 0xFF));
    const Picture turned = turned_by(std::move(page), degrees, Background::kWhite, Canvas::kSame);
    int previous = -1;
    for (int x = 40; x < 360; ++x) {
      int first = -1, count = 0;
      for (int y = 0; y < 301; ++y)
        if (Pixel<1>::load(turned.pixels().row(y).data(), x) == 0 && count++ == 0) first = y;
      ASSERT_TRUE(count == 1 || (count == 2 && degrees > 10)) << degrees << " column " << x;
      if (previous >= 0) {
        ASSERT_LE(std::abs(first - previous), degrees > 10 ? 2 : 1) << degrees << " column " << x;
      }
      previous = first;
    }
  }
}

TEST(TurnedBy, QuartersMovePixelsAndBadAnglesAreRefused) {
  const Picture page = drawn({33, 20}, 8, Table::kColor, {100, 100}, is_hook, 12);
  for (const int quarters : {-1, 0, 2, 5})
    EXPECT_EQ(difference(turned_by(page.copy(), quarters * 90.0, Background::kWhite), turned(page.copy(), quarters * 90)),
              0);
  for (const double degrees : {std::nan(""), HUGE_VAL})
    EXPECT_THROW(turned_by(page.copy(), degrees, Background::kWhite), Problem);
}

}  // namespace
