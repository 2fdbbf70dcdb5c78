// Small pictures with results made by hand, and what holds for every picture.
#include <algorithm>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

using Rows = std::vector<std::vector<int>>;  // from the top

Bytes at_8_bits(const Rows& rows) {
  const int width = static_cast<int>(rows[0].size()), height = static_cast<int>(rows.size());
  Bytes dib = with_header(header_for(width, height, 8), Bytes(1024 + stride_of(width, 8) * rows.size()));
  for (size_t y = 0; y < rows.size(); ++y)
    for (size_t x = 0; x < rows[y].size(); ++x)
      dib[1064 + (rows.size() - 1 - y) * stride_of(width, 8) + x] = static_cast<uint8_t>(rows[y][x]);
  return dib;
}

Rows rows_of(const Bytes& dib) {
  const BITMAPINFOHEADER header = header_of(dib);
  Rows rows(static_cast<size_t>(header.biHeight));
  for (int y = 0; y < header.biHeight; ++y)
    for (int x = 0; x < header.biWidth; ++x)
      rows[static_cast<size_t>(header.biHeight - 1 - y)].push_back(static_cast<int>(pixel(dib, x, y)));
  return rows;
}

Rows uniform(size_t width, size_t height, int value) { return Rows(height, std::vector<int>(width, value)); }

Rows convolved(const Rows& rows, int type, int size, const std::vector<int>& kernel = {}) {
  return rows_of(
      bytes_of(Block(Convolve(block_of(at_8_bits(rows)).get(), 1, type, size, nullptr, kernel.data(), nullptr)).get()));
}

Bytes color_convolved(const Bytes& dib, int mode, short type, int size, const std::vector<short>& kernel = {}) {
  return bytes_of(Block(ColorConvolution(block_of(dib).get(), 1, mode, type, size, nullptr, kernel.data(), nullptr)).get());
}

TEST(Convolve, LeavesUniformPicturesAsTheyAre) {
  for (int type : {3, 4, 5, 6}) EXPECT_EQ(convolved(uniform(7, 6, 201), type, 3), uniform(7, 6, 201)) << type;
  for (int size : {5, 7}) EXPECT_EQ(convolved(uniform(9, 8, 201), 3, size), uniform(9, 8, 201)) << size;
  EXPECT_EQ(convolved(uniform(9, 8, 201), 5, 5), uniform(9, 8, 201));
  EXPECT_EQ(convolved(uniform(6, 2, 100), 4, 5), Rows(2, {106, 100, 106, 100, 100, 100}))
      << "the second pixel counts once more";
  EXPECT_EQ(convolved(uniform(5, 1, 255), 4, 5), (Rows{{16, 255, 16, 255, 255}})) << "272";
  EXPECT_EQ(convolved(uniform(5, 1, 100), 6, 5), (Rows{{0, 100, 0, 100, 100}})) << "-900";
}

// The picture around a single pixel shows the kernel, turned by 180 degrees.
TEST(Convolve, PutsTheFirstCoefficientOnTheUpperLeftNeighbour) {
  Rows rows = uniform(5, 5, 0);
  rows[2][2] = 1;
  EXPECT_EQ(convolved(rows, 1, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 1}),
            (Rows{{0, 0, 0, 0, 0}, {0, 9, 8, 7, 0}, {0, 6, 5, 4, 0}, {0, 3, 2, 1, 0}, {0, 0, 0, 0, 0}}));
  EXPECT_EQ(convolved({{10, 20}, {30, 40}}, 1, 3, {1, 0, 0, 0, 0, 0, 0, 0, 0, 1}), (Rows{{10, 10}, {10, 10}}));
  EXPECT_EQ(convolved({{10, 20}, {30, 40}}, 1, 3, {0, 1, 0, 0, 0, 0, 0, 0, 0, 1}), (Rows{{10, 20}, {10, 20}}));
  EXPECT_EQ(convolved({{10, 20}, {30, 40}}, 1, 3, {0, 0, 0, 0, 0, 1, 0, 0, 0, 1}), (Rows{{20, 20}, {40, 40}}));
}

TEST(Convolve, DividesClampsAndKeepsEightBits) {
  const Rows gray = uniform(1, 1, 100);
  EXPECT_EQ(convolved(gray, 1, 3, {1, 1, 1, 1, 1, 1, 1, 1, 1, 0}), gray) << "divisor 9";
  EXPECT_EQ(convolved(gray, 1, 3, {-1, -1, -1, -1, -1, -1, -1, -1, -1, -9}), gray);
  EXPECT_EQ(convolved(gray, 1, 3, {1, 1, 1, 0, 0, 0, 0, 0, 0, 1}), (Rows{{44}})) << "300";
  EXPECT_EQ(convolved(gray, 1, 3, {4, -1, 0, 0, 0, 0, 0, 0, 0, 1}), (Rows{{255}})) << "300, limited";
  EXPECT_EQ(convolved(gray, 1, 3, {4, -1, 0, 0, 0, 0, 0, 0, 0, 3}), (Rows{{85}})) << "limited before it is divided";
  EXPECT_EQ(convolved(gray, 1, 3, {0, 0, 0, 0, -1, 0, 0, 0, 0, 8}), (Rows{{0xF3}})) << "-12.5 down, in 8 bits";
  EXPECT_EQ(convolved(gray, 1, 3, {0, 0, 0, 0, -1, 0, 0, 0, 0, 7}), (Rows{{0xF2}})) << "-14.3 towards zero";
  EXPECT_EQ(convolved({{10, 10, 250}}, 1, 3, {0, 0, 0, -1, 0, 1, 0, 0, 0, 0}), (Rows{{0, 240, 240}}));
  EXPECT_EQ(convolved(gray, 1, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0, -2'147'483'647 - 1}), (Rows{{0}})) << "has no opposite";
}

TEST(ColorConvolution, MovesAllComponentsAlike) {
  const auto one = [](uint8_t blue, uint8_t green, uint8_t red) {
    return with_header(header_for(1, 1, 24), {blue, green, red, 0});
  };
  const std::vector<short> twice = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1}, none = {1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(picture_of(color_convolved(one(255, 0, 0), 1, 1, 3, twice)), "4E4EFF") << "intensity 78";
  EXPECT_EQ(picture_of(color_convolved(one(0, 0, 255), 1, 1, 3, twice)), "FF1D1D") << "29";
  EXPECT_EQ(picture_of(color_convolved(one(0, 0, 100), 0, 1, 3, twice)), "852121") << "33";
  EXPECT_EQ(picture_of(color_convolved(one(50, 60, 100), 0, 1, 3, none)), "1E0000") << "divisor 1, less 70";
  EXPECT_EQ(picture_of(color_convolved(one(10, 35, 255), 0, 1, 3, {0, 0, 0, 0, -1, 0, 0, 0, 0, 8})), "8E0000")
      << "-12.5 down";
  EXPECT_EQ(picture_of(color_convolved(one(255, 255, 255), 0, 1, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0, -32768})), "000000");
  const Bytes flat = with_header(header_for(4, 3, 24), Bytes(36, 77));
  for (int size : {3, 5, 7}) EXPECT_EQ(color_convolved(flat, 0, 3, size), flat) << size;
}

TEST(ColorBrightnessContrast, TurnsAbout128) {
  const Bytes dib = with_header(header_for(3, 1, 24), {0, 126, 127, 128, 191, 192, 255, 64, 63, 9, 9, 9});
  const auto changed = [&](short brightness, short contrast) {
    const Bytes result = bytes_of(Block(ColorBrightnessContrast(block_of(dib).get(), brightness, contrast)).get());
    return Bytes(result.begin() + 40, result.end());
  };
  EXPECT_EQ(changed(0, 0), (Bytes{0, 126, 127, 128, 191, 192, 255, 64, 63, 0, 0, 0}));
  EXPECT_EQ(changed(100, 0), (Bytes{128, 254, 255, 255, 255, 255, 255, 192, 191, 0, 0, 0}));
  EXPECT_EQ(changed(0, 100), (Bytes{0, 124, 126, 128, 254, 255, 255, 0, 0, 0, 0, 0}));
  for (short brightness : std::initializer_list<short>{-100, 0, 55})
    EXPECT_EQ(changed(brightness, -100), joined(Bytes(9, 128), Bytes(3)));
}

TEST(Grayscale, SmoothsBitsALittleLaterThanTheyAre) {
  const auto smoothed = [](int width, const std::vector<uint8_t>& stored_rows, int grade) {
    Bytes dib = with_header(header_for(width, static_cast<int>(stored_rows.size()), 1), Bytes(8));
    for (uint8_t bits : stored_rows) dib = joined(dib, {bits, 0, 0, 0});
    Rows rows = rows_of(bytes_of(Block(ConvColorDIBtoGrayscale(block_of(dib).get(), grade, 0)).get()));
    std::reverse(rows.begin(), rows.end());
    return rows;
  };
  const std::vector<uint8_t> lone = {0, 0, 0b00001000, 0, 0, 0, 0};
  const std::vector<int> none(9, 0);
  EXPECT_EQ(smoothed(9, lone, 0), (Rows{none, none, {0, 0, 0, 0, 255, 0, 0, 0, 0}, none, none, none, none}));
  EXPECT_EQ(smoothed(9, lone, 1), (Rows{none,
                                        none,
                                        {0, 0, 0, 8, 31, 8, 0, 0, 0},
                                        {0, 0, 0, 31, 99, 31, 0, 0, 0},
                                        {0, 0, 0, 8, 31, 8, 0, 0, 0},
                                        none,
                                        none}));
  EXPECT_EQ(smoothed(9, lone, 2), (Rows{none,
                                        none,
                                        {0, 0, 0, 3, 7, 3, 0, 0, 0},
                                        {0, 0, 3, 16, 25, 16, 3, 0, 0},
                                        {0, 0, 7, 25, 39, 25, 7, 0, 0},
                                        {0, 0, 3, 16, 25, 16, 3, 0, 0},
                                        {0, 0, 0, 3, 7, 3, 0, 0, 0}}));
  // Pixels 3 and 4 of the last row stand in for those before the first and behind the last.
  const std::vector<uint8_t> edges = {0, 0, 0, 0, 0, 0b00011000};
  EXPECT_EQ(smoothed(8, edges, 1)[5], (std::vector<int>{8, 0, 8, 39, 39, 8, 0, 8}));
  EXPECT_EQ(smoothed(8, edges, 2)[5], (std::vector<int>{3, 0, 3, 10, 10, 3, 0, 3}));
  EXPECT_EQ(smoothed(8, {0b00011000, 0, 0, 0}, 2), smoothed(8, {0b00011000, 0, 0, 0}, 1)) << "fewer than 6 rows";
  EXPECT_EQ(smoothed(8, {0b00011000, 0, 0}, 2), smoothed(8, {0b00011000, 0, 0}, 0)) << "fewer than 4";
}

TEST(Grayscale, WeighsColours) {
  const Bytes red = with_header(header_for(1, 1, 24), {0, 0, 255, 0});
  const auto gray = [&](int weighted) {
    return picture_of(bytes_of(Block(ConvColorDIBtoGrayscale(block_of(red).get(), 0, weighted)).get()));
  };
  EXPECT_EQ(gray(0), "555555");
  EXPECT_EQ(gray(1), "4E4E4E");
}

TEST(Grayscale, LooksTheSameWhicheverColourIsTheLighter) {
  for (int grade : {0, 1, 2}) {
    Bytes dark = noise(37, 9, 1);
    std::fill_n(dark.begin() + 40, 8, uint8_t{0});
    Bytes light = dark;
    std::fill_n(dark.begin() + 40, 3, uint8_t{200});
    std::fill_n(light.begin() + 44, 3, uint8_t{200});
    std::transform(light.begin() + 48, light.end(), light.begin() + 48,
                   [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
    const auto gray = [&](const Bytes& dib) {
      return bytes_of(Block(ConvMonoDIBtoGrayscale(block_of(dib).get(), grade)).get());
    };
    EXPECT_TRUE(gray(dark) == gray(light)) << grade;
  }
  Bytes full = with_header(header_for(40, 40, 1), Bytes(8 + 320, 0xFF));
  for (int grade : {0, 1, 2})
    EXPECT_EQ(rows_of(bytes_of(Block(ConvColorDIBtoGrayscale(block_of(full).get(), grade, 0)).get())), uniform(40, 40, 255));
}

// A speck and a hole of one pixel in rows of 16, white being the second colour or the first.
TEST(CleanImage, TakesSpecksOffAndFillsHoles) {
  const Bytes colors = {0, 0, 0, 0, 255, 255, 255, 0}, exchanged = {255, 255, 255, 0, 0, 0, 0, 0};
  const auto picture = [](const Bytes& table, const std::vector<uint8_t>& first_bytes) {
    Bytes rows;
    for (uint8_t byte : first_bytes) rows = joined(rows, {byte, 0xFF, 0, 0});
    return with_header(header_for(16, static_cast<int>(first_bytes.size()), 1), joined(table, rows));
  };
  const auto cleaned = [&](const Bytes& table, const std::vector<uint8_t>& bytes, int level, int mode) {
    std::vector<uint8_t> result;
    const Bytes dib = bytes_of(Block(CleanImage(block_of(picture(table, bytes)).get(), level, mode)).get());
    for (size_t i = 48; i < dib.size(); i += 4) result.push_back(dib[i]);
    return result;
  };
  const std::vector<uint8_t> speck = {0, 0, 0b00100000, 0, 0}, hole = {0xFF, 0xFF, 0b11011111, 0xFF, 0xFF};
  for (int level : {20, 50, 100})
    for (int mode : {0, 1}) {
      EXPECT_EQ(cleaned(exchanged, speck, level, mode)[2] & 0b00100000, 0);
      EXPECT_EQ(cleaned(exchanged, hole, level, mode)[2] & 0b00100000, mode == 1 && level < 100 ? 0b00100000 : 0);
      EXPECT_EQ(cleaned(colors, hole, level, mode)[2] & 0b00100000, mode == 1 && level > 20 ? 0b00100000 : 0);
    }
  EXPECT_EQ(cleaned(exchanged, {0xA5, 0, 0, 0x5A}, 50, 1)[0], 0xA5) << "edges stay";
  EXPECT_EQ(cleaned(exchanged, {0xA5, 0, 0, 0x5A}, 50, 1)[3], 0x5A);
}

TEST(CleanImage, TakesTheNeighbourOfItsRank) {
  const auto middle = [](int first_level, int level, int mode, int value) {
    Bytes dib = at_8_bits({{10, 20, 30}, {40, value, 50}, {60, 70, 80}});
    for (size_t k = 0; k < 256; ++k) std::fill_n(&dib[40 + 4 * k], 3, static_cast<uint8_t>(k == 0 ? first_level : 9));
    return rows_of(bytes_of(Block(CleanImage(block_of(dib).get(), level, mode)).get()))[1][1];
  };
  EXPECT_EQ(middle(0, 20, 1, 128), 10);
  EXPECT_EQ(middle(0, 50, 1, 128), 40);
  EXPECT_EQ(middle(0, 89, 0, 4), 80);
  EXPECT_EQ(middle(0, 100, 0, 251), 80);
  EXPECT_EQ(middle(255, 100, 1, 128), 10);
  EXPECT_EQ(middle(255, 20, 1, 128), 80);
  for (int value : {5, 250}) EXPECT_EQ(middle(0, 50, 0, value), value) << "gentle";
}

}  // namespace
