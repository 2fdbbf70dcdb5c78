// How much of a text a bitmap holds, and what the directory of a clipboard file says.
#include <gtest/gtest.h>
#include <string>

#include "formats/clipboard_directory.h"
#include "formats/text_image.h"
#include "support/dib.h"

using namespace vorel;
using namespace vorel::formats;
using test::Bytes;
using test::joined;

namespace {

constexpr FontSize kFont{.line_height = 16, .average_width = 7};

std::string lines(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "ab\r";
  return text;
}

TEST(TextExtent, IsThatOfAverageCharacters) {
  const struct {
    std::string text;
    size_t length;
    bool is_cut;
    int x, y;
  } rows[] = {{"", 0, false, 1, 1},
              {"abc", 3, false, 22, 1},
              {"a\tb\n", 4, false, 29, 1},
              {"a\bb", 3, false, 1 + 7 * 10, 1},
              {"abc\r\nd", 6, false, 14, 17},
              {std::string("ab\0cd", 5), 2, false, 15, 1},
              // 1 + 7 n stays below 32,760 up to n = 4,679; the next character is the last that moves on.
              {std::string(10'000, 'x'), 10'000, false, 1 + 7 * 4'680, 1},
              {std::string(4'679, 'x') + "\b\b", 4'681, false, 1 + 7 * 4'687, 1},
              // 1 + 16 n stays below 32,751 up to n = 2,046.
              {lines(2'046) + "z", 2'046 * 3 + 1, false, 7, 32'737},
              {lines(2'047), 2'047 * 3, false, 0, 32'753},
              {lines(2'047) + "z", 2'047 * 3, true, 0, 32'753}};
  for (const auto& row : rows) {
    const TextExtent extent = measure_text(row.text, kFont);
    EXPECT_EQ(std::tuple(extent.length, extent.is_cut, extent.x, extent.y), std::tuple(row.length, row.is_cut, row.x, row.y))
        << row.text.substr(0, 20);
  }
  EXPECT_TRUE(measure_text("a", {.line_height = 40'000, .average_width = 7}).is_cut);
}

Bytes directory(std::initializer_list<std::pair<int, uint32_t>> entries) {
  Bytes bytes;
  for (const auto& [format, offset] : entries) {
    ClipboardEntry entry{.format = static_cast<uint16_t>(format), .bytes = 5, .offset = offset};
    Bytes one(sizeof entry);
    std::memcpy(one.data(), &entry, sizeof entry);
    bytes = joined(bytes, one);
  }
  return bytes;
}

TEST(ClipboardDirectory, GivesTheFirstWholeEntry) {
  const Bytes three = directory({{1, 100}, {8, 200}, {8, 300}});
  const auto found = find_entry(three, ClipboardFormat::kDib);
  ASSERT_TRUE(found);
  EXPECT_EQ(uint32_t{found->offset}, 200u);
  EXPECT_FALSE(find_entry(three, ClipboardFormat::kBitmap));
  EXPECT_FALSE(find_entry(std::span(three).first(2 * 89 - 1), ClipboardFormat::kDib));
}

TEST(ClipboardDirectory, BeginsWithItsNumber) {
  const auto error_of = [](const Bytes& start) {
    const auto count = read_clipboard_header(start);
    return count ? Error::kNone : count.error();
  };
  EXPECT_EQ(*read_clipboard_header(Bytes{0x50, 0xC3, 2, 1}), 258);
  EXPECT_EQ(error_of({0x50, 0xC3, 0, 0}), Error::kClipboardFormat);
  EXPECT_EQ(error_of({0x50, 0xC3}), Error::kClipboardFormat);
  EXPECT_EQ(error_of({0x51, 0xC3, 1, 0}), Error::kFormat);
  EXPECT_EQ(error_of({}), Error::kFormat);
}

TEST(ClipboardDirectory, EntriesLieWithinTheFile) {
  const auto lies = [](uint32_t offset, uint32_t bytes) {
    return lies_within({.bytes = bytes, .offset = offset, .name = {}}, 1'000);
  };
  EXPECT_TRUE(lies(93, 907) && lies(1'000, 0));
  EXPECT_FALSE(lies(93, 908) || lies(1'001, 0) || lies(0xFFFFFFFF, 2) || lies(0x80000000, 0x80000000));
}

}  // namespace
