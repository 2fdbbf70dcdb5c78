// What files tell in words: TIFF directories, records of cameras, texts of PNG files; whole, cut off and damaged.
#include "common/tags.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>

#include "support/dib.h"

using namespace vorel;
using namespace vorel::programs;
using namespace std::string_literals;

namespace {

using Texts = std::map<std::string, std::string>;

Texts tags_of(const std::string& file, FormatCode format, int page = 1) {
  std::istringstream stream(file);
  Texts texts;
  for (const Tag& tag : read_tags(stream, format, page)) texts[tag.name] = tag.value;
  return texts;
}

// Writes TIFF files in either byte order, with 32- or 64-bit places.
struct TiffWriter {
  bool is_big_endian, is_wide;
  std::string bytes = {};

  struct Entry {
    uint32_t tag, type;
    std::string values;
    uint64_t count;
  };

  std::string number(uint64_t value, size_t size) const {
    std::string text;
    for (size_t i = 0; i < size; ++i) text += static_cast<char>(value >> 8 * (is_big_endian ? size - 1 - i : i));
    return text;
  }
  size_t place() const { return is_wide ? 8 : 4; }

  Entry text(uint32_t tag, const std::string& value) const { return {tag, 2, value + '\0', value.size() + 1}; }
  Entry shorts(uint32_t tag, const std::vector<uint16_t>& values) const {
    Entry entry = {tag, 3, "", values.size()};
    for (const uint16_t value : values) entry.values += number(value, 2);
    return entry;
  }
  Entry ratio(uint32_t tag, uint32_t above, uint32_t below) const {
    return {tag, 5, number(above, 4) + number(below, 4), 1};
  }

  void begin() {
    bytes = is_big_endian ? "MM" : "II";
    bytes += number(is_wide ? 43 : 42, 2);
    if (is_wide) bytes += number(8, 2) + number(0, 2);
    bytes += number(bytes.size() + place(), place());
  }

  // A directory here, what does not fit into its entries behind it. Entries of type 0 point to what follows the directory.
  void add(const std::vector<Entry>& entries, bool is_last) {
    const size_t start = bytes.size(), end = start + (is_wide ? 8 : 2) + entries.size() * (4 + 2 * place()) + place();
    size_t behind = 0;
    for (const Entry& entry : entries) behind += entry.values.size() > place() ? entry.values.size() : 0;
    std::string outside;
    bytes += number(entries.size(), is_wide ? 8 : 2);
    for (const Entry& entry : entries) {
      std::string value = entry.values;
      if (entry.type == 0) value = number(end + behind, place());
      bytes += number(entry.tag, 2) + number(entry.type == 0 ? 4 : entry.type, 2) + number(entry.count, place());
      if (value.size() > place()) {
        bytes += number(end + outside.size(), place());
        outside += value;
      } else {
        value.resize(place());
        bytes += value;
      }
    }
    bytes += number(is_last ? 0 : end + behind, place()) + outside;
  }
};

std::string two_pages(bool is_big_endian, bool is_wide) {
  TiffWriter writer{is_big_endian, is_wide};
  writer.begin();
  writer.add({writer.text(270, " Line one\r\nline   two "), writer.text(305, "M\xFCller"), writer.shorts(258, {8, 8, 8}),
              writer.shorts(278, {64}), writer.shorts(262, {2}), writer.shorts(274, {6}), writer.ratio(282, 3000, 10),
              writer.ratio(283, 150, 1), writer.shorts(296, {3})},
             false);
  writer.add({writer.text(285, "Se\xC3\xB1or"), writer.shorts(297, {1, 2}), writer.shorts(262, {77})}, true);
  return writer.bytes;
}

TEST(Tags, AreReadFromEveryKindOfTiff) {
  const Texts first = {{"Description", "Line one line two"},
                       {"Software", "M\xC3\xBCller"},
                       {"Bits per sample", "8, 8, 8"},
                       {"Pixels", "RGB"},
                       {"Rows per strip", "64"},
                       {"Orientation", "to be turned to the right"},
                       {"Stated resolution", "300 x 150 per centimetre"}};
  const Texts second = {{"Page name", "Se\xC3\xB1or"}, {"Page number", "2 of 2"}, {"Pixels", "77"}};
  for (const bool is_big_endian : {false, true}) {
    for (const bool is_wide : {false, true}) {
      const std::string file = two_pages(is_big_endian, is_wide);
      EXPECT_EQ(tags_of(file, FormatCode::kTiff), first) << is_big_endian << is_wide;
      EXPECT_EQ(tags_of(file, FormatCode::kTiff, 2), second) << is_big_endian << is_wide;
      EXPECT_EQ(tags_of(file, FormatCode::kTiff, 3), Texts());
    }
  }
}

std::string camera_record() {
  TiffWriter writer{true, false};
  writer.begin();
  writer.add({writer.text(271, "Maker"), {34665, 0, "", 1}}, true);
  writer.add({writer.ratio(33434, 10, 2500), writer.ratio(33437, 28, 10), writer.shorts(34855, {400}),
              writer.text(36867, "2026:01:02 03:04:05"), writer.ratio(37386, 50, 1)},
             true);
  return "Exif\0\0"s + writer.bytes;
}

std::string segment(int marker, const std::string& bytes) {
  const size_t length = bytes.size() + 2;
  return "\xFF"s + static_cast<char>(marker) + static_cast<char>(length >> 8) + static_cast<char>(length) + bytes;
}

std::string jpeg() { return "\xFF\xD8"s + segment(0xE1, camera_record()) + segment(0xFE, "by hand") + "\xFF\xDA"s; }

std::string chunk(const std::string& kind, const std::string& bytes) {
  return TiffWriter{true, false}.number(bytes.size(), 4) + kind + bytes + "sum.";
}

std::string png() {
  return "\x89PNG\r\n\x1A\n"s + chunk("IHDR", std::string(13, '\0')) + chunk("tEXt", "Title\0caf\xE9"s) +
         chunk("IDAT", std::string(70'000, 'x')) + chunk("iTXt", "Author\0\0\0de\0Autor\0M\xC3\xBCller"s) +
         chunk("iTXt", "Packed\0\1\0\0\0zipped"s) + chunk("IEND", "") + chunk("tEXt", "After\0end"s);
}

TEST(Tags, AreReadFromCamerasAndTexts) {
  const Texts shot = {{"Make", "Maker"},          {"Exposure", "1/250 s"},          {"Aperture", "f/2.8"},
                      {"Sensitivity", "ISO 400"}, {"Taken", "2026:01:02 03:04:05"}, {"Focal length", "50 mm"},
                      {"Comment", "by hand"}};
  EXPECT_EQ(tags_of(jpeg(), FormatCode::kJpeg), shot);
  EXPECT_EQ(tags_of(png(), FormatCode::kPng), (Texts{{"Title", "caf\xC3\xA9"}, {"Author", "M\xC3\xBCller"}}));
}

TEST(Tags, AreLatinUnlessTheyAreWholeUtf8) {
  const auto comment = [](const std::string& text) {
    return tags_of("\xFF\xD8"s + segment(0xFE, text) + "\xFF\xDA"s, FormatCode::kJpeg).at("Comment");
  };
  // The first and last characters of each length, and beside the surrogates.
  for (const char* text : {"\xC2\xA1", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
                           "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_EQ(comment(text), text);
  // Too long or too short for the character, no first byte, half a pair, beyond the last character.
  for (const char* text : {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xE2\x82", "\xC3(", "\xE2\x82(", "\xBF",
                           "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"})
    EXPECT_NE(comment(text), text);
  EXPECT_EQ(comment("\xE9"), "\xC3\xA9");
}

bool is_clean(const Tag& tag) {
  for (const char character : tag.name + tag.value)
    if (static_cast<uint8_t>(character) < ' ') return false;
  return !tag.value.empty() && tag.value.size() < 1000;
}

// Whatever the bytes are, reading soon ends, with short texts of one line each. Which ones is recorded.
TEST(Tags, OfDamagedFilesAreShortAndEnd) {
  std::mt19937 random(7);
  test::Digest digest;
  const auto add = [&](const std::string& text) {
    digest.add({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  };
  const std::pair<std::string, FormatCode> files[] = {{two_pages(false, false), FormatCode::kTiff},
                                                      {two_pages(true, true), FormatCode::kTiff},
                                                      {jpeg(), FormatCode::kJpeg},
                                                      {png(), FormatCode::kPng}};
  for (const auto& [whole, format] : files) {
    for (int i = 0; i < 3000; ++i) {
      std::string file = whole.substr(0, i % 3 == 0 ? random() % std::min<size_t>(whole.size(), 600) : whole.size());
      const size_t damaged = std::min<size_t>(file.size(), 400);
      for (unsigned changes = random() % 4; changes > 0 && damaged > 0; --changes)
        file[random() % damaged] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
      std::istringstream stream(file);
      for (const Tag& tag : read_tags(stream, format, 1 + i % 3)) {
        ASSERT_TRUE(is_clean(tag)) << tag.name << ": " << tag.value;
        add(tag.name), add(tag.value);
      }
    }
  }
  EXPECT_EQ(digest.value, 0x2286a38e346f9207);
  TiffWriter circle{false, false};  // a directory that comes after itself
  circle.begin();
  circle.add({circle.text(270, "again")}, true);
  circle.bytes.replace(8 + 2 + 12, 4, circle.number(8, 4));
  EXPECT_EQ(tags_of(circle.bytes, FormatCode::kTiff, 60'000).at("Description"), "again");
}

}  // namespace
