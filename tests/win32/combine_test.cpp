// Painting device bitmaps and DIBs onto others, on the display of this session.
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/gdi.h"

using namespace test;

namespace {

constexpr int kWidth = 8;  // one row of so many pixels

// A monochrome bitmap of one row.
Object<HBITMAP> mono(uint8_t bits) {
  const uint8_t row[] = {bits, 0};
  return Object<HBITMAP>(CreateBitmap(kWidth, 1, 1, 1, row));
}

uint8_t row_of(HBITMAP bitmap) { return bits_of(bitmap)[0]; }

// A bitmap in the display's format, each pixel one of two colours.
Object<HBITMAP> colored(uint8_t bits, COLORREF zero, COLORREF one) {
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  Object<HBITMAP> bitmap(CreateCompatibleBitmap(screen, kWidth, 1));
  HGDIOBJ old = SelectObject(memory, bitmap.get());
  for (int x = 0; x < kWidth; ++x) SetPixel(memory, x, 0, (bits >> (7 - x) & 1) != 0 ? one : zero);
  SelectObject(memory, old);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return bitmap;
}

COLORREF color_of(HBITMAP bitmap, int x) {
  HDC memory = CreateCompatibleDC(nullptr);
  HGDIOBJ old = SelectObject(memory, bitmap);
  const COLORREF color = GetPixel(memory, x, 0);
  SelectObject(memory, old);
  DeleteDC(memory);
  return color;
}

TEST(CombineBMP, EveryRuleOnEveryMeetingOfPixels) {
  constexpr uint8_t kTarget = 0x0F, kSource = 0x33, kMask = 0x55;
  const struct {
    bool masked;
    int flag;
    uint8_t expected;
  } rows[] = {{false, 0, kSource},
              {false, 1, kTarget | kSource},
              {true, 0, (kTarget & ~kMask) | (kSource & kMask)},
              {true, 1, kTarget ^ (kSource & kMask)}};
  for (const auto& row : rows) {
    SetImgError(5);
    const auto target = mono(kTarget), source = mono(kSource), mask = mono(kMask);
    HBITMAP handle = target.get();
    EXPECT_TRUE(CombineBMP(0, 0, &handle, source.get(), row.masked ? mask.get() : nullptr, row.flag));
    EXPECT_EQ(handle, target.get());
    EXPECT_EQ(row_of(handle), row.expected) << row.masked << row.flag;
    // What the steps leave in the caller's bitmaps.
    EXPECT_EQ(row_of(source.get()), row.masked ? kSource & kMask : kSource);
    EXPECT_EQ(row_of(mask.get()), row.masked ? static_cast<uint8_t>(~kMask) : kMask);
    EXPECT_EQ(ImgError(), 5);
  }
}

TEST(CombineBMP, PlaceColoursAndMasks) {
  constexpr COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255);
  const auto target = colored(0, kRed, 0), source = colored(0xF0, kWhite, kBlue);
  HBITMAP handle = target.get();
  EXPECT_TRUE(CombineBMP(5, 0, &handle, source.get(), nullptr, 0));
  EXPECT_EQ(color_of(handle, 4), kRed);
  EXPECT_EQ(color_of(handle, 5), kBlue);
  // A mask in colour is made monochrome first, and stays as it is.
  const auto colored_mask = colored(0x80, RGB(0, 0, 0), kWhite);
  EXPECT_TRUE(CombineBMP(0, 0, &handle, source.get(), colored_mask.get(), 0));
  EXPECT_EQ(color_of(handle, 0), kBlue);
  EXPECT_EQ(color_of(handle, 1), kRed);
  EXPECT_EQ(color_of(colored_mask.get(), 0), kWhite);
}

TEST(CombineBMP, WithoutATargetAndFailures) {
  const auto source = mono(0x5A), mask = Object<HBITMAP>(CreateBitmap(kWidth + 1, 1, 1, 1, nullptr));
  HBITMAP copy = nullptr;
  EXPECT_TRUE(CombineBMP(3, 3, &copy, source.get(), nullptr, 1));
  EXPECT_NE(copy, source.get());
  EXPECT_EQ(row_of(copy), 0x5A);
  const auto fails_with = [&](HBITMAP* target, HBITMAP from, HBITMAP through) {
    SetImgError(0);
    EXPECT_FALSE(CombineBMP(0, 0, target, from, through, 0));
    return ImgError();
  };
  HBITMAP none = nullptr;
  EXPECT_EQ(fails_with(&copy, nullptr, nullptr), 506);
  EXPECT_EQ(fails_with(&none, reinterpret_cast<HBITMAP>(0x1234), nullptr), 507);
  EXPECT_EQ(fails_with(&copy, source.get(), mask.get()), 501);
  DeleteObject(copy);
}

// One row of 1-bit pixels, white for 1.
Bytes mono_dib(uint8_t bits) {
  BITMAPINFOHEADER header = header_for(kWidth, 1, 1);
  header.biSizeImage = 4;
  return with_header(header, {0, 0, 0, 0, 255, 255, 255, 0, bits, 0, 0, 0});
}

TEST(CombineDIB, EveryRuleAndDepth) {
  const struct {
    bool masked;
    int flag;
    uint8_t expected;
  } rows[] = {{false, 0, 0x33}, {false, 1, 0x3F}, {true, 0, 0x1B}, {true, 1, 0x1E}};
  const auto run = [](const auto& row) {
    const Block target = block_of(mono_dib(0x0F)), source = block_of(mono_dib(0x33)), mask = block_of(mono_dib(0x55));
    HGLOBAL handle = target.get();
    EXPECT_TRUE(CombineDIB(0, 0, &handle, source.get(), row.masked ? mask.get() : nullptr, row.flag)) << ImgError();
    EXPECT_EQ(handle, target.get());
    EXPECT_EQ(bytes_of(handle), mono_dib(row.expected)) << row.masked << row.flag;
    EXPECT_EQ(bytes_of(source.get()), mono_dib(0x33));
    EXPECT_EQ(bytes_of(mask.get()), mono_dib(0x55));
  };
  run(rows[2]);  // the system keeps what it makes the first time
  const size_t before = gdi_objects();
  for (const auto& row : rows) run(row);
  EXPECT_EQ(gdi_objects(), before);

  // A 24-bit target, whose pixels begin right behind the header.
  BITMAPINFOHEADER header = header_for(2, 1, 24);
  header.biSizeImage = 8;
  const Block target = block_of(with_header(header, {10, 20, 30, 40, 50, 60, 0, 0}));
  const Block source = block_of(with_header(header_for(1, 1, 24), {1, 2, 3, 0}));
  HGLOBAL handle = target.get();
  EXPECT_TRUE(CombineDIB(1, 0, &handle, source.get(), nullptr, 1));
  const bool has_palette = facts_of(colored(0, 0, 0).get()).bmBitsPixel <= 8;
  if (!has_palette) {
    EXPECT_EQ(bytes_of(handle), with_header(header, {10, 20, 30, 40 | 1, 50 | 2, 60 | 3, 0, 0}));
  }
}

TEST(CombineDIB, WithoutATargetAndFailures) {
  const Bytes picture = mono_dib(0x33);
  const Block source = block_of(picture);
  HGLOBAL made = nullptr;
  EXPECT_TRUE(CombineDIB(1, 1, &made, source.get(), nullptr, 0));
  const Block copy(made);
  EXPECT_EQ(bytes_of(copy.get()), picture);

  BITMAPINFOHEADER unsized = header_of(picture);
  unsized.biSizeImage = 0;
  HGLOBAL without_pixels = nullptr;
  EXPECT_TRUE(
      CombineDIB(0, 0, &without_pixels, block_of(with_header(unsized, {1, 2, 3, 4, 5, 6, 7, 8, 9})).get(), nullptr, 0));
  EXPECT_EQ(bytes_of(Block(without_pixels).get()), with_header(unsized, {1, 2, 3, 4, 5, 6, 7, 8}));

  const auto fails_with = [&](HGLOBAL target, HGLOBAL from, HGLOBAL through = nullptr) {
    SetImgError(0);
    EXPECT_FALSE(CombineDIB(0, 0, &target, from, through, 0));
    return ImgError();
  };
  BITMAPINFOHEADER compressed = header_for(4, 1, 8);
  compressed.biCompression = BI_RLE8;
  BITMAPINFOHEADER vast = header_for(1, 1, 24);
  vast.biSizeImage = 0xFFFFFFFF;
  const Block rle = block_of(with_header(compressed)), claims = block_of(with_header(vast)), odd = block_of(Bytes(60, 1));
  EXPECT_EQ(fails_with(copy.get(), nullptr), 506);
  EXPECT_EQ(fails_with(nullptr, dead_handle()), 505);
  EXPECT_EQ(fails_with(nullptr, rle.get()), 508);
  EXPECT_EQ(fails_with(nullptr, claims.get()), 504);
  EXPECT_EQ(fails_with(copy.get(), odd.get()), 510);
  EXPECT_EQ(fails_with(copy.get(), source.get(), odd.get()), 510);
  EXPECT_EQ(fails_with(odd.get(), source.get()), 510);
}

}  // namespace
