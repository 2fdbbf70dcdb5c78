// The rules that find colours and rows, on sizes that do not fit anywhere too.
#include "core/header.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "dib/device_format.h"
#include "dib/packed_dib.h"
#include "support/dib.h"

using namespace vorel;

namespace {

TEST(ByteCount, SticksInsteadOfWrapping) {
  const ByteCount huge = ByteCount(uint64_t{1} << 63) * 2;
  EXPECT_FALSE(huge.fits_block());
  EXPECT_EQ(huge + 1, huge);
  EXPECT_EQ(huge * 0, ByteCount(0));
  EXPECT_TRUE(ByteCount(INT32_MAX).fits_block());
  EXPECT_FALSE(ByteCount(uint64_t{1} << 31).fits_block());
  EXPECT_FALSE((row_stride(65'535u * 65'535u, INT32_MAX) * UINT32_MAX).fits_block());
}

UINT palette_size(uint32_t size, int depth, uint32_t colors_used) {
  BITMAPINFOHEADER header = test::header_for(1, 0x40001, depth);  // the height would read as 4 bits in a core header
  header.biSize = size;
  header.biClrUsed = colors_used;
  return PaletteSize(&header);
}

TEST(PaletteSize, FollowsTheHeader) {
  EXPECT_EQ(palette_size(40, 1, 0), 8u);
  EXPECT_EQ(palette_size(40, 4, 0), 64u);
  EXPECT_EQ(palette_size(40, 8, 0), 1024u);
  EXPECT_EQ(palette_size(40, 8, 257), 1028u);
  EXPECT_EQ(palette_size(40, 24, 0), 0u);
  EXPECT_EQ(palette_size(40, 24, 3), 12u);
  EXPECT_EQ(palette_size(12, 8, 77), 48u) << "a core header has its depth elsewhere, and triples";
  EXPECT_EQ(palette_size(64, 8, 77), 768u);
  EXPECT_EQ(palette_size(0, 1, 0), 6u);
  EXPECT_EQ(palette_size(40, 8, 1u << 30), 0u) << "a table of 4 GB is none";
  EXPECT_EQ(PaletteSize(nullptr), 0u);
}

TEST(LockedDib, CompletesAShortBlockWithZeros) {
  const test::Block block = test::block_of({1, 2, 3});
  const auto dib = LockedDib::lock(block.get());
  ASSERT_TRUE(dib);
  EXPECT_FALSE(dib->has_header());
  EXPECT_EQ(dib->header().size, 0u);
  const auto whole = dib->complete(5);
  ASSERT_TRUE(whole);
  EXPECT_EQ(test::Bytes(whole->bytes().begin(), whole->bytes().end()), (test::Bytes{1, 2, 3, 0, 0}));
  whole->bytes()[0] = 9;
  EXPECT_EQ(dib->block()[0], 1) << "a completed block is a copy";
  dib->complete(3)->bytes()[0] = 9;
  EXPECT_EQ(dib->block()[0], 9) << "a whole one is not";
  EXPECT_FALSE(dib->complete(ByteCount(1) * UINT64_MAX));
  EXPECT_TRUE(dib->part(3, 10).empty());
}

TEST(DeviceFormat, TakesTheNextDepthUpTo24) {
  const std::pair<uint32_t, uint16_t> expected[] = {{0, 1}, {1, 1}, {2, 4}, {4, 4}, {5, 8}, {8, 8}, {9, 24}, {32, 24}};
  for (const auto& [bits, depth] : expected) EXPECT_EQ(dib_depth_for(bits), depth) << bits;
  const auto header = header_for_device_bitmap(9, 3, 8);
  ASSERT_TRUE(header);
  EXPECT_EQ(header->image_bytes, 36u);
  EXPECT_EQ(header->colors_used, 256u);
  EXPECT_EQ(header->colors_important, 256u);
  EXPECT_EQ(header_for_device_bitmap(9, 3, 32)->colors_used, 0u);
  EXPECT_FALSE(header_for_device_bitmap(100'000, 100'000, 32));
}

TEST(DeviceFormat, DefaultColors) {
  EXPECT_THAT(default_colors(1), testing::ElementsAre(Rgb{0, 0, 0, 0}, Rgb{255, 255, 255, 0}));
  // Dark colours and, from 8 on, light ones; light grey comes before dark grey.
  for (int i = 0; i < 16; ++i) {
    const int level = i == 7 ? 192 : i <= 8 ? 128 : 255, lights = i == 8 ? 7 : i;
    const auto light = [&](int bit) { return static_cast<uint8_t>((lights & bit) != 0 ? level : 0); };
    EXPECT_EQ(default_colors(4)[static_cast<size_t>(i)], (Rgb{light(4), light(2), light(1), 0})) << i;
  }
  EXPECT_EQ(default_colors(8)[0b101'011'10], (Rgb{170, 108, 180, 0}));
  EXPECT_EQ(default_colors(8)[255], (Rgb{255, 252, 252, 0}));
  EXPECT_TRUE(default_colors(24).empty());
}

}  // namespace
