// Small pictures with results made by hand.
#include <algorithm>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

using Rows = std::vector<std::vector<int>>;  // as they are stored

Bytes at_8_bits(const Rows& rows) {
  Bytes dib = with_header(header_for(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 8), Bytes(1024));
  for (const auto& row : rows) {
    dib.insert(dib.end(), row.begin(), row.end());
    dib.resize(dib.size() + stride_of(static_cast<int>(row.size()), 8) - row.size());
  }
  return dib;
}

Rows rows_of(HGLOBAL result) {
  const Block owned(result);
  const Bytes dib = bytes_of(result);
  Rows rows(static_cast<size_t>(header_of(dib).biHeight));
  for (size_t y = 0; y < rows.size(); ++y)
    for (int x = 0; x < header_of(dib).biWidth; ++x) rows[y].push_back(static_cast<int>(pixel(dib, x, static_cast<int>(y))));
  return rows;
}

Rows convolved(const Rows& rows, int type, int size, const std::vector<int>& kernel = {}) {
  return rows_of(Convolve(block_of(at_8_bits(rows)).get(), 1, type, size, nullptr, kernel.data(), nullptr));
}

TEST(Convolve, CountsTheSecondPixelOfARowMoreThanOnce) {
  EXPECT_EQ(convolved(Rows(2, std::vector<int>(5, 100)), 4, 5), Rows(2, {106, 100, 106, 100, 100}));
  EXPECT_EQ(convolved({{255, 255, 255, 255, 255}}, 4, 5), (Rows{{16, 255, 16, 255, 255}})) << "272";
  EXPECT_EQ(convolved({{100, 100, 100, 100, 100}}, 6, 5), (Rows{{0, 100, 0, 100, 100}})) << "-900";
}

// A single pixel shows the kernel turned by 180 degrees. Rows are stored bottom-up, so the kernel's first row is stored first.
TEST(Convolve, PutsTheFirstCoefficientOnTheUpperLeftNeighbour) {
  EXPECT_EQ(convolved({{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 0}}, 1, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 1}),
            (Rows{{0, 0, 0, 0}, {0, 3, 2, 1}, {0, 6, 5, 4}, {0, 9, 8, 7}}));
}

TEST(Convolve, DividesClampsAndKeepsEightBits) {
  const auto of_100 = [](const std::vector<int>& kernel) { return convolved({{100}}, 1, 3, kernel)[0][0]; };
  EXPECT_EQ(of_100({1, 1, 1, 1, 1, 1, 1, 1, 1, 0}), 100) << "divisor 9";
  EXPECT_EQ(of_100({-1, -1, -1, -1, -1, -1, -1, -1, -1, -9}), 100);
  EXPECT_EQ(of_100({1, 1, 1, 0, 0, 0, 0, 0, 0, 1}), 44) << "300";
  EXPECT_EQ(of_100({4, -1, 0, 0, 0, 0, 0, 0, 0, 1}), 255) << "300, limited";
  EXPECT_EQ(of_100({4, -1, 0, 0, 0, 0, 0, 0, 0, 3}), 85) << "limited before it is divided";
  EXPECT_EQ(of_100({-1, 0, 0, 0, 0, 0, 0, 0, 0, 8}), 0xF3) << "-12.5 down, in 8 bits";
  EXPECT_EQ(of_100({-1, 0, 0, 0, 0, 0, 0, 0, 0, 7}), 0xF2) << "-14.3 towards zero";
  EXPECT_EQ(of_100({1, 0, 0, 0, 0, 0, 0, 0, 0, -2'147'483'647 - 1}), 0) << "has no opposite";
  EXPECT_EQ(convolved({{10, 10, 250}}, 1, 3, {0, 0, 0, -1, 0, 1, 0, 0, 0, 0}), (Rows{{0, 240, 240}})) << "divisor 1";
}

TEST(ColorConvolution, MovesAllComponentsAlike) {
  const auto one = [](const Bytes& pixel, int mode, const std::vector<short>& kernel) {
    const Block dib = block_of(with_header(header_for(1, 1, 24), pixel));
    ColorConvolution(dib.get(), 0, mode, 1, 3, nullptr, kernel.data(), nullptr);
    return picture_of(bytes_of(dib.get()));
  };
  const std::vector<short> twice = {2, 0, 0, 0, 0, 0, 0, 0, 0, 1}, none = {1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(one({255, 0, 0, 0}, 1, twice), "4E4EFF") << "intensity 78";
  EXPECT_EQ(one({0, 0, 255, 0}, 1, twice), "FF1D1D") << "29";
  EXPECT_EQ(one({0, 0, 100, 0}, 0, twice), "852121") << "33";
  EXPECT_EQ(one({50, 60, 100, 0}, 0, none), "1E0000") << "divisor 1, less 70";
  EXPECT_EQ(one({10, 35, 255, 0}, 0, {-1, 0, 0, 0, 0, 0, 0, 0, 0, 8}), "8E0000") << "-12.5 down";
  EXPECT_EQ(one({255, 255, 255, 0}, 0, {1, 0, 0, 0, 0, 0, 0, 0, 0, -32768}), "000000") << "has no opposite";
}

TEST(ColorBrightnessContrast, TurnsAbout128) {
  const Bytes levels = {0, 126, 127, 128, 191, 192, 255, 64, 63};
  const auto changed = [&](short brightness, short contrast) {
    const Block dib = block_of(with_header(header_for(3, 1, 24), joined(levels, {9, 9, 9})));
    const Bytes result = bytes_of(Block(ColorBrightnessContrast(dib.get(), brightness, contrast)).get());
    return Bytes(result.begin() + 40, result.begin() + 49);
  };
  EXPECT_EQ(changed(0, 0), levels);
  EXPECT_EQ(changed(100, 0), (Bytes{128, 254, 255, 255, 255, 255, 255, 192, 191}));
  EXPECT_EQ(changed(0, 100), (Bytes{0, 124, 126, 128, 254, 255, 255, 0, 0}));
  EXPECT_EQ(changed(55, -100), Bytes(9, 128));
}

TEST(Grayscale, SmoothsBitsALittleLaterThanTheyAre) {
  const auto smoothed = [](const std::vector<uint8_t>& rows, int grade) {
    Bytes dib = with_header(header_for(8, static_cast<int>(rows.size()), 1), Bytes(8));
    for (uint8_t bits : rows) dib = joined(dib, {bits, 0, 0, 0});
    return rows_of(ConvColorDIBtoGrayscale(block_of(dib).get(), grade, 0));
  };
  const std::vector<int> none(8, 0);
  const std::vector<uint8_t> lone = {0b00001000, 0, 0, 0, 0, 0}, second = {0, 0b00001000, 0, 0, 0, 0};
  EXPECT_EQ(smoothed(lone, 0), (Rows{{0, 0, 0, 0, 255, 0, 0, 0}, none, none, none, none, none}));
  EXPECT_EQ(smoothed(second, 1),
            (Rows{none, {0, 0, 0, 8, 31, 8, 0, 8}, {0, 0, 0, 31, 99, 31, 0, 31}, {0, 0, 0, 8, 31, 8, 0, 8}, none, none}))
      << "pixel 4 stands in for the one behind the last";
  EXPECT_EQ(smoothed({0b00110000}, 1), (Rows{{47, 47, 208, 208, 47, 0, 0, 0}}));
  for (size_t rows : {4, 5})
    EXPECT_EQ(smoothed(std::vector<uint8_t>(rows, 0x1C), 2), smoothed(std::vector<uint8_t>(rows, 0x1C), 1));
  EXPECT_EQ(smoothed({0x1C, 0x80, 3}, 2), smoothed({0x1C, 0x80, 3}, 0));
}

TEST(Grayscale, WeighsColoursAndKnowsWhichIsTheLighter) {
  const Block red = block_of(with_header(header_for(1, 1, 24), {0, 0, 255, 0}));
  EXPECT_EQ(rows_of(ConvColorDIBtoGrayscale(red.get(), 0, 0)), Rows{{85}});
  EXPECT_EQ(rows_of(ConvColorDIBtoGrayscale(red.get(), 0, 1)), Rows{{78}});
  const Bytes bits = {0x80, 0, 0, 0}, white_first = {255, 255, 255, 0, 0, 0, 0, 0}, black_first = {0, 0, 0, 0, 9, 9, 9, 0};
  const auto of_bits = [&](const Bytes& colors) {
    return rows_of(ConvMonoDIBtoGrayscale(block_of(with_header(header_for(2, 1, 1), joined(colors, bits))).get(), 0));
  };
  EXPECT_EQ(of_bits(white_first), (Rows{{255, 0}}));
  EXPECT_EQ(of_bits(black_first), (Rows{{0, 255}}));
}

// One pixel that differs from all its neighbours; black is the first colour or the second.
TEST(CleanImage, TakesSpecksOffAndFillsHoles) {
  const auto middle = [](bool black_first, uint8_t around, int level, int mode) {
    Bytes rows(20, around);
    rows[8] = around ^ 0b00100000;
    const Bytes colors = black_first ? Bytes{0, 0, 0, 0, 9, 9, 9, 0} : Bytes{9, 9, 9, 0, 0, 0, 0, 0};
    return rows_of(CleanImage(block_of(with_header(header_for(8, 5, 1), joined(colors, rows))).get(), level, mode))[2][2];
  };
  for (int level : {20, 50, 100})
    for (int mode : {0, 1}) {
      EXPECT_EQ(middle(false, 0, level, mode), 0);
      EXPECT_EQ(middle(false, 0xFF, level, mode), mode == 1 && level < 100) << "eight neighbours are not more than eight";
      EXPECT_EQ(middle(true, 0xFF, level, mode), mode == 1 && level > 20);
    }
}

TEST(CleanImage, TakesTheNeighbourOfItsRank) {
  const auto middle = [](uint8_t first_level, int level, int mode, int value) {
    Bytes dib = at_8_bits({{10, 20, 30}, {40, value, 50}, {60, 70, 80}});
    std::fill_n(dib.begin() + 40, 3, first_level);
    return rows_of(CleanImage(block_of(dib).get(), level, mode))[1][1];
  };
  EXPECT_EQ(middle(0, 20, 1, 128), 10);
  EXPECT_EQ(middle(0, 50, 1, 128), 40);
  EXPECT_EQ(middle(0, 89, 0, 4), 80);
  EXPECT_EQ(middle(0, 100, 0, 251), 80) << "the ninth is the eighth";
  EXPECT_EQ(middle(255, 100, 1, 128), 10);
  EXPECT_EQ(middle(255, 20, 1, 128), 80);
  for (int value : {5, 250}) EXPECT_EQ(middle(0, 50, 0, value), value) << "gentle";
}

}  // namespace
