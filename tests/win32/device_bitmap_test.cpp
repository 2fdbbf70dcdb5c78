// DIBs and device bitmaps, both ways, on the display of this session.
#include <cstring>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/gdi.h"

using namespace test;

namespace {

Bytes dib_of(HBITMAP bitmap, HPALETTE palette = nullptr) {
  return bytes_of(Block(ConvertBitmapToDIB(bitmap, palette)).get());
}

Bytes mono_dib(int width, int height) {
  Bytes dib = noise(width, height, 1);
  BITMAPINFOHEADER header = header_of(dib);
  header.biClrUsed = 2;
  std::memcpy(dib.data(), &header, sizeof header);
  const uint8_t colors[] = {0, 0, 0, 0, 255, 255, 255, 0};
  std::memcpy(dib.data() + 40, colors, sizeof colors);
  return dib;
}

TEST(ConvertBitmapToDIB, HeaderFollowsTheBitmap) {
  const Object<HBITMAP> mono = counting_bitmap(17, 3, 1);
  SetImgError(5);
  const Bytes dib = dib_of(mono.get());
  EXPECT_EQ(ImgError(), 5) << "the screen's palette is not asked for";
  const BITMAPINFOHEADER header = header_of(dib);
  EXPECT_EQ(dib.size(), 40u + 8 + 12 + 10);
  EXPECT_EQ(std::tuple(header.biSize, header.biWidth, header.biHeight, header.biPlanes, header.biBitCount),
            std::tuple(40u, 17, 3, 1, 1));
  EXPECT_EQ(std::tuple(header.biCompression, header.biSizeImage, header.biClrUsed, header.biClrImportant),
            std::tuple(0u, 12u, 2u, 2u));
  EXPECT_EQ(Bytes(dib.begin() + 40, dib.begin() + 48), (Bytes{0, 0, 0, 0, 255, 255, 255, 0}));
  const Bytes bits = bits_of(mono.get());
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 17; ++x)
      EXPECT_EQ(pixel(dib, x, 2 - y), static_cast<uint32_t>(bits[static_cast<size_t>(y * 4 + x / 8)] >> (7 - x % 8) & 1));
}

TEST(ConvertBitmapToDIB, DeeperBitmapsBecome24Bits) {
  const Object<HBITMAP> bitmap(CreateBitmap(2, 1, 1, 32, "\x01\x02\x03\x00\x0A\x0B\x0C\x00"));
  if (!bitmap) GTEST_SKIP() << "no such bitmaps on this display";
  const Bytes dib = dib_of(bitmap.get());
  const BITMAPINFOHEADER header = header_of(dib);
  EXPECT_EQ(std::tuple(header.biBitCount, header.biClrUsed, header.biSizeImage), std::tuple(24, 0u, 8u));
  EXPECT_EQ(Bytes(dib.begin() + 40, dib.end()), (Bytes{1, 2, 3, 10, 11, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(ConvertBitmapToDIB, WhatIsNoBitmapGivesNothingAndNoCode) {
  SetImgError(5);
  const Object<HPEN> pen(CreatePen(PS_SOLID, 1, 0));
  for (HBITMAP bitmap : {HBITMAP{nullptr}, reinterpret_cast<HBITMAP>(0x1234), reinterpret_cast<HBITMAP>(pen.get())})
    EXPECT_EQ(ConvertBitmapToDIB(bitmap, nullptr), nullptr);
  EXPECT_EQ(ImgError(), 5);
}

TEST(ConvertDIBToBitmap, OneBitStaysMonochromeAndComesBack) {
  const Bytes dib = mono_dib(19, 5);
  const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(dib).get()));
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(std::tuple(facts_of(bitmap.get()).bmPlanes, facts_of(bitmap.get()).bmBitsPixel), std::tuple(1, 1));
  const Bytes back = dib_of(bitmap.get());
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 19; ++x) EXPECT_EQ(pixel(back, x, y), pixel(dib, x, y));
}

TEST(ConvertDIBToBitmap, OtherDepthsTakeTheDisplaysFormat) {
  HDC screen = GetDC(nullptr);
  const int display_bits = GetDeviceCaps(screen, BITSPIXEL);
  ReleaseDC(nullptr, screen);
  for (int depth : {4, 8, 16, 24, 32}) {
    const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(noise(7, 5, depth)).get()));
    ASSERT_TRUE(bitmap) << depth;
    EXPECT_EQ(facts_of(bitmap.get()).bmBitsPixel, display_bits) << depth;
  }
  if (display_bits == 32) {
    const Bytes dib = noise(7, 5, 24);
    const Bytes back = dib_of(Object<HBITMAP>(ConvertDIBToBitmap(block_of(dib).get())).get());
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 7; ++x) EXPECT_EQ(pixel(back, x, y), pixel(dib, x, y)) << "true colours survive the way and back";
  }
}

TEST(ConvertDIBToBitmap, DamagedDibsAreCompletedOrRefused) {
  SetImgError(5);
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle()}) EXPECT_EQ(ConvertDIBToBitmap(handle), nullptr);
  EXPECT_EQ(ImgError(), 5);

  const Block empty_rows = block_of(with_header(header_for(64, 64, 8)));
  EXPECT_TRUE(Object<HBITMAP>(ConvertDIBToBitmap(empty_rows.get())));
  BITMAPINFOHEADER compressed = header_for(64, 64, 8);
  compressed.biCompression = BI_RLE8;
  compressed.biSizeImage = 100'000;
  EXPECT_TRUE(Object<HBITMAP>(ConvertDIBToBitmap(block_of(with_header(compressed, {1, 2, 3})).get()))) << "an empty stream";

  for (uint32_t size : {0u, 12u, 64u, 0xFFFFFFF0u}) {
    BITMAPINFOHEADER header = header_for(4, 4, 8);
    header.biSize = size;
    SetImgError(0);
    EXPECT_EQ(ConvertDIBToBitmap(block_of(with_header(header, Bytes(2000))).get()), nullptr) << size;
    EXPECT_EQ(ImgError(), IMG_E_CREATE_BITMAP) << size;
  }
  for (const auto& [width, height] : {std::pair{0, 4}, {1 << 30, 1 << 30}, {INT32_MAX, 1}, {1, INT32_MIN}}) {
    SetImgError(0);
    const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(with_header(header_for(width, height, 24), Bytes(100))).get()));
    if (!bitmap) {
      EXPECT_EQ(ImgError(), IMG_E_CREATE_BITMAP) << width;
    }
  }
}

TEST(ConvertToMonochromeBitmap, MapsColorsToBlackAndWhite) {
  const Bytes dib = with_header(header_for(4, 1, 24), {0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255});
  const Object<HBITMAP> color(ConvertDIBToBitmap(block_of(dib).get()));
  const Object<HBITMAP> mono(ConvertToMonochromeBitmap(color.get()));
  ASSERT_TRUE(mono);
  const BITMAP facts = facts_of(mono.get());
  EXPECT_EQ(std::tuple(facts.bmWidth, facts.bmHeight, facts.bmPlanes, facts.bmBitsPixel), std::tuple(4, 1, 1, 1));
  EXPECT_EQ(bits_of(mono.get())[0] & 0xF0, 0x50);
  EXPECT_EQ(ConvertToMonochromeBitmap(nullptr), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_PARAMETER);
}

TEST(DuplicateBitmap, CopiesFormatAndBits) {
  for (int depth : {1, 4, 8, 24, 32}) {
    const Object<HBITMAP> bitmap = counting_bitmap(13, 4, depth);
    if (!bitmap) continue;
    const Object<HBITMAP> copy(DuplicateBitmap(bitmap.get()));
    ASSERT_TRUE(copy) << depth;
    EXPECT_NE(copy.get(), bitmap.get());
    EXPECT_EQ(facts_of(copy.get()).bmBitsPixel, facts_of(bitmap.get()).bmBitsPixel);
    EXPECT_EQ(bits_of(copy.get()), bits_of(bitmap.get())) << depth;
  }
  EXPECT_EQ(DuplicateBitmap(nullptr), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_COPY_BITS);
}

TEST(CreateDIBPalette, HasTheDibsColors) {
  BITMAPINFOHEADER header = header_for(1, 1, 8);
  header.biClrUsed = 3;
  const Block dib = block_of(with_header(header, {1, 2, 3, 4, 5, 6, 7, 8}));  // the third colour is missing
  const Object<HPALETTE> palette(CreateDIBPalette(dib.get()));
  ASSERT_TRUE(palette);
  PALETTEENTRY entries[4] = {};
  EXPECT_EQ(GetPaletteEntries(palette.get(), 0, 4, entries), 3u);
  const auto is = [](const PALETTEENTRY& e, int r, int g, int b) {
    return e.peRed == r && e.peGreen == g && e.peBlue == b && e.peFlags == 0;
  };
  EXPECT_TRUE(is(entries[0], 3, 2, 1) && is(entries[1], 7, 6, 5) && is(entries[2], 0, 0, 0));

  SetImgError(5);
  EXPECT_EQ(CreateDIBPalette(block_of(noise(2, 2, 24)).get()), nullptr);
  EXPECT_EQ(CreateDIBPalette(nullptr), nullptr);
  EXPECT_EQ(CreateDIBPalette(dead_handle()), nullptr);
  EXPECT_EQ(ImgError(), 5);
  for (uint32_t colors : {65'536u, 65'537u, 1u << 30, 0xFFFFFFFFu}) {
    header.biClrUsed = colors;
    const Block lying = block_of(with_header(header));
    SetImgError(0);
    EXPECT_EQ(CreateDIBPalette(lying.get()), nullptr);
    EXPECT_EQ(ImgError(), IMG_E_CREATE_PALETTE) << colors;
    if (colors > 1u << 29) {
      EXPECT_EQ(ConvertDIBToBitmap(lying.get()), nullptr);
      EXPECT_EQ(ImgError(), IMG_E_CREATE_BITMAP) << colors;
    }
  }
}

TEST(BitmapFiles, GoStraightToDeviceBitmaps) {
  const TempFolder folder;
  const std::string path = folder.path("mono.bmp");
  const Bytes dib = mono_dib(9, 4);
  const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(dib).get()));
  ASSERT_TRUE(SaveBitmap(path.c_str(), bitmap.get(), nullptr));
  EXPECT_EQ(read_file(path).size(), 14u + 40 + 8 + 16 + 10);
  const Object<HBITMAP> loaded(LoadBitmapFromFile(path.c_str()));
  ASSERT_TRUE(loaded);
  EXPECT_EQ(bits_of(loaded.get()), bits_of(bitmap.get()));

  EXPECT_FALSE(SaveBitmap(path.c_str(), nullptr, nullptr));
  EXPECT_EQ(LoadBitmapFromFile(folder.path("missing.bmp").c_str()), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_OPEN_FILE);
}

}  // namespace
