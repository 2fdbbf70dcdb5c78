// Shearing, against the same done one pixel at a time.
#include <array>
#include <climits>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_geometry.h"

using namespace test;

namespace {

using Corners = std::array<int, 8>;

Bytes skewed(const Bytes& dib, bool rows, int offset) {
  return bytes_of(Block(SkewDIB(block_of(dib).get(), rows, offset, nullptr, nullptr)).get());
}

Corners corners_of(int w, int h, bool rows, int offset) {
  if (rows)
    return offset > 0 ? Corners{offset, 0, offset + w, 0, w, h, 0, h} : Corners{0, 0, w, 0, w - offset, h, -offset, h};
  return offset > 0 ? Corners{0, offset, w, offset, w, h, 0, h} : Corners{0, 0, w, 0, w, h - offset, 0, h - offset};
}

TEST(SkewDIB, MovesTheSamePixelsAsOneByOne) {
  for (int depth : {1, 4, 8, 24})
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {8, 8}, {33, 17}, {64, 5}, {21, 70}})
      for (int offset : {0, 1, -1, 2, 7, -8, 13, -17, 100, -333})
        for (bool rows : {false, true}) {
          SCOPED_TRACE(testing::Message() << width << " x " << height << " x " << depth << " by " << offset << ", rows "
                                          << rows);
          const Bytes dib = noise(width, height, depth);
          int error = 77;
          Corners corners{};
          SetImgError(7);
          const Bytes result = bytes_of(Block(SkewDIB(block_of(dib).get(), rows, offset, &error, corners.data())).get());
          EXPECT_TRUE(result == plain_skew(dib, rows, offset));
          EXPECT_EQ(corners, corners_of(width, height, rows, offset));
          EXPECT_EQ(error, 77);
          EXPECT_EQ(ImgError(), 0);
        }
}

TEST(SkewDIB, RoundsRowsByTheirDepth) {
  const auto first_set = [](int depth) {
    const Bytes table(depth == 1 ? 8 : 1024), ink(stride_of(10, depth) * 100, 0xFF);
    const Bytes result = skewed(with_header(header_for(10, 100, depth), joined(table, ink)), true, 10);
    int x = 0;
    while (x < 20 && pixel(result, x, 15) == 0) ++x;
    return x;
  };
  EXPECT_EQ(first_set(8), 2) << "one and a half, rounded up to a byte";
  EXPECT_EQ(first_set(1), 1) << "rounded down to a bit";
}

TEST(SkewDIB, FailsWhereTheResultHasNoSize) {
  const Block dib = block_of(noise(9, 9, 8));
  for (int offset : {INT_MAX, INT_MIN, INT_MAX - 9})
    for (int direction : {0, 1}) {
      int error = 77;
      Corners corners{};
      EXPECT_EQ(SkewDIB(dib.get(), direction, offset, &error, corners.data()), nullptr);
      EXPECT_EQ(error, 1);
      EXPECT_EQ(corners[4 + direction], 9) << "corners are told before memory is asked for";
    }
}

}  // namespace
