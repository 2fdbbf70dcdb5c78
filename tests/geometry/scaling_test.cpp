// Scaling, against the same done one pixel at a time.
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "geometry/dib_scaling.h"
#include "support/dib.h"
#include "support/plain_geometry.h"

using namespace test;

namespace {

Bytes scaled(const Bytes& dib, bool cubic, unsigned width, unsigned height) {
  SetImgError(7);
  const Bytes result = bytes_of(Block(ScaleDIB(block_of(dib).get(), cubic ? -1 : 0, width, height)).get());
  EXPECT_EQ(ImgError(), 7);
  return result;
}

Bytes picked(const Bytes& dib, vorel::Rect rect, vorel::Size size) {
  const Block block = block_of(dib);
  auto result = vorel::geometry::ScaleDIBRect(*vorel::LockedDib::lock(block.get()), rect, size);
  return result ? bytes_of(Block(result->release()).get()) : Bytes{};
}

// Noise in colour and in grey; at 4 and 8 bits also with a table of a few colours, where black comes second and again later.
std::vector<Bytes> pictures(int width, int height) {
  std::vector<Bytes> dibs;
  for (int depth : {4, 8, 24}) dibs.push_back(noise(width, height, depth));
  for (int depth : {4, 8})
    for (bool grey : {false, true}) {
      Bytes dib = with_colors(noise(width, height, depth), 9);
      for (size_t i = 40; grey && i < 76; ++i) dib[i] = dib[i / 4 * 4];
      std::fill_n(dib.begin() + 44, 12, uint8_t{0});
      for (size_t i = 76; i < dib.size(); ++i) dib[i] &= 0x77;  // some indices are below 9
      dibs.push_back(dib);
    }
  return dibs;
}

constexpr std::pair<int, int> kSizes[] = {{1, 1}, {2, 3}, {9, 1}, {1, 8}, {32, 8}, {33, 17}, {100, 50}};
constexpr std::pair<int, int> kTargets[] = {{1, 1},   {2, 2},    {7, 5},    {32, 8}, {33, 17},
                                            {66, 34}, {64, 129}, {100, 25}, {301, 3}};

TEST(ScaleDIB, MakesTheSamePixelsAsOneByOne) {
  for (const auto& [width, height] : kSizes)
    for (const auto& [to_width, to_height] : kTargets) {
      const auto w = static_cast<unsigned>(to_width), h = static_cast<unsigned>(to_height);
      SCOPED_TRACE(testing::Message() << width << " x " << height << " to " << w << " x " << h);
      const Bytes bits = noise(width, height, 1);
      EXPECT_TRUE(scaled(bits, true, w, h) == plain_nearest(bits, 0, 0, width, height, to_width, to_height));
      for (const Bytes& dib : pictures(width, height))
        for (bool cubic : {false, true})
          EXPECT_TRUE(scaled(dib, cubic, w, h | 0xABC0000) == plain_scaling(dib, cubic, to_width, to_height))
              << header_of(dib).biBitCount << " bits, " << header_of(dib).biClrUsed << " colours, cubic " << cubic;
    }
}

// Results mixed from zero rows alone are copied from each other.
TEST(ScaleDIB, TakesRowsBehindTheBlocksEndAsZero) {
  constexpr int kWidth = 33, kHeight = 17;
  for (const Bytes& dib : pictures(kWidth, kHeight)) {
    const auto stride = static_cast<size_t>((kWidth * header_of(dib).biBitCount + 31) / 32 * 4);
    for (const size_t missing : {stride, stride * 9 + 3, stride * kHeight}) {
      Bytes whole = dib;
      const Bytes cut(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing));
      std::fill(whole.begin() + static_cast<std::ptrdiff_t>(cut.size()), whole.end(), uint8_t{0});
      for (const auto& [width, height] : {std::pair{40u, 12u}, {20u, 17u}, {66u, 300u}})
        for (const bool cubic : {false, true})
          EXPECT_TRUE(scaled(cut, cubic, width, height) ==
                      plain_scaling(whole, cubic, static_cast<int>(width), static_cast<int>(height)))
              << header_of(dib).biBitCount << " bits, " << header_of(dib).biClrUsed << " colours, cubic " << cubic << ", "
              << missing << " bytes are missing, to " << width << " x " << height;
    }
  }
}

TEST(ScaleDIB, GivesThesePictures) {
  const Bytes two = with_header(header_for(2, 1, 24), {0, 0, 0, 200, 200, 200, 0, 0});
  EXPECT_EQ(picture_of(scaled(two, false, 4, 1)), "000000 646464 C8C8C8 C8C8C8") << "left edges meet";
  // Above the first stored row is black, and nothing is taken away for it: 62 + 62 - 12 there, then 62 + 62 - 12 - 12.
  const Bytes flat = with_header(header_for(1, 3, 24), {100, 100, 100, 0, 100, 100, 100, 0, 100, 100, 100, 0});
  EXPECT_EQ(picture_of(scaled(flat, true, 1, 6)), "646464/646464/646464/646464/707070/646464");

  const Bytes one_row = with_header(header_for(2, 1, 1), {0, 0, 0, 0, 9, 9, 9, 0, 0xC0, 0, 0, 0});
  EXPECT_EQ(picture_of(scaled(one_row, false, 2, 2)), "090909 090909/000000 000000") << "the second row is past the picture";
  Bytes striped = with_header(header_for(100, 50, 1), Bytes(8 + 16 * 50));
  for (size_t from_top = 0; from_top < 50; from_top += 2) striped[48 + 16 * (49 - from_top)] = 0x80;
  const Bytes half = scaled(striped, false, 100, 25);
  for (int y = 0; y < 25; ++y) EXPECT_EQ(pixel(half, 0, y), 1u) << y;

  const Bytes dots = with_header_changed(with_header(header_for(4, 1, 8), {255, 255, 255, 0, 0, 0, 0, 0, 1, 0, 1, 0}),
                                         [](auto& header) { header.biClrUsed = 2; });
  EXPECT_EQ(picture_of(scaled(dots, true, 4, 1)), "FFFFFF FFFFFF 000000 FFFFFF") << "black begins the row as colour 0";
}

TEST(ScaleGrayDIB, MixesTheSameLevelsAsOneByOne) {
  struct Area {
    int width, height, x_factor, y_factor;
  };
  for (const Bytes& dib : pictures(19, 13))
    for (const auto& [width, height, x_factor, y_factor] :
         {Area{19, 13, 1, 1}, {19, 13, 3, 2}, {1, 1, 5, 7}, {8, 13, 2, 1}, {10, 6, 4, 5}})
      for (bool cubic : {false, true}) {
        const Block result(ScaleGrayDIB(block_of(dib).get(), width, height, x_factor, y_factor, cubic));
        EXPECT_TRUE(bytes_of(result.get()) == plain_magnification(dib, width, height, x_factor, y_factor, cubic))
            << width << " x " << height << " x " << header_of(dib).biBitCount << ", " << x_factor << " and " << y_factor
            << " times, " << header_of(dib).biClrUsed << " colours, cubic " << cubic;
      }
}

TEST(ScaleDIBRect, PicksTheSamePixelsAsOneByOne) {
  const vorel::Rect rects[] = {{0, 0, 33, 17},  {3, 2, 20, 9},   {5, 2, 20, 9}, {8, 0, 16, 17},          {5, 1, 24, 3},
                               {30, 15, 12, 9}, {1, 16, 100, 1}, {32, 0, 1, 1}, {2, 2, INT_MAX, INT_MAX}};
  for (int depth : {1, 4, 8, 24}) {
    const Bytes dib = with_header_changed(noise(33, 17, depth), [](auto& header) { header.biSizeImage = 5; });
    for (const auto& [x, y, width, height] : rects)
      for (const auto& [to_width, to_height] : {vorel::Size{1, 1}, {20, 9}, {16, 17}, {12, 30}, {100, 2}, {24, 7}, {7, 40}})
        EXPECT_TRUE(picked(dib, {x, y, width, height}, {to_width, to_height}) ==
                    plain_nearest(dib, x, y, width, height, to_width, to_height))
            << depth << " bits, " << width << " x " << height << " at " << x << ", " << y << " to " << to_width << " x "
            << to_height;
    for (const vorel::Rect& rect :
         {vorel::Rect{-1, 0, 5, 5}, {0, -1, 5, 5}, {33, 0, 5, 5}, {0, 17, 5, 5}, {0, 0, 0, 5}, {0, 0, 5, INT_MIN}})
      EXPECT_TRUE(picked(dib, rect, {5, 5}).empty());
    for (const vorel::Size& size : {vorel::Size{0, 5}, {5, 0}, {INT_MIN, 5}, {5, -1}, {INT_MAX, INT_MAX}})
      EXPECT_TRUE(picked(dib, {0, 0, 5, 5}, size).empty());
  }
}

TEST(Scaling, TellsWhyItRefusesASize) {
  const Block colors = block_of(noise(9, 9, 8)), bits = block_of(noise(9, 9, 1)), deep = block_of(noise(9, 9, 32));
  const struct {
    unsigned width, height;
    int code, code_for_bits;
  } sizes[] = {{0, 5, 19, 7},          {5, 0, 19, 7},          {0x50000, 0, 19, 7},     {5, 0x80000000, 19, 7},
               {0xFFFFFFFF, 0, 19, 7}, {65'535, 65'535, 1, 0}, {INT_MAX, INT_MAX, 1, 7}};
  for (const auto& size : sizes)
    for (const auto& [dib, code] :
         {std::pair{colors.get(), size.code}, {deep.get(), 21}, {bits.get(), size.code_for_bits}}) {
      if (code == 0) continue;  // that many bits are fine
      SetImgError(7);
      EXPECT_EQ(ScaleDIB(dib, 0, size.width, size.height), nullptr);
      EXPECT_EQ(ImgError(), code) << size.width << " x " << size.height;
    }

  const struct {
    int width, height, x_factor, y_factor, code;
  } parts[] = {{0, 9, 1, 1, 8},  {9, -1, 1, 1, 8},      {10, 9, 1, 1, 8},    {9, INT_MAX, 1, 1, 8},  {9, 9, 0, 1, 8},
               {9, 9, 1, -1, 8}, {9, 9, INT_MIN, 0, 8}, {9, 9, 7282, 1, 19}, {9, 9, 1, INT_MAX, 19}, {9, 9, 7281, 7281, 1}};
  for (const auto& part : parts) {
    EXPECT_EQ(ScaleGrayDIB(colors.get(), part.width, part.height, part.x_factor, part.y_factor, 1), nullptr);
    EXPECT_EQ(ImgError(), part.code) << part.width << " x " << part.height << " times " << part.x_factor << ", "
                                     << part.y_factor;
  }
}

TEST(ScaleDIB, TakesTheLow16BitsAndTheLongestSides) {
  EXPECT_EQ(header_of(scaled(noise(9, 1, 8), false, 70'000, 1)).biWidth, 4464);
  const Bytes narrow = noise(9, 2, 24), wide = noise(65'535, 1, 24), bits = noise(9, 2, 1);
  for (bool cubic : {false, true}) {
    EXPECT_TRUE(scaled(narrow, cubic, 65'535, 2) == plain_scaling(narrow, cubic, 65'535, 2));
    EXPECT_TRUE(scaled(wide, cubic, 9, 65'535) == plain_scaling(wide, cubic, 9, 65'535));
  }
  EXPECT_TRUE(scaled(bits, false, 100'000, 3) == plain_nearest(bits, 0, 0, 9, 2, 100'000, 3));
}

}  // namespace
