// Turning by any angle, against the same done one pixel at a time.
#include <array>
#include <climits>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_geometry.h"

using namespace test;

namespace {

using Corners = std::array<int, 8>;

Bytes rotated(const Bytes& dib, int angle, int method = 0) {
  int status = 0;
  return bytes_of(Block(RotateDIB(block_of(dib).get(), angle, method, &status, nullptr)).get());
}

void expect_as_plain(const Bytes& dib, int angle, int method) {
  const BITMAPINFOHEADER header = header_of(dib);
  SCOPED_TRACE(testing::Message() << header.biWidth << " x " << header.biHeight << " x " << header.biBitCount << ", "
                                  << angle << " degrees, method " << method);
  Corners corners, expected_corners;
  int status = 77;
  SetImgError(7);
  const Bytes result = bytes_of(Block(RotateDIB(block_of(dib).get(), angle, method, &status, corners.data())).get());
  EXPECT_TRUE(result == plain_rotation(dib, angle, method, expected_corners.data()));
  EXPECT_EQ(corners, expected_corners);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ImgError(), 7);
}

TEST(RotateDIB, GoesToTheSamePixelsAsOneByOne) {
  for (int depth : {1, 4, 8, 24})
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 9}, {8, 8}, {7, 20}, {33, 17}, {64, 5}, {100, 100}})
      for (int angle : {-400, -90, -1, 0, 1, 17, 45, 89, 90, 91, 135, 180, 226, 270, 315, 359, 360, INT_MAX, INT_MIN})
        for (int method : {0, 1}) expect_as_plain(noise(width, height, depth), angle, method);
}

TEST(RotateDIB, KnowsEveryDegree) {
  for (int angle = -400; angle <= 800; ++angle)
    for (int method : {1, 2}) expect_as_plain(noise(41, 30, 8), angle, method);
}

TEST(RotateDIB, MixesResolutionsAndKeepsTheTable) {
  for (const auto& [x, y] : {std::pair{0, 11811}, {-3937, 2835}, {INT_MAX, INT_MIN}, {39, 40}})
    for (int angle : {0, 30, 90, 180, -45, -400}) {
      const auto change = [&](BITMAPINFOHEADER& header) {
        header.biXPelsPerMeter = x;
        header.biYPelsPerMeter = y;
        header.biSizeImage = 1;
      };
      expect_as_plain(with_header_changed(with_colors(noise(9, 5, 8), 3), change), angle, 0);
    }
  const BITMAPINFOHEADER half = header_of(rotated(noise(8, 8, 1), 180));  // of 300 x 200 dots per inch
  EXPECT_EQ(half.biXPelsPerMeter, 7874);
  EXPECT_EQ(half.biYPelsPerMeter, 11811);
}

TEST(RotateDIB, GivesThisPictureAndThisSize) {
  // Seen from the top: A B over C D. A quarter counter-clockwise is B D over A C; it lies a pixel further right.
  const Bytes dib =
      with_header(header_for(2, 2, 24), {'C', 'C', 'C', 'D', 'D', 'D', 0, 0, 'A', 'A', 'A', 'B', 'B', 'B', 0, 0});
  EXPECT_EQ(picture_of(rotated(dib, 90)), "000000 424242/000000 414141");
  EXPECT_EQ(header_of(rotated(noise(100, 100, 1), 45)).biWidth, 142);
  EXPECT_EQ(header_of(rotated(noise(100, 100, 1), 45)).biHeight, 142);
}

}  // namespace
