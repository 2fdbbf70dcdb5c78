#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

Bytes mono_inverted(const Bytes& dib) {
  const Block block = block_of(dib);
  InvertMonoDIB(block.get());
  return bytes_of(block.get());
}

// Missing bytes count as zero, and what would be written to them is dropped.
TEST(InvertDIBPalette, ComplementsAsManyColorsAsTheHeaderCountsAndTheBlockHas) {
  const Bytes whole = {10, 20, 30, 40, 50, 60, 70, 80}, cut = {1, 2, 3, 4, 5, 6},
              cut_inverted = {254, 253, 252, 4, 250, 249};
  const struct {
    uint32_t colors;
    Bytes before, after;
  } cases[] = {{0, whole, whole},
               {1, whole, {245, 235, 225, 40, 50, 60, 70, 80}},
               {2, cut, cut_inverted},
               {256, cut, cut_inverted},
               {1u << 30, cut, cut_inverted},
               {UINT32_MAX, cut, cut_inverted}};
  for (const auto& [colors, before, after] : cases) {
    BITMAPINFOHEADER header = header_for(1, 1, 8);
    header.biClrUsed = colors;
    const Block dib = block_of(with_header(header, before));
    EXPECT_TRUE(InvertDIBPalette(dib.get()));
    EXPECT_EQ(bytes_of(dib.get()), with_header(header, after)) << colors;
  }
}

TEST(InvertDIBPalette, RefusesWhatIsNoDib) {
  BITMAPINFOHEADER header = header_for(1, 1, 8);
  header.biSize = 64;
  for (const Bytes& bytes : {with_header(header), Bytes{40, 0, 0, 0}}) {
    const Block dib = block_of(bytes);
    EXPECT_FALSE(InvertDIBPalette(dib.get()));
    EXPECT_EQ(bytes_of(dib.get()), bytes);
  }
  for (HGLOBAL none : {HGLOBAL{nullptr}, dead_handle()}) EXPECT_FALSE(InvertDIBPalette(none));
}

TEST(InvertMonoDIB, SwapsColorsAndBitsAndKeepsThePicture) {
  const BITMAPINFOHEADER header = header_for(3, 2, 1);
  const Bytes before = with_header(header, {1, 2, 3, 9, 4, 5, 6, 8, 0b10100000, 0, 0, 0, 0b01000000, 1, 2, 3, 77});
  EXPECT_EQ(mono_inverted(before),
            with_header(header, {4, 5, 6, 9, 1, 2, 3, 8, 0b01011111, 255, 255, 255, 0b10111111, 254, 253, 252, 77}))
      << "reserved bytes and what follows the rows stay";
  EXPECT_EQ(mono_inverted(with_header(header, {1, 2, 3, 9})), with_header(header, {0, 0, 0, 9}));
  EXPECT_EQ(mono_inverted(with_header(header, {1, 2, 3, 9, 4, 5})), with_header(header, {4, 5, 0, 9, 1, 2}));
}

TEST(InvertMonoDIB, LeavesOtherPicturesAlone) {
  for (const Bytes& bytes : {noise(4, 4, 4), noise(4, 4, 24), Bytes{40, 0, 0, 0}}) EXPECT_EQ(mono_inverted(bytes), bytes);
  for (HGLOBAL none : {HGLOBAL{nullptr}, dead_handle()}) InvertMonoDIB(none);
}

TEST(InvertMonoDIB, StaysInsideTheBlock) {
  for (const auto& [width, height] : {std::pair{1 << 30, 1 << 30}, {INT32_MAX, 1}, {8, -1}, {-8, 1}, {0, 0}}) {
    const Bytes whole = with_header(header_for(width, height, 1), Bytes(10, 0x55));
    for (size_t size : {40u, 43u, 44u, 48u}) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<int>(size));
      EXPECT_EQ(mono_inverted(cut).size(), size);
    }
    EXPECT_EQ(mono_inverted(whole)[49], width > 0 && height > 0 ? 0xAA : 0x55);
  }
}

}  // namespace
