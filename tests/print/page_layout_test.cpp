// Where images come to lie on a page.
#include "print/page_layout.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace vorel;
using namespace vorel::print;

namespace {

using Dots = std::array<int, 4>;  // left, top, width, height

Dots dots_of(Rect rect) { return {rect.x, rect.y, rect.width, rect.height}; }

struct Layout {
  bool fits, stretches, centers_down, centers_across;

  ImgPrintOptions options() const {
    ImgPrintOptions options = {};
    options.fitProportionally = fits;
    options.stretchToPage = stretches;
    options.centreVertically = centers_down;
    options.centreHorizontally = centers_across;
    options.useImageDpi = 1;
    return options;
  }
};

constexpr Size kPage = {2329, 3358};

Dots placed(const Layout& layout, Size pixels, DotDensity image) {
  return dots_of(place_image(layout.options(), pixels, image, printable_page(kPage, {300, 300})).dots);
}

TEST(Placement, IsTheOneWorkedOutByHand) {
  const DotDensity image = {100, 50};  // 400 x 300 pixels are 4 x 6 inches, 1200 x 1800 dots
  EXPECT_EQ(placed({false, false, false, false}, {400, 300}, image), (Dots{0, 0, 1200, 1800}));
  EXPECT_EQ(placed({false, false, true, false}, {400, 300}, image), (Dots{0, 779, 1200, 1800}));
  EXPECT_EQ(placed({false, false, false, true}, {400, 300}, image), (Dots{565, 0, 1200, 1800}));  // 564.5 and a half
  EXPECT_EQ(placed({false, true, true, true}, {400, 300}, image), (Dots{0, 0, 2329, 3358}));
  EXPECT_EQ(placed({true, false, true, true}, {400, 300}, image), (Dots{45, 0, 2239, 3358}));  // 3358 / 1.5 = 2238.67
  EXPECT_EQ(placed({true, true, false, false}, {400, 300}, image), (Dots{0, 0, 2239, 3358})) << "fitting wins";
  // Larger than the page by 71 and 242 dots: half of that hangs over, truncated towards zero.
  EXPECT_EQ(placed({false, false, true, true}, {2400, 3600}, {300, 300}), (Dots{-35, -120, 2400, 3600}));
  // An axis without pixels scales nothing, and does not spoil the other one.
  EXPECT_EQ(placed({false, true, false, false}, {0, 300}, image), (Dots{0, 0, 0, 3358}));
  EXPECT_EQ(placed({true, false, false, false}, {0, 3000}, image)[3], 3358);
}

TEST(Placement, StandsNumbersThatAreNone) {
  const ImgPrintOptions fit = Layout{true, false, true, true}.options(), plain = Layout{}.options();
  for (const ImgPrintOptions& options : {fit, plain})
    for (const DotDensity printer : {DotDensity{0, 0}, {1, 1}, {4e9f, 4e9f}}) {
      const Placement placement = place_image(options, {INT_MAX, 1}, {1, 1}, printable_page({INT_MAX, 0}, printer));
      EXPECT_LE(std::abs(placement.dots.width), 1 << 27);
    }
}

TEST(ImageResolution, ComesFromTheCallerTheHeaderOrThePrinter) {
  const DotDensity printer = {300, 600};
  ImgPrintOptions options = {};
  const auto resolution = [&](std::array<int, 2> header_per_metre, const int* given) {
    DibHeader header;
    header.x_per_metre = header_per_metre[0];
    header.y_per_metre = header_per_metre[1];
    const DotDensity found = image_resolution(options, given, header, printer);
    return std::array{found.x, found.y};
  };
  const std::array<int, 2> given = {72, 36}, none = {0, 36}, negative = {72, -1};
  const std::array printers = {300.0f, 600.0f};
  EXPECT_EQ(resolution({11811, 11811}, given.data()), printers) << "when the image's own is not wanted";
  options.useImageDpi = 1;
  EXPECT_EQ(resolution({11811, 11811}, given.data()), (std::array{72.0f, 36.0f}));
  EXPECT_EQ(resolution({11811, 5906}, nullptr), (std::array{11811 * 0.025400052f, 5906 * 0.025400052f}));
  for (const auto& header : {std::array{0, 0}, {11811, 0}, {0, 11811}, {-1, 11811}})
    EXPECT_EQ(resolution(header, nullptr), printers);
  EXPECT_EQ(resolution({11811, 11811}, none.data()), printers);
  EXPECT_EQ(resolution({11811, 11811}, negative.data()), printers);
}

TEST(Bands, TakeTheirPartOfTheImage) {
  // An image of 10 x 20 pixels, 3 x 2 dots each.
  const Rect image = {100, 50, 30, 40};
  const auto part = [&](Rect band) { return part_in_band(image, {10, 20}, band); };
  EXPECT_EQ(dots_of(part({0, 0, 2000, 60}).dots), (Dots{100, 50, 30, 10}));
  EXPECT_EQ(dots_of(part({0, 0, 2000, 60}).pixels), (Dots{0, 0, 10, 5}));
  EXPECT_EQ(dots_of(part({104, 53, 9, 100}).dots), (Dots{104, 53, 9, 37}));
  EXPECT_EQ(dots_of(part({104, 53, 9, 100}).pixels), (Dots{1, 2, 3, 18})) << "4/3 and 13/3 across, 3/2 down, a half goes up";
  EXPECT_EQ(dots_of(part({101, 89, 1, 1}).pixels), (Dots{0, 19, 1, 1})) << "less than a pixel shows one";
  for (const Rect beside : {Rect{0, 0, 100, 50}, {130, 50, 9, 9}, {100, 90, 30, 9}, {110, 60, 0, 0}, {110, 60, -5, 3}})
    EXPECT_EQ(dots_of(part(beside).dots), (Dots{0, 0, 0, 0}));
}

TEST(Bands, AddUpToTheImage) {
  for (const Size pixels : {Size{7, 5}, {100, 90}, {640, 480}})
    for (const int band_rows : {1, 16, 97, 400}) {
      const Rect image = {-20, 13, 300, 400};
      int dots = 0, last_pixel = 0;
      for (int top = 0; top < 450; top += band_rows) {
        const PlacedPart part = part_in_band(image, pixels, {0, top, 1000, band_rows});
        if (part.dots.width == 0) continue;
        EXPECT_EQ(part.dots.y, 13 + dots);
        dots += part.dots.height;
        // No pixel row is left out, and neighbours share one at most.
        EXPECT_LE(part.pixels.y, last_pixel);
        EXPECT_GE(part.pixels.y, last_pixel - 1);
        last_pixel = part.pixels.y + part.pixels.height;
      }
      EXPECT_EQ(dots, 400);
      EXPECT_EQ(last_pixel, pixels.height);
    }
}

}  // namespace
