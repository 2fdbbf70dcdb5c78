// Text files and texts in memory as bitmaps.
#include <gtest/gtest.h>

#include <vorel32.h>

#include "win32/support/device_formats.h"
#include "win32/support/imports.h"
#include "win32/support/message_box.h"

using namespace test;

namespace {

Bytes bytes_of_text(const std::string& text) { return {text.begin(), text.end()}; }

class TextImage : public DeviceFormat {
 protected:
  // With room for the zero at the end.
  static Object<HBITMAP> drawn(const std::string& text) {
    return Object<HBITMAP>(LoadASCIIIntoBitmap(block_of(bytes_of_text(text + '\0')).get()));
  }
  static int line_height() { return size_of(drawn("x").get()).second; }
  static size_t black_pixels(HBITMAP bitmap) {
    const std::string pixels = picture_of(dib_bytes(bitmap));
    size_t count = 0;
    for (size_t at = pixels.find("000000"); at != std::string::npos; at = pixels.find("000000", at + 6)) ++count;
    return count;
  }
  Object<HBITMAP> loaded(const std::string& text, bool ansi) const {
    return Object<HBITMAP>(LoadASCIIFile(put(bytes_of_text(text)).c_str(), ansi));
  }
};

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST_F(TextImage, IsBlackOnWhiteAndAsLargeAsItsText) {
  const Object<HBITMAP> one = drawn("Hello"), two = drawn("Hello\r\nHello, all"), empty = drawn("");
  EXPECT_EQ(facts_of(one.get()).bmBitsPixel * facts_of(one.get()).bmPlanes, 1);
  EXPECT_EQ(size_of(two.get()).second, 2 * size_of(one.get()).second);
  EXPECT_GT(size_of(two.get()).first, size_of(one.get()).first);
  EXPECT_GT(black_pixels(one.get()), 20u);
  EXPECT_GT(black_pixels(two.get()), 2 * black_pixels(one.get()));
  ASSERT_TRUE(empty);
  EXPECT_EQ(black_pixels(empty.get()), 0u);
  EXPECT_EQ(ImgError(), kUntouched);
}

TEST_F(TextImage, ShowsEveryCharacter) {
  EXPECT_GT(black_pixels(drawn("a&b").get()), black_pixels(drawn("ab").get())) << "an ampersand is one";
  EXPECT_EQ(size_of(drawn("a\tb").get()).second, line_height()) << "a tab does not end the line";
  EXPECT_EQ(size_of(drawn(std::string("ab\0cd", 5)).get()), size_of(drawn("ab").get())) << "a zero byte ends the text";
  const Object<HBITMAP> wide = drawn(std::string(1'000, 'x'));
  EXPECT_EQ(size_of(wide.get()), std::pair(1'000 * size_of(drawn("x").get()).first, line_height()));
  // The last byte of a block becomes the end, whatever it was.
  const Block unended = block_of({'a', 'b', 'c'});
  EXPECT_EQ(size_of(Object<HBITMAP>(LoadASCIIIntoBitmap(unended.get())).get()), size_of(drawn("ab").get()));
  EXPECT_EQ(bytes_of(unended.get())[2], 0);
}

TEST_F(TextImage, FilesMayBeInTheOemCodePage) {
  char oem[] = "\x84\x94\x81", ansi[4] = "";  // umlauts of code page 437
  OemToCharA(oem, ansi);
  const auto picture = [&](const char* text, bool is_ansi) { return picture_of(dib_bytes(loaded(text, is_ansi).get())); };
  EXPECT_EQ(picture(oem, false), picture(ansi, true));
  EXPECT_NE(picture(oem, false), picture(oem, true));
}

TEST_F(TextImage, WhatIsTooLongIsCutOff) {
  const MessageBoxes boxes;
  const int most = (32'766 - line_height()) / line_height();
  SetImgError(kUntouched);
  const Object<HBITMAP> cut = loaded(repeated("line\r\n", 40'000), true);
  EXPECT_EQ(boxes.seen(), std::vector<std::string>{"SORRY: Lines truncated"});
  ASSERT_TRUE(cut);
  EXPECT_EQ(ImgError(), 0);
  EXPECT_NEAR(size_of(cut.get()).second, (most + 1) * line_height(), line_height());
  EXPECT_TRUE(loaded(repeated("line\r\n", most - 1), true));
  EXPECT_EQ(boxes.seen().size(), 1u);
}

TEST_F(TextImage, IsSqueezedWhereTheBitmapIsTooHigh) {
  const std::string text = repeated("line\r\n", 39) + "line";
  const auto [width, height] = size_of(drawn(text).get());
  const Replacement replaced("CreateBitmap", low_bitmap);
  for (const int halvings : {1, 2, 3}) {
    most_rows = height >> halvings;
    const Object<HBITMAP> squeezed = drawn(text);
    EXPECT_EQ(size_of(squeezed.get()), std::pair(width, height >> halvings));
    // Text to the very end.
    const std::string rows = picture_of(dib_bytes(squeezed.get()));
    EXPECT_NE(rows.substr(rows.size() * 95 / 100).find("000000"), std::string::npos);
  }
  most_rows = line_height();
  EXPECT_FALSE(drawn(text)) << "not down to a line";
  EXPECT_EQ(ImgError(), IMG_E_MEMORY);
  most_rows = 0;
  EXPECT_FALSE(loaded(text, true));
  EXPECT_EQ(ImgError(), 0) << "the file is read";
}

HDC WINAPI no_memory_dc(HDC) { return nullptr; }
LONG WINAPI short_read(HFILE file, LPVOID bytes, LONG count) { return _hread(file, bytes, count - 1); }
HGLOBAL WINAPI no_block(UINT, SIZE_T) { return nullptr; }

TEST_F(TextImage, FailuresHaveTheirCodes) {
  const auto code_of = [&](auto load) {
    SetImgError(kUntouched);
    EXPECT_FALSE(Object<HBITMAP>(load()));
    return ImgError();
  };
  const std::string file = put(bytes_of_text("text\r\n"));
  const Block block = block_of(bytes_of_text("text"));
  const auto load = [&] { return LoadASCIIFile(file.c_str(), TRUE); };
  const auto draw = [&] { return LoadASCIIIntoBitmap(block.get()); };
  EXPECT_EQ(code_of([&] { return LoadASCIIFile(at("missing").c_str(), TRUE); }), IMG_E_OPEN_FILE);
  EXPECT_EQ(code_of([] { return LoadASCIIFile(nullptr, TRUE); }), IMG_E_OPEN_FILE);
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle()})
    EXPECT_EQ(code_of([&] { return LoadASCIIIntoBitmap(handle); }), IMG_E_MEMORY);
  {
    const Replacement replaced("GlobalAlloc", no_block);
    EXPECT_EQ(code_of(load), IMG_E_MEMORY);
  }
  {
    const Replacement replaced("_hread", short_read);
    EXPECT_EQ(code_of(load), IMG_E_FILE_IO);
  }
  const Replacement replaced("CreateCompatibleDC", no_memory_dc);
  EXPECT_EQ(code_of(draw), IMG_E_CREATE_DC);
  EXPECT_EQ(code_of(load), 0);
}

}  // namespace
