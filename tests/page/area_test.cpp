// Scaling by area beside the plain sum over all pixels.
#include "common/area.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ranges>
#include <vector>

#include "common/forms.h"
#include "common/operations.h"
#include "common/problem.h"
#include "core/gray.h"
#include "core/pixel.h"
#include "page/drawn_page.h"
#include "support/dib.h"

using test::blank_page;
using test::noise;
using test::Table;
using namespace vorel;
using namespace vorel::programs;

namespace {

// Of a colour's component, or of the bit, over the area of a new pixel: in parts, as many to an old pixel as there are new ones.
uint64_t sum_under(const Picture& picture, Size size, int x, int y, int shift) {
  const auto shared = [](int64_t at, int64_t old, int64_t now, int64_t before) {
    return std::max<int64_t>(0, std::min((at + 1) * before, (old + 1) * now) - std::max(at * before, old * now));
  };
  uint64_t sum = 0;
  for (int row = 0; row < picture.height(); ++row)
    for (int column = 0; column < picture.width(); ++column) {
      const auto parts = shared(x, column, size.width, picture.width()) * shared(y, row, size.height, picture.height());
      const uint8_t* const bytes = picture.pixels().row_from_top(row).data();
      const uint32_t pixel = picture.depth() == 1   ? Pixel<1>::load(bytes, column)
                             : picture.depth() == 8 ? Pixel<8>::load(bytes, column)
                                                    : Pixel<24>::load(bytes, column);
      sum += static_cast<uint64_t>(parts) * (pixel >> shift & 0xFF);
    }
  return sum;
}

// Greys, or black and white in either order.
Picture noisy(Size size, int depth, bool starts_white) {
  std::vector<Rgb> colors(implied_colors(static_cast<uint32_t>(depth)));
  if (!colors.empty()) write_even_grays(colors);
  if (depth == 1 && starts_white) std::swap(colors[0], colors[1]);
  Picture picture =
      Picture::blank({.width = size.width, .height = size.height, .depth = static_cast<uint16_t>(depth)}, colors);
  std::ranges::copy(noise(static_cast<int>(picture.image_bytes().size()), 1, 8) | std::views::drop(40 + 1024) |
                        std::views::take(picture.image_bytes().size()),
                    picture.image_bytes().begin());
  return picture;
}

TEST(ScaledByArea, EveryPixelIsTheMeanOfItsArea) {
  for (const int depth : {1, 8, 24})
    for (const bool starts_white : {false, true})
      for (const Size from : {Size{70, 36}, Size{131, 9}, Size{6, 6}, Size{48, 10}, Size{1, 5}})
        for (const Size to : {Size{from.width / 2, from.height / 2}, Size{std::max(1, from.width - 2), from.height / 2},
                              Size{from.width, from.height / 3}, Size{3, 2}, Size{from.width * 2 / 3, from.height + 4}}) {
          if (to.width < 1 || to.height < 1) continue;
          SCOPED_TRACE(testing::Message() << depth << " bits, " << from.width << " x " << from.height << " to " << to.width
                                          << " x " << to.height);
          const Picture picture = noisy(from, depth, starts_white);
          const Picture result = scaled_by_area(picture, to);
          const auto whole = uint64_t{static_cast<uint32_t>(from.width)} * static_cast<uint32_t>(from.height);
          const uint64_t darker = starts_white ? 1 : 0;  // the bit that wins where both sides are equal
          for (int y = 0; y < to.height; ++y)
            for (int x = 0; x < to.width; ++x) {
              const uint8_t* const row = result.pixels().row_from_top(y).data();
              if (depth == 1) {
                ASSERT_EQ(Pixel<1>::load(row, x), 2 * sum_under(picture, to, x, y, 0) + darker > whole ? 1u : 0u)
                    << x << ' ' << y;
              } else {
                for (int c = 0; c < depth / 8; ++c)
                  ASSERT_EQ(row[x * (depth / 8) + c], (sum_under(picture, to, x, y, 8 * c) + whole / 2) / whole)
                      << x << ' ' << y;
              }
            }
        }
}

TEST(ScaledByArea, SumsOfTallColumnsExceed32Bits) {
  const int height = static_cast<int>((uint64_t{1} << 32) / 255) + 1;
  const Picture page = blank_page({1, height}, 8, Table::kGray, {});
  std::ranges::fill(page.image_bytes(), uint8_t{255});
  EXPECT_EQ(scaled_by_area(page, {1, 1}).pixels().row(0)[0], 255);
}

TEST(ScaledByArea, SidesHaveALimit) {
  const Picture page = blank_page({3, 3}, 8, Table::kGray, {});
  for (const Size size : {Size{kMostScaledPixels + 1, 2}, Size{2, kMostScaledPixels + 1}})
    EXPECT_THROW(scaled(page.copy(), size, Resampling::kArea), Problem);
}

}  // namespace
