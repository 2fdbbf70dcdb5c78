// What stands at a metafile's beginning, the sizes that come of it, and the records behind it.
#include "metafile/header.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include "metafile/records.h"
#include "metafile/units.h"
#include "support/dib.h"
#include "support/random.h"

using namespace vorel;
using namespace vorel::metafile;
using test::Bytes;
using test::joined;
using test::Random;

namespace {

constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
constexpr Resolution kScreen{96, 120};

std::pair<int, int> pair_of(Size size) { return {size.width, size.height}; }

template <class Header>
Bytes bytes_of(const Header& header) {
  Bytes bytes(sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

WindowsMetafileHeader windows_header(uint32_t words) {
  return {.type = 1,
          .header_words = 9,
          .version = 0x300,
          .words = words,
          .objects = 0,
          .largest_record_words = 3,
          .parameters = 0};
}

EnhancedHeader enhanced_header(Edges bounds, Edges frame) {
  return {.type = 1,
          .record_bytes = 100,
          .bounds = bounds,
          .frame = frame,
          .signature = 0x464D4520,
          .version = 0x10000,
          .bytes = 120,
          .records = 2,
          .objects = 1,
          .rest = {}};
}

TEST(PlaceableHeader, HasItsWellKnownBytes) {
  const Bytes expected = {0xD7, 0xCD, 0xC6, 0x9A, 0, 0, 0, 0, 0, 0, 100, 0, 50, 0, 96, 0, 0, 0, 0, 0, 0x27, 0x57};
  EXPECT_EQ(bytes_of(placeable_header_for({100, 50}, {96, 96})), expected);
}

TEST(PlaceableHeader, CountsInUnitsOfTheScreen) {
  const struct {
    Size pixels;
    Resolution screen;
    int right, bottom, units;
  } rows[] = {{{100, 100}, {96, 97}, 100, 98, 96},           {{1441, 1441}, {1440, 1440}, 1441, 1441, 1440},
              {{1000, 1000}, {2000, 1000}, 720, 1440, 1440}, {{40'000, 7}, {96, 96}, 32'767, 7, 96},
              {{kMost, kMost}, {1, 1}, 32'767, 32'767, 1},   {{9, 9}, {0, 0}, 0, 0, 0}};
  for (const auto& row : rows) {
    const PlaceableHeader header = placeable_header_for(row.pixels, row.screen);
    EXPECT_EQ(std::tuple(header.right, header.bottom, header.units_per_inch), std::tuple(row.right, row.bottom, row.units))
        << row.pixels.width;
  }
}

TEST(EnhancedFrame, CountsOnNinetySixPixelsPerInch) {
  EXPECT_EQ(enhanced_frame_for({96, 100}).right, 2540);
  EXPECT_EQ(enhanced_frame_for({96, 100}).bottom, 2645);
  EXPECT_EQ(enhanced_frame_for({kMost, 1}).right, kMost);
}

struct File {
  const char* name;
  Bytes bytes;
  size_t offset;
  bool is_enhanced;
  uint64_t length, block;
  std::pair<int, int> pixels;
};

std::vector<File> files() {
  const auto placeable = [](PlaceableHeader header) { return joined(bytes_of(header), bytes_of(windows_header(40))); };
  const auto enhanced = [](Edges bounds, Edges frame) { return bytes_of(enhanced_header(bounds, frame)); };
  const std::pair five_inches(480, 600);
  return {
      {"plain", bytes_of(windows_header(40)), 0, false, 80, 160, five_inches},
      {"longest", bytes_of(windows_header(0xFFFFFFFF)), 0, false, 0x1FFFFFFFE, 0x3FFFFFFFC, five_inches},
      {"an inch",
       placeable({.left = -40, .top = 10, .right = 1400, .bottom = 1450, .units_per_inch = 1440}),
       22,
       false,
       80,
       160,
       {96, 120}},
      {"no units", placeable({.right = 10, .bottom = 10, .units_per_inch = 0}), 22, false, 80, 160, five_inches},
      {"negative", placeable({.left = 10, .right = 9, .bottom = 10, .units_per_inch = 96}), 22, false, 80, 160, five_inches},
      {"less than a pixel", placeable({.right = 1, .bottom = 10, .units_per_inch = 1440}), 22, false, 80, 160, five_inches},
      {"all of the range",
       placeable({.left = -32768, .top = -32768, .right = 32767, .bottom = 32767, .units_per_inch = 1}),
       22,
       false,
       80,
       160,
       {65'535 * 96, 65'535 * 120}},
      {"enhanced", enhanced({1, 2, 301, 102}, {0, 0, 2540, 5080}), 0, true, 120, 120, {96, 240}},
      // Exact although 2540 x 95 / 1905 is no whole number of units.
      {"enhanced, no rounding on the way", enhanced({0, 0, 95, 95}, {0, 0, 1905, 1905}), 0, true, 120, 120, {72, 90}},
      {"placeable and enhanced",
       joined(bytes_of(PlaceableHeader{}), enhanced({0, 0, 9, 9}, {0, 0, 2540, 2540})),
       22,
       true,
       120,
       120,
       {96, 120}},
      {"enhanced, empty frame", enhanced({0, 0, 9, 9}, {5, 5, 5, 5}), 0, true, 120, 120, five_inches},
      {"enhanced, empty bounds", enhanced({9, 0, 9, 9}, {0, 0, 2540, 2540}), 0, true, 120, 120, five_inches},
      {"enhanced, nothing drawn", enhanced({0, 0, -1, -1}, {0, 0, 2540, 5080}), 0, true, 120, 120, {96, 240}},
      {"enhanced, as far as can be",
       enhanced({kLeast, kLeast, kMost, kMost}, {kLeast, kLeast, kMost, kMost}),
       0,
       true,
       120,
       120,
       {162'329'472, 202'911'840}},
  };
}

TEST(MetafileStart, TellsKindAndSize) {
  for (const File& file : files()) {
    const auto start = read_metafile_start(file.bytes);
    ASSERT_TRUE(start) << file.name;
    EXPECT_EQ(std::tuple(start->offset, start->is_enhanced, start->bytes, start->block_bytes().value()),
              std::tuple(file.offset, file.is_enhanced, file.length, file.block))
        << file.name;
    EXPECT_EQ(pair_of(pixels_of(start->extent, kScreen)), file.pixels) << file.name;
    for (size_t count = 0; count < file.bytes.size(); ++count)
      EXPECT_FALSE(read_metafile_start(std::span(file.bytes).first(count))) << file.name << " cut to " << count;
  }
}

TEST(MetafileStart, WhateverIsThereHasASize) {
  std::mt19937 random(1);
  constexpr int32_t kEdges[] = {kLeast, -32'768, -1, 0, 1, 32'767, kMost};
  for (int i = 0; i < 2'000; ++i) {
    Bytes bytes(kMetafileStartBytes);
    for (size_t at = 0; at + 4 <= bytes.size(); at += 4) {
      const auto value = static_cast<int32_t>(random() % 3 == 0 ? random() : static_cast<uint32_t>(kEdges[random() % 7]));
      std::memcpy(&bytes[at], &value, sizeof value);
    }
    if (i % 2 == 0) std::memcpy(bytes.data(), &kPlaceableKey, sizeof kPlaceableKey);
    const auto start = read_metafile_start(bytes);
    ASSERT_TRUE(start);
    for (const Resolution screen : {kScreen, Resolution{kMost, 1}}) {
      const Size size = pixels_of(start->extent, screen);
      EXPECT_TRUE(size.width > 0 && size.height > 0) << i;
    }
  }
}

TEST(Units, InClipboardFiles) {
  using enum MappingMode;
  const std::pair five_inches(480, 600);
  const struct {
    MappingMode mode;
    int x, y;
    std::pair<int, int> pixels;
  } rows[] = {{kText, 7, 9, {7, 9}},
              {kLowMetric, 254, 508, {96, 240}},
              {kHighMetric, 2541, 5080, {96, 240}},
              {kLowEnglish, 200, 100, {192, 120}},
              {kHighEnglish, 1999, 1000, {191, 120}},
              {kTwips, 3, 4, {60, 80}},
              {kTwips, kMost, 1, {kMost, 20}},
              {kIsotropic, 5080, 2540, {192, 120}},
              {kIsotropic, -2, -3, {192, 360}},
              {kIsotropic, 0, 0, five_inches},
              {kIsotropic, kLeast, -1, {kMost, 120}},
              {kAnisotropic, 5080, 2540, {192, 120}},
              {kAnisotropic, 0, 77, five_inches},
              {kAnisotropic, -5, 77, five_inches},
              {kText, -7, 9, five_inches},
              {kHighMetric, 2540, -2540, five_inches},
              {static_cast<MappingMode>(0), 7, 9, five_inches},
              {static_cast<MappingMode>(kMost), 7, 9, five_inches}};
  for (const auto& row : rows)
    EXPECT_EQ(pair_of(pixels_in_file({row.mode, row.x, row.y}, kScreen)), row.pixels) << int(row.mode) << ' ' << row.x;
}

TEST(Units, OnTheClipboard) {
  using enum MappingMode;
  constexpr Size kOtherwise{320, 240};
  const struct {
    MappingMode mode;
    int x, y;
    std::pair<int, int> pixels;
    int dots_per_inch = 96;
  } rows[] = {{kText, 7, 9, {7, 9}},
              {kLowMetric, 254, 508, {99, 199}},
              {kHighMetric, 2540, 5080, {99, 199}},
              {kIsotropic, 2540, 5080, {99, 199}},
              {kAnisotropic, 2540, 5080, {99, 199}},
              {kLowEnglish, 200, 100, {192, 96}},
              {kHighEnglish, 1999, 1000, {191, 96}},
              {kTwips, 1440, 2880, {96, 192}},
              {kAnisotropic, 0, 5080, {320, 199}},
              {kAnisotropic, 2540, 1, {99, 240}},
              {kText, -1, -1, {320, 240}},
              {kHighMetric, kMost, kLeast, {84'146'298, 240}},
              {kHighMetric, 2540, 2540, {320, 240}, 0},
              {static_cast<MappingMode>(9), 2540, 2540, {320, 240}}};
  for (const auto& row : rows)
    EXPECT_EQ(pair_of(pixels_on_clipboard({row.mode, row.x, row.y}, row.dots_per_inch, kOtherwise)), row.pixels)
        << int(row.mode) << ' ' << row.x;
}

// Three records of 4, 3 and 5 words, and the header.
Bytes metafile_of_three_records() {
  Bytes bytes = bytes_of(windows_header(21));
  for (const int word : {4, 0, 0x103, 8, 3, 0, 0x1E, 5, 0, 0x20B, 1, 2}) {
    bytes.push_back(static_cast<uint8_t>(word));
    bytes.push_back(static_cast<uint8_t>(word >> 8));
  }
  return bytes;
}

// Bytes of the records that are played, with the header.
size_t playable_bytes(Bytes metafile) {
  metafile.resize(metafile.size() + kRoomBehindRecords);
  const auto playable = playable_windows_metafile(metafile);
  if (playable.empty()) return 0;
  uint32_t words, end;
  std::memcpy(&words, playable.data() + 6, sizeof words);
  std::memcpy(&end, playable.data() + playable.size() - kRoomBehindRecords, sizeof end);
  EXPECT_EQ(words * 2, playable.size());
  EXPECT_EQ(end, 3u) << "an end record";
  EXPECT_EQ(playable[0], 1) << "in memory, whatever the file was";
  return playable.size() - kRoomBehindRecords;
}

TEST(Records, EndWithTheLastWholeOne) {
  const Bytes whole = metafile_of_three_records();
  constexpr size_t kEnds[] = {18, 26, 32, 42};
  for (size_t count = 0; count <= whole.size(); ++count) {
    const auto* end = std::ranges::upper_bound(kEnds, count);
    EXPECT_EQ(playable_bytes(Bytes(whole.begin(), whole.begin() + static_cast<int>(count))), end == kEnds ? 0 : end[-1])
        << count;
  }
  for (const auto& [length, end] :
       {std::pair(0u, 26u), {2u, 26u}, {8u, 42u}, {9u, 26u}, {0x80000003u, 26u}, {0xFFFFFFFFu, 26u}}) {
    Bytes changed = whole;
    std::memcpy(&changed[26], &length, 4);
    EXPECT_EQ(playable_bytes(changed), end) << length;
  }
}

template <class Number>
Bytes bytes_of_all(std::span<const Number> numbers) {
  Bytes bytes(numbers.size_bytes());
  std::ranges::copy(std::as_bytes(numbers), reinterpret_cast<std::byte*>(bytes.data()));
  return bytes;
}

// Metafiles of one record, with places for some objects.
Bytes windows_metafile(uint16_t objects, unsigned function, const Bytes& parameters) {
  WindowsMetafileHeader header = windows_header(0);
  header.objects = objects;
  const auto words = static_cast<uint32_t>(3 + parameters.size() / 2);
  return joined(joined(bytes_of(header), joined(bytes_of(words), bytes_of(static_cast<uint16_t>(function)))), parameters);
}
Bytes enhanced_metafile(uint16_t objects, uint32_t type, const Bytes& parameters) {
  EnhancedHeader header = enhanced_header({}, {});
  header.objects = objects;
  const auto length = static_cast<uint32_t>(8 + parameters.size());
  return joined(joined(bytes_of(header), joined(bytes_of(type), bytes_of(length))), parameters);
}

// A record is its function and parameters; the last parameter that is right makes it whole.
TEST(Records, OfWindowsMetafilesAgreeWithTheirSize) {
  const struct {
    const char* name;
    std::vector<uint16_t> words;
    size_t changed;  // the word to be changed
    uint16_t to;     // the least number that is a lie
  } rows[] = {
      {"points", {0x325, 2, 1, 1, 9, 9}, 1, 3},
      {"polygons", {0x538, 2, 1, 2, 1, 1, 2, 2, 3, 3}, 3, 3},
      {"number of polygons", {0x538, 1, 1, 2, 2}, 1, 2},
      {"text", {0x521, 3, 'a', 'b', 5, 5}, 1, 5},
      {"text in a rectangle", {0xA32, 1, 1, 2, 4, 0, 0, 9, 9, 'a'}, 3, 3},
      {"glyphs", {0xA32, 1, 1, 2, 0x10, 'a', 'b'}, 3, 3},
      {"two distances a character", {0xA32, 1, 1, 2, 0x2000, 'a', 5, 5, 5, 5}, 3, 3},
      {"escape", {0x626, 15, 4, 1, 1}, 2, 5},
      {"palette", {0xF7, 0x300, 1, 1, 1}, 2, 2},
      {"bitmap", {0x922, 0, 0, 0, 0, 0, 1, 1, 0, 0, 1, 1, 2, 0x101, 0x80}, 11, 9},
      {"region's scans", {0x6FF, 0, 6, 0, 0, 1, 1, 0, 0, 9, 9, 9, 2, 0, 9, 0, 9, 2}, 6, 2},
      {"region's ends", {0x6FF, 0, 6, 0, 0, 1, 1, 0, 0, 9, 9, 9, 2, 0, 9, 0, 9, 2}, 12, 4},
      {"object", {0x12D, 0}, 1, 1},
      {"region and brush", {0x228, 0, 0}, 2, 1},
      {"frame", {0x429, 0, 0, 1, 1}, 1, 1},
      {"inverted region", {0x12A, 0}, 1, 1},
      {"painted region", {0x12B, 0}, 1, 1},
      {"rows", {0x142, 5, 0, 12, 0, 1, 2, 1, 24, 1, 2, 3, 4}, 6, 3},
      {"width", {0x142, 5, 0, 12, 0, 1, 1, 1, 24, 1, 2}, 5, 2},
      {"depth", {0x142, 5, 0, 12, 0, 1, 1, 1, 24, 1, 2}, 8, 23},
      {"rows in the record", {0xD33, 0, 1, 0, 0, 0, 9, 9, 0, 0, 12, 0, 1, 9, 1, 24, 1, 2}, 2, 2},
      {"bitmap", {0x922, 0, 0, 0, 0, 2, 1, 0, 0, 0, 16, 2, 2, 0x101, 1, 1}, 11, 3},
  };
  for (const auto& row : rows) {
    const auto playable = [&](const std::vector<uint16_t>& words) {
      return playable_bytes(windows_metafile(1, words[0], bytes_of_all(std::span(words).subspan(1)))) - kWindowsHeaderBytes;
    };
    const size_t whole = 4 + 2 * row.words.size();
    EXPECT_EQ(playable(row.words), whole) << row.name;
    std::vector<uint16_t> changed = row.words;
    changed[row.changed] = row.to;
    EXPECT_EQ(playable(changed), 0u) << row.name;
    changed[row.changed] = row.words[0] == 0x6FF && row.changed == 12 ? 1 : 0xFFFF;
    EXPECT_EQ(playable(changed), 0u) << row.name;
    EXPECT_EQ(playable({row.words.begin(), row.words.begin() + 2}) == 0, row.words.size() > 2) << row.name << ", cut";
  }
}

// The upper byte of a function's number is the number of its parameters.
TEST(Records, OfWindowsMetafilesHaveAllTheirParameters) {
  for (const unsigned function :
       {0x102u, 0x103u, 0x104u, 0x106u, 0x107u, 0x108u, 0x127u, 0x12Eu, 0x139u, 0x149u, 0x201u, 0x209u, 0x20Au,
        0x20Bu, 0x20Cu, 0x20Du, 0x20Eu, 0x20Fu, 0x211u, 0x213u, 0x214u, 0x220u, 0x231u, 0x410u, 0x412u, 0x415u,
        0x416u, 0x418u, 0x419u, 0x41Bu, 0x41Fu, 0x548u, 0x61Cu, 0x61Du, 0x817u, 0x81Au, 0x830u}) {
    const auto is_playable = [&](size_t parameters) {
      return playable_bytes(windows_metafile(0, function, Bytes(2 * parameters))) > kWindowsHeaderBytes;
    };
    EXPECT_TRUE(is_playable(function >> 8)) << function;
    EXPECT_FALSE(is_playable((function >> 8) - 1)) << function;
  }
}

// A record is its type and parameters, as numbers of 32 bits.
TEST(Records, OfEnhancedMetafilesAgreeWithTheirSize) {
  using Numbers = std::vector<uint32_t>;
  const auto after = [](Numbers numbers, size_t zeros, const Numbers& more) {
    numbers.resize(numbers.size() + zeros);
    numbers.insert(numbers.end(), more.begin(), more.end());
    return numbers;
  };
  const Numbers region = {32, 1, 1, 16, 0, 0, 9, 9, 0, 0, 9, 9};
  const Numbers core_dib = {12, 0x20001, 0x180001, 0, 0};  // 1 x 2 pixels of 24 bits
  const struct {
    const char* name;
    Numbers numbers;
    size_t changed;
    uint32_t to;  // the least number that is a lie
  } rows[] = {
      {"points", after({4}, 4, {2, 1, 1, 2, 2}), 5, 3},
      {"short points", after({87}, 4, {2, 1, 2}), 5, 3},
      {"typed points", after({92}, 4, {2, 1, 2, 0x0206}), 5, 3},
      {"lists", after({91}, 4, {1, 2, 2, 1, 2}), 5, 4},
      {"lists' points", after({91}, 4, {1, 2, 2, 1, 2}), 7, 3},
      {"brush", {39, 1, 2, 0, 0}, 2, 3},
      {"object", {37, 1}, 1, 2},
      {"stock object", {37, 0x80000013}, 1, 0x80000014},
      {"deleted object", {40, 1}, 1, 0x80000001},
      {"the metafile's own number", {40, 1}, 1, 0},
      {"pen's dashes", after({95, 1}, 9, {1, 5}), 11, 2},
      {"pen's style", after({95, 1}, 10, {}), 8, 3},
      {"palette", {49, 1, 0x10300, 7}, 2, 0x20300},
      {"region's bytes", after(after({73}, 4, {48}), 0, region), 5, 49},
      {"region's rectangles", after(after({73}, 4, {48}), 0, region), 8, 2},
      {"region's brush", after(after({71}, 4, {48, 1}), 0, region), 6, 2},
      {"frame's brush", after(after({72}, 4, {48, 1, 1, 1}), 0, region), 6, 2},
      {"clip region", after({75, 48, 5}, 0, region), 1, 20},
      {"gradient", after({118}, 4, after({2, 1, 0}, 8, {0, 1})), 16, 2},
      {"characters", after({84}, 9, after({2, 76, 0}, 5, {0x620061})), 10, 3},
      {"where characters are", after({84}, 9, after({2, 76, 0}, 5, {0x620061})), 11, 77},
      {"where distances are", after({84}, 9, after({1, 76, 0}, 4, {80, 'a', 5})), 17, 81},
      {"texts", after({96}, 7, after({1, 0, 0, 1, 80, 0}, 5, {'a'})), 8, 2},
      {"second of texts", after({96}, 7, {2, 0, 0, 1, 120, 0, 0, 0, 0, 0, 0, 0, 0, 1, 120, 0, 0, 0, 0, 0, 0, 'a'}), 21, 5},
      {"small text", {108, 0, 0, 4, 0x300, 0, 0, 0, 0x61616161}, 3, 5},
      {"comment", {70, 4, 0}, 1, 5},
      {"picture", after({93, 1, 0, 32, 12, 44, 8}, 0, core_dib), 3, 33},
      {"picture's rows", after({93, 1, 0, 32, 12, 44, 8}, 0, core_dib), 6, 7},
      {"where rows are", after({93, 1, 0, 32, 12, 44, 8}, 0, core_dib), 5, 45},
  };
  for (const auto& row : rows) {
    const auto is_playable = [&](const Numbers& numbers) {
      Bytes file = enhanced_metafile(2, numbers[0], bytes_of_all(std::span(numbers).subspan(1)));
      return playable_enhanced_metafile(file).size() == file.size() && !file.empty();
    };
    EXPECT_TRUE(is_playable(row.numbers)) << row.name;
    Numbers changed = row.numbers;
    changed[row.changed] = row.to;
    EXPECT_FALSE(is_playable(changed)) << row.name;
    changed[row.changed] = 0xFFFFFFFF;
    EXPECT_FALSE(is_playable(changed)) << row.name;
    EXPECT_FALSE(is_playable({row.numbers[0]})) << row.name << ", cut";
  }
}

TEST(Records, OfEnhancedMetafilesHaveAllTheirNumbers) {
  const struct {
    size_t numbers;
    std::vector<uint32_t> types;
  } rows[] = {
      {1, {16, 17, 18, 19, 20, 21, 22, 24, 25, 34, 57, 58, 67, 98, 115}},
      {2, {9, 10, 11, 12, 13, 26, 27, 54, 120}},
      {3, {15}},
      {4, {29, 30, 31, 32, 42, 43, 53, 62, 63, 64}},
      {5, {41}},
      {6, {23, 35, 44}},
      {7, {36}},
      {8, {45, 46, 47, 55}},
      {10, {104}},
      {20, {1}},
      {23, {76}},  // without a picture
      {25, {77}},
  };
  const auto is_playable = [](uint32_t type, size_t numbers) {
    Bytes file = enhanced_metafile(1, type, Bytes(4 * numbers));
    return !playable_enhanced_metafile(file).empty();
  };
  for (const auto& row : rows)
    for (const uint32_t type : row.types) {
      EXPECT_TRUE(is_playable(type, row.numbers)) << type;
      EXPECT_FALSE(is_playable(type, row.numbers - 1)) << type;
    }
}

TEST(Records, OfEnhancedMetafilesEndWithTheirEndRecord) {
  EnhancedHeader header = enhanced_header({}, {});
  const Bytes end = joined(bytes_of(14u), joined(bytes_of(20u), Bytes(12)));
  Bytes file = joined(joined(bytes_of(header), end), Bytes(8, 0xFF));
  const auto playable = playable_enhanced_metafile(file);
  EXPECT_EQ(playable.size(), 120u);
  uint32_t bytes;
  std::memcpy(&bytes, &file[48], sizeof bytes);
  EXPECT_EQ(bytes, 120u) << "some players go on behind it";
  header.objects = 0;
  file = joined(bytes_of(header), end);
  EXPECT_TRUE(playable_enhanced_metafile(file).empty());
}

// ---- Random records ----

// Counts and offsets as in short records, and sometimes numbers beyond any record.
uint32_t any_parameter(Random& random) {
  return random.one_of(
      {0u, 0u, 0u, 1u, 1u, 2u, 3u, 4u, 5u, 16u, 32u, 36u, 48u, 52u, 76u, 100u, 0x101u, 0x204u, 0x2010u, 0xFFFFFFFFu});
}

// Short or long headers, with colours or without, and some more bytes.
Bytes any_dib(Random& random) {
  const auto width = static_cast<uint32_t>(random.between(0, 8)), height = random.one_of({0u, 1u, 2u, 3u, 5u, 0xFFFFFFFEu});
  const auto depth = static_cast<uint16_t>(random.one_of({1, 4, 8, 16, 24, 32, 0}));
  const uint32_t compression = random.one_of({0u, 0u, 1u, 2u, 3u, 4u}), colors = random.one_of({0u, 0u, 1u, 3u, 300u});
  const std::array<uint16_t, 4> words = {static_cast<uint16_t>(width), static_cast<uint16_t>(height), 1, depth};
  const std::array<uint32_t, 9> numbers = {width, height, depth * 0x10000u + 1, compression, 20, 0, 0, colors, 0};
  Bytes bytes = random.once_in(2) ? joined(bytes_of(12u), bytes_of(words)) : joined(bytes_of(40u), bytes_of(numbers));
  const int room = depth == 8 ? random.one_of({256, 512, 768, 1024}) : 0;
  bytes.resize(bytes.size() + static_cast<size_t>(room + random.between(0, 69)));
  return bytes;
}

Bytes any_enhanced_parameters(Random& random) {
  std::vector<uint32_t> numbers(static_cast<size_t>(random.between(0, 39)));
  for (uint32_t& number : numbers) number = any_parameter(random);
  Bytes dib;
  const size_t at = random.one_of({2u, 10u, 19u, 22u, 26u, 29u});  // where record types give the offset of a header
  if (random.once_in(2) && at + 4 <= numbers.size()) {
    dib = any_dib(random);
    dib.resize(dib.size() / 4 * 4);
    const auto start = static_cast<uint32_t>(8 + 4 * numbers.size()), size = static_cast<uint32_t>(dib.size());
    const uint32_t head = std::min(size, random.one_of({12u, 16u, 20u, 24u, 40u, 48u, 52u}));
    numbers[at] = start, numbers[at + 1] = head, numbers[at + 2] = start + head, numbers[at + 3] = size - head;
  }
  return joined(bytes_of_all(std::span<const uint32_t>(numbers)), dib);
}

Bytes any_windows_parameters(Random& random) {
  Bytes parameters;
  for (int i = random.between(0, 23); i > 0; --i)
    parameters = joined(parameters, bytes_of(static_cast<uint16_t>(any_parameter(random))));
  if (random.once_in(2)) {
    parameters.resize(random.one_of({4u, 16u, 18u, 20u, 22u}));
    parameters = joined(parameters, any_dib(random));
    parameters.resize(parameters.size() / 2 * 2);
  }
  return parameters;
}

// Which random records of each type are played, and how they are changed for it.
TEST(Records, RandomOnesArePlayedAsRecorded) {
  Random random(1);
  test::Digest enhanced, windows;
  for (uint32_t type = 0; type < 130; ++type)
    for (int i = 0; i < 300; ++i) {
      Bytes file = enhanced_metafile(2, type, any_enhanced_parameters(random));
      enhanced.add_number(!playable_enhanced_metafile(file).empty());
    }
  EXPECT_EQ(enhanced.value, 0xabfb9d2c09d0d1c4u) << std::hex << enhanced.value;
  for (uint32_t function = 0; function < 0x1000; ++function)
    for (int i = 0; i < (function % 0x100 < 0x50 || function % 0x100 > 0xEF ? 30 : 1); ++i) {
      Bytes file = windows_metafile(2, function, any_windows_parameters(random));
      file.resize(file.size() + kRoomBehindRecords);
      windows.add(playable_windows_metafile(file));
    }
  EXPECT_EQ(windows.value, 0x838b10a4dff89e17u) << std::hex << windows.value;
}

}  // namespace
