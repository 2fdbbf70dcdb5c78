// Pictures reduced for a screen, beside the exact mean of each area.
#include "common/reductions.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "common/area.h"
#include "common/forms.h"
#include "support/dib.h"

using namespace vorel;
using namespace vorel::programs;

namespace {

constexpr Rgb kInk{60, 30, 10, 0}, kPaper{200, 240, 255, 0};

Picture noisy(Size size, int depth) {
  std::vector<Rgb> colors;
  if (depth == 1) colors = {kInk, kPaper};
  for (int i = 0; depth == 8 && i < 256; ++i) {
    const auto level = static_cast<uint8_t>(i);
    colors.push_back({level, level, level, 0});
  }
  for (int i = 0; depth == 4 && i < 16; ++i)
    colors.push_back({static_cast<uint8_t>(i * 16), static_cast<uint8_t>(255 - i), 7, 0});
  Picture picture =
      Picture::blank({.width = size.width, .height = size.height, .depth = static_cast<uint16_t>(depth)}, colors);
  uint32_t state = 7;
  for (uint8_t& byte : picture.image_bytes()) byte = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  return picture;
}

std::vector<uint32_t> drawn(const Reductions& reductions, Size size, Rect part) {
  std::vector<uint32_t> pixels(static_cast<size_t>(part.width) * static_cast<size_t>(part.height));
  reductions.draw(size, part, pixels);
  return pixels;
}

int largest_difference(uint32_t a, uint32_t b) {
  int largest = 0;
  for (const int shift : {0, 8, 16})
    largest = std::max(largest, std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF)));
  return largest;
}

// The largest difference from the exact mean of an area, and the mean one.
struct Differences {
  int largest = 0;
  double mean = 0;
};

Differences differences_at(const Picture& picture, Size size) {
  const auto pixels = drawn(Reductions(picture), size, {0, 0, size.width, size.height});
  const Picture exact = scaled_by_area(in_true_color(picture.copy()), size);
  Differences result;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const uint8_t* const color = exact.pixels().row_from_top(y).data() + 3 * x;
      const uint32_t expected = color[0] | uint32_t{color[1]} << 8 | uint32_t{color[2]} << 16;
      const int difference = largest_difference(pixels[static_cast<size_t>(y * size.width + x)], expected);
      result.largest = std::max(result.largest, difference);
      result.mean += difference / static_cast<double>(pixels.size());
    }
  return result;
}

// Where an area's edge cuts a pixel of a halved copy, that pixel counts as even.
TEST(Reductions, AreMeansOfAreas) {
  for (const int depth : {1, 4, 8, 24})
    for (const Size from : {Size{72, 40}, Size{131, 97}, Size{1, 5}, Size{640, 3}}) {
      const Picture picture = noisy(from, depth);
      SCOPED_TRACE(testing::Message() << depth << " bits, " << from.width << " x " << from.height);
      EXPECT_EQ(differences_at(picture, from).largest, 0);
      EXPECT_LE(differences_at(picture, {(from.width * 2 + 2) / 3, (from.height * 2 + 2) / 3}).largest, 2);
      EXPECT_LE(differences_at(picture, {from.width, (from.height + 4) / 5}).largest, 2);
      EXPECT_LE(differences_at(picture, {(from.width + 6) / 7, (from.height + 4) / 5}).mean, 12);
    }
  EXPECT_LE(differences_at(noisy({72, 40}, 24), {36, 20}).largest, 1);
  EXPECT_LE(differences_at(noisy({72, 40}, 24), {9, 5}).largest, 2);
}

TEST(Reductions, DrawPartsAsInTheWhole) {
  for (const int depth : {1, 4, 8, 24}) {
    const Picture picture = noisy({203, 155}, depth);
    const Reductions reductions(picture);
    for (const Size to : {Size{77, 60}, Size{20, 15}, Size{203, 155}, Size{150, 40}}) {
      const auto whole = drawn(reductions, to, {0, 0, to.width, to.height});
      const Rect part = {to.width / 3, to.height / 4, to.width / 2, to.height / 2};
      const auto pixels = drawn(reductions, to, part);
      for (int y = 0; y < part.height; ++y) {
        const auto row = whole.begin() + (part.y + y) * to.width + part.x;
        ASSERT_TRUE(std::equal(row, row + part.width, pixels.begin() + y * part.width)) << depth << " bits, row " << y;
      }
    }
  }
}

TEST(Reductions, MixTwoColorsByTheirShares) {
  const Picture picture = Picture::blank({.width = 4, .height = 2, .depth = 1}, std::vector<Rgb>{kInk, kPaper});
  for (int y = 0; y < 2; ++y) picture.pixels().row(y)[0] = 0b00110000;
  const auto pixels = drawn(Reductions(picture), {2, 1}, {0, 0, 2, 1});
  EXPECT_EQ(pixels, (std::vector<uint32_t>{0x0A1E3C, 0xFFF0C8}));
  EXPECT_EQ(drawn(Reductions(picture), {1, 1}, {0, 0, 1, 1}), (std::vector<uint32_t>{0x858782}));
}

}  // namespace
