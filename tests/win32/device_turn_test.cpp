// Turns of real device bitmaps: what the system hands out and takes back.
#include <cstring>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/gdi.h"

using namespace test;

namespace {

// Bits of an 8-bit bitmap as text, row by row.
std::string text_of(HBITMAP bitmap) {
  const BITMAP facts = facts_of(bitmap);
  const Bytes bits = bits_of(bitmap);
  std::string text;
  for (int y = 0; y < facts.bmHeight; ++y) {
    const auto row = bits.begin() + y * facts.bmWidthBytes;
    text.append(row, row + facts.bmWidth * facts.bmBitsPixel / 8).push_back('/');
  }
  return text;
}

Object<HBITMAP> letters() { return Object<HBITMAP>(CreateBitmap(2, 3, 1, 8, "ABCDEF")); }

TEST(DeviceTurns, MoveThePicture) {
  const Object<HBITMAP> bitmap = letters();
  if (!bitmap) GTEST_SKIP() << "no 8-bit bitmaps on this display";
  EXPECT_EQ(text_of(Object<HBITMAP>(RotateBitmap90(bitmap.get())).get()), "BDF/ACE/") << "counter-clockwise";
  EXPECT_EQ(text_of(Object<HBITMAP>(RotateBitmap270(bitmap.get())).get()), "ECA/FDB/") << "clockwise";
  EXPECT_EQ(text_of(bitmap.get()), "AB/CD/EF/") << "the source stays";
  EXPECT_TRUE(RotateBitmap180(bitmap.get()));
  EXPECT_EQ(text_of(bitmap.get()), "FE/DC/BA/");
  EXPECT_TRUE(FlipBitmapVertical(bitmap.get()));
  EXPECT_EQ(text_of(bitmap.get()), "BA/DC/FE/");
  EXPECT_TRUE(FlipBitmapHorizontal(bitmap.get()));
  EXPECT_EQ(text_of(bitmap.get()), "AB/CD/EF/");
}

TEST(DeviceTurns, ComeBackAfterTheirPeriod) {
  for (int depth : {1, 4, 8, 24}) {
    const Object<HBITMAP> bitmap = counting_bitmap(37, 600, depth);  // from 64 KB on at 24 bits
    if (!bitmap) continue;
    const Bytes before = bits_of(bitmap.get());
    const Object<HBITMAP> once(RotateBitmap90(bitmap.get()));
    const Object<HBITMAP> twice(RotateBitmap90(once.get()));
    ASSERT_TRUE(once && twice) << depth;
    EXPECT_EQ(std::pair(facts_of(once.get()).bmWidth, facts_of(once.get()).bmHeight), std::pair(600L, 37L));
    EXPECT_TRUE(RotateBitmap180(twice.get()));
    EXPECT_EQ(bits_of(twice.get()), before) << depth;
  }
}

// A DIB section says that its rows take whole double words; the system hands them out in words.
TEST(DeviceTurns, TakeDibSectionsAsBitmaps) {
  struct {
    BITMAPINFOHEADER header = header_for(5, -2, 8);
    RGBQUAD colors[256] = {};
  } info;
  void* memory = nullptr;
  const Object<HBITMAP> section(
      CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &memory, nullptr, 0));
  ASSERT_TRUE(section);
  std::memcpy(memory, "ABCDE...FGHIJ...", 16);
  EXPECT_TRUE(RotateBitmap180(section.get()));
  GdiFlush();
  EXPECT_EQ(std::string(static_cast<const char*>(memory), 5), "JIHGF");
  EXPECT_EQ(std::string(static_cast<const char*>(memory) + 8, 5), "EDCBA");
  EXPECT_EQ(bits_of(Object<HBITMAP>(DuplicateBitmap(section.get())).get()),
            (Bytes{'J', 'I', 'H', 'G', 'F', 0, 'E', 'D', 'C', 'B', 'A', 0}));
}

TEST(DeviceTurns, ClockwiseLosesTheBottomRowAtOneBit) {
  const Object<HBITMAP> bitmap(CreateBitmap(3, 2, 1, 1, "\xE0\x00\xE0\x00"));
  const Object<HBITMAP> turned(RotateBitmap270(bitmap.get()));
  EXPECT_EQ(bits_of(turned.get()), (Bytes{0x40, 0, 0x40, 0, 0x40, 0}));
}

TEST(DeviceTurns, EmptyWhatTheyCannotCopy) {
  const Object<HBITMAP> bitmap = counting_bitmap(3, 3, 32);
  if (!bitmap) GTEST_SKIP() << "no 32-bit bitmaps on this display";
  EXPECT_TRUE(RotateBitmap180(bitmap.get()));
  EXPECT_EQ(bits_of(bitmap.get()), Bytes(36));
}

TEST(DeviceTurns, SayWhyTheyFail) {
  HBITMAP const none[] = {nullptr, reinterpret_cast<HBITMAP>(0x1234)};
  for (HBITMAP bitmap : none) {
    for (auto* turn : {RotateBitmap90, RotateBitmap270}) {
      SetImgError(0);
      EXPECT_EQ(turn(bitmap), nullptr);
      EXPECT_EQ(ImgError(), IMG_E_BITMAP_PARAMETERS);
    }
    for (auto* turn : {RotateBitmap180, FlipBitmapVertical, FlipBitmapHorizontal}) {
      SetImgError(0);
      EXPECT_FALSE(turn(bitmap));
      EXPECT_EQ(ImgError(), IMG_E_BITMAP_PARAMETERS);
    }
  }
}

TEST(InvertBitmap, NeedsAnActiveWindow) {
  const Object<HBITMAP> bitmap(CreateBitmap(16, 1, 1, 1, "\x12\x34"));
  SetActiveWindow(nullptr);
  EXPECT_FALSE(InvertBitmap(bitmap.get()));
  EXPECT_EQ(bits_of(bitmap.get()), (Bytes{0x12, 0x34}));
  const ActiveWindow window;
  EXPECT_TRUE(InvertBitmap(bitmap.get()));
  EXPECT_EQ(bits_of(bitmap.get()), (Bytes{0xED, 0xCB}));
}

}  // namespace
