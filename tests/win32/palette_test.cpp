// What only a display with a palette shows.
#include <array>
#include <cstring>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/gdi.h"

using namespace test;

namespace {

class PaletteDisplay : public testing::Test {
 protected:
  void SetUp() override {
    HDC screen = GetDC(nullptr);
    ASSERT_EQ(GetDeviceCaps(screen, SIZEPALETTE), 256) << "this test runs on a palette display";
    ReleaseDC(nullptr, screen);
  }
};

TEST_F(PaletteDisplay, CurrentPaletteHasTheSystemsEntries) {
  const Object<HPALETTE> palette(GetCurrentPalette());
  ASSERT_TRUE(palette);
  std::array<PALETTEENTRY, 256> system{}, entries{};
  HDC screen = GetDC(nullptr);
  GetSystemPaletteEntries(screen, 0, 256, system.data());
  ReleaseDC(nullptr, screen);
  EXPECT_EQ(GetPaletteEntries(palette.get(), 0, 256, entries.data()), 256u);
  int wrong = 0;
  for (size_t i = 0; i < 256; ++i)
    wrong += RGB(entries[i].peRed, entries[i].peGreen, entries[i].peBlue) !=
             RGB(system[i].peRed, system[i].peGreen, system[i].peBlue);
  EXPECT_EQ(wrong, 0);
}

TEST_F(PaletteDisplay, SystemPaletteFillsEveryColor) {
  std::vector<RGBQUAD> colors(257, RGBQUAD{1, 2, 3, 4});
  ASSERT_TRUE(GetSystemPalette(colors.data()));
  EXPECT_EQ(colors[0].rgbRed + colors[0].rgbGreen + colors[0].rgbBlue, 0);
  EXPECT_EQ(colors[255].rgbRed + colors[255].rgbGreen + colors[255].rgbBlue, 3 * 255);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(colors[static_cast<size_t>(i)].rgbReserved, 0) << i;
  EXPECT_EQ(colors[256].rgbReserved, 4) << "256 entries and no more";
  EXPECT_FALSE(GetSystemPalette(nullptr));
}

TEST_F(PaletteDisplay, AnEightBitBitmapTakesThePalettesColors) {
  const Object<HBITMAP> bitmap = counting_bitmap(20, 4, 8);
  ASSERT_TRUE(bitmap);
  SetImgError(5);
  const Bytes dib = bytes_of(Block(ConvertBitmapToDIB(bitmap.get(), nullptr)).get());
  EXPECT_EQ(ImgError(), 5);
  std::vector<RGBQUAD> colors(256);
  ASSERT_TRUE(GetSystemPalette(colors.data()));
  for (size_t i : {0u, 1u, 7u, 248u, 255u}) EXPECT_EQ(std::memcmp(&dib[40 + 4 * i], &colors[i], 3), 0) << "colour " << i;
  const BITMAPINFOHEADER header = header_of(dib);
  EXPECT_EQ(std::tuple(header.biBitCount, header.biClrUsed, header.biSizeImage), std::tuple(8, 256u, 80u));
  EXPECT_EQ(dib.size(), 40u + 1024 + 80 + 10);
}

TEST_F(PaletteDisplay, PicturesKeepTheirSystemColorsOnTheWay) {
  // Eight pixels of the two colours that every system palette has.
  Bytes rest(8 + 8);
  rest[4] = rest[5] = rest[6] = 255;
  for (size_t i = 0; i < 8; ++i) rest[8 + i] = i % 3 == 0;
  BITMAPINFOHEADER header = header_for(8, 1, 8);
  header.biClrUsed = 2;
  const Object<HBITMAP> bitmap(ConvertDIBToBitmap(block_of(with_header(header, rest)).get()));
  ASSERT_TRUE(bitmap);
  const Bytes back = bytes_of(Block(ConvertBitmapToDIB(bitmap.get(), nullptr)).get());
  for (int x = 0; x < 8; ++x) {
    RGBQUAD color;
    std::memcpy(&color, back.data() + 40 + 4 * pixel(back, x, 0), sizeof color);
    EXPECT_EQ(color.rgbGreen, x % 3 == 0 ? 255 : 0) << x;
  }
}

}  // namespace
