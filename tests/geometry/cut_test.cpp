// Cutting a picture in two.
#include <climits>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

TEST(CutDIB, SharesTheRowsOut) {
  for (int depth : {1, 4, 8, 24})
    for (const auto& [width, height] : {std::pair{1, 2}, {9, 10}, {33, 17}, {32, 3}})
      for (int line : {1, height / 2, height - 1}) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << " x " << depth << " at " << line);
        const Bytes dib = depth == 8 ? with_colors(noise(width, height, depth), 5) : noise(width, height, depth);
        HGLOBAL first = nullptr, second = nullptr;
        ASSERT_TRUE(CutDIB(block_of(dib).get(), line, &first, &second));
        const Block lower(first), upper(second);
        const auto rows_at = [&](int row) {
          return dib.end() - static_cast<std::ptrdiff_t>(stride_of(width, depth)) * (height - row);
        };
        const auto part = [&](int rows, Bytes pixels) {
          const auto change = [&](BITMAPINFOHEADER& header) {
            header.biHeight = rows;
            header.biSizeImage = static_cast<uint32_t>(GlobalSize(first)) - static_cast<uint32_t>(rows_at(0) - dib.begin());
          };
          return with_header_changed(joined(Bytes(dib.begin(), rows_at(0)), pixels), change);
        };
        EXPECT_TRUE(bytes_of(first) == part(height - line, Bytes(rows_at(0), rows_at(height - line))));
        EXPECT_TRUE(bytes_of(second) == part(line, Bytes(rows_at(height - line), dib.end())));
      }
}

TEST(CutDIB, TakesTheUpperLinesForTheSecond) {
  const Bytes dib = with_header(header_for(1, 3, 24), {1, 1, 1, 0, 2, 2, 2, 0, 3, 3, 3, 0});
  HGLOBAL first = nullptr, second = nullptr;
  ASSERT_TRUE(CutDIB(block_of(dib).get(), 1, &first, &second));
  EXPECT_EQ(picture_of(bytes_of(Block(first).get())), "020202/010101");
  EXPECT_EQ(picture_of(bytes_of(Block(second).get())), "030303");
}

TEST(CutDIB, RefusesLinesOutsideAndNowhereToPut) {
  const Block dib = block_of(noise(9, 10, 8));
  HGLOBAL first = nullptr, second = nullptr;
  SetImgError(7);
  for (int line : {0, -1, 10, 11, INT_MAX, INT_MIN}) EXPECT_FALSE(CutDIB(dib.get(), line, &first, &second)) << line;
  EXPECT_FALSE(CutDIB(dib.get(), 5, nullptr, &second));
  EXPECT_FALSE(CutDIB(dib.get(), 5, &first, nullptr));
  EXPECT_EQ(first, nullptr);
  EXPECT_FALSE(CutDIB(block_of(with_header(header_for(-9, 2, 1))).get(), 1, &first, &second)) << "no rows are that long";
  EXPECT_EQ(ImgError(), 7);
}

}  // namespace
