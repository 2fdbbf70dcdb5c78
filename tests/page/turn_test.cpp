// Turns by fractions of a degree, beside shapes whose turned form is known.
#include "common/page/turn.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

#include "common/forms.h"
#include "common/problem.h"
#include "core/gray.h"
#include "core/pixel.h"
#include "core/resolution.h"

using namespace vorel;
using namespace vorel::programs;

namespace {

struct Place {
  double x, y;  // on paper, from the centre, right and down
};
using Shape = bool (*)(Place);

// Greys from black to white, or one of them made a colour, so that the table cannot be mixed.
enum class Table { kGray, kColor };

Picture blank_page(Size size, int depth, Table table, Resolution resolution) {
  std::array<Rgb, 256> colors{};
  const std::span<Rgb> used(colors.data(), implied_colors(static_cast<uint32_t>(depth)));
  if (!used.empty()) write_even_grays(used);
  if (table == Table::kColor && used.size() > 2) used[1].blue = 200;
  DibHeader header{.width = size.width, .height = size.height, .depth = static_cast<uint16_t>(depth)};
  header.x_per_metre = resolution.x;
  header.y_per_metre = resolution.y;
  return Picture::blank(header, used);
}

// Black where the shape is when turned back by some degrees, and white.
Picture drawn(Size size, int depth, Table table, Resolution resolution, Shape shape, double degrees) {
  Picture page = blank_page(size, depth, table, resolution);
  const double angle = degrees * std::numbers::pi / 180, sine = std::sin(angle), cosine = std::cos(angle);
  const uint32_t white = depth > 8 ? 0xFFFFFF : (1u << depth) - 1;
  with_depth(depth, [&](auto bits) {
    for (int row = 0; row < size.height; ++row)
      for (int column = 0; column < size.width; ++column) {
        const double x = (column + 0.5 - size.width / 2.0) / resolution.x,
                     y = (row + 0.5 - size.height / 2.0) / resolution.y;
        const bool is_black = shape({x * cosine + y * sine, -x * sine + y * cosine});
        Pixel<bits>::store(page.pixels().row_from_top(row).data(), column, is_black ? 0 : white);
      }
  });
  return page;
}

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
