#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

TEST(InvertDIBPalette, ComplementsAsManyColorsAsTheHeaderCounts) {
  BITMAPINFOHEADER header = header_for(1, 1, 1);
  header.biClrUsed = 1;
  const Block dib = block_of(with_header(header, {10, 20, 30, 40, 50, 60, 70, 80, 0x80, 0, 0, 0}));
  EXPECT_TRUE(InvertDIBPalette(dib.get()));
  EXPECT_EQ(bytes_of(dib.get()), with_header(header, {245, 235, 225, 40, 50, 60, 70, 80, 0x80, 0, 0, 0}));
}

TEST(InvertDIBPalette, CountOfZeroTouchesNothingAndSucceeds) {
  const Bytes before = noise(5, 2, 8);
  const Block dib = block_of(before);
  EXPECT_TRUE(InvertDIBPalette(dib.get()));
  EXPECT_EQ(bytes_of(dib.get()), before);
}

// Missing bytes count as zero, and what would be written to them is dropped.
TEST(InvertDIBPalette, WorksOnAsMuchOfTheTableAsThereIs) {
  BITMAPINFOHEADER header = header_for(1, 1, 8);
  for (uint32_t colors : {2u, 256u, 1u << 30, 0xFFFFFFFFu}) {
    header.biClrUsed = colors;
    const Block dib = block_of(with_header(header, {1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(InvertDIBPalette(dib.get()));
    EXPECT_EQ(bytes_of(dib.get()), with_header(header, {254, 253, 252, 4, 250, 249})) << colors;
  }
}

TEST(InvertMonoDIB, WorksOnAsMuchOfTheTableAsThereIs) {
  const BITMAPINFOHEADER header = header_for(3, 2, 1);
  const Block half = block_of(with_header(header, {1, 2, 3, 9}));
  InvertMonoDIB(half.get());
  EXPECT_EQ(bytes_of(half.get()), with_header(header, {0, 0, 0, 9}));
  const Block most = block_of(with_header(header, {1, 2, 3, 9, 4, 5}));
  InvertMonoDIB(most.get());
  EXPECT_EQ(bytes_of(most.get()), with_header(header, {4, 5, 0, 9, 1, 2}));
}

TEST(InvertDIBPalette, RefusesWhatIsNoDib) {
  BITMAPINFOHEADER header = header_for(1, 1, 8);
  header.biSize = 64;
  for (const Bytes& bytes : {with_header(header), Bytes{40, 0, 0, 0}}) {
    const Block dib = block_of(bytes);
    EXPECT_FALSE(InvertDIBPalette(dib.get()));
    EXPECT_EQ(bytes_of(dib.get()), bytes);
  }
  EXPECT_FALSE(InvertDIBPalette(nullptr));
  EXPECT_FALSE(InvertDIBPalette(dead_handle()));
}

TEST(InvertMonoDIB, SwapsColorsAndBitsAndKeepsThePicture) {
  const BITMAPINFOHEADER header = header_for(3, 2, 1);
  const Bytes before = with_header(header, {1, 2, 3, 9, 4, 5, 6, 8, 0b10100000, 0, 0, 0, 0b01000000, 1, 2, 3, 77});
  const Block dib = block_of(before);
  InvertMonoDIB(dib.get());
  EXPECT_EQ(bytes_of(dib.get()),
            with_header(header, {4, 5, 6, 9, 1, 2, 3, 8, 0b01011111, 255, 255, 255, 0b10111111, 254, 253, 252, 77}))
      << "reserved bytes and what follows the rows stay";
  InvertMonoDIB(dib.get());
  EXPECT_EQ(bytes_of(dib.get()), before);
}

TEST(InvertMonoDIB, LeavesOtherPicturesAlone) {
  for (const Bytes& bytes : {noise(4, 4, 4), noise(4, 4, 24), Bytes{40, 0, 0, 0}}) {
    const Block dib = block_of(bytes);
    InvertMonoDIB(dib.get());
    EXPECT_EQ(bytes_of(dib.get()), bytes);
  }
  InvertMonoDIB(nullptr);
  InvertMonoDIB(dead_handle());
}

TEST(InvertMonoDIB, StaysInsideTheBlock) {
  for (const auto& [width, height] : {std::pair{1 << 30, 1 << 30}, {INT32_MAX, 1}, {8, -1}, {-8, 1}, {0, 0}}) {
    for (size_t size : {40u, 43u, 44u, 48u, 50u}) {
      Bytes bytes = with_header(header_for(width, height, 1), Bytes(10, 0x55));
      bytes.resize(size);
      const Block dib = block_of(bytes);
      InvertMonoDIB(dib.get());
      const Bytes after = bytes_of(dib.get());
      ASSERT_EQ(after.size(), size);
      if (size == 50) {
        EXPECT_EQ(after[49], width > 0 && height > 0 ? 0xAA : 0x55);
      }
    }
  }
}

}  // namespace
