// TIFF and CALS files through the modules' entry points.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

#include "codecs/codec.h"
#include "codecs/tiff_file.h"

using namespace test;

namespace {

class TiffTest : public CodecTest {
 protected:
  TiffTest() : CodecTest(kTiff) {}

  using CodecTest::save;
  bool save(const Bytes& dib, int compression, int page = 1) const {
    return modules().save_tiff(path.c_str(), block_of(dib).get(), compression, page) != FALSE;
  }
};

const Bytes kBlackWhite = {0, 0, 0, 0, 255, 255, 255, 0}, kWhiteBlack = {255, 255, 255, 0, 0, 0, 0, 0};

// Neighbouring pixels differ little, as JPEG likes it.
Bytes smooth(int width, int height, int depth) {
  Bytes dib = noise(width, height, depth);
  const size_t stride = stride_of(width, depth), rows = dib.size() - stride * static_cast<size_t>(height);
  for (size_t i = rows; i < dib.size(); ++i)
    dib[i] = static_cast<uint8_t>((i - rows) / stride * 2 + (i - rows) % stride / 3);
  return depth == 8 ? with_gray_ramp(dib) : dib;
}

TEST_F(TiffTest, PicturesComeBackAsTheyWereSaved) {
  const std::map<int, std::vector<int>> compressions = {
      {1, {0, 1, 2, 3, 4, 5, 8, 32773}}, {4, {0, 1, 5, 8, 32773}}, {8, {0, 1, 5, 8, 32773}}, {24, {0, 1, 5, 8, 32773}}};
  for (const auto& [depth, numbers] : compressions)
    for (const int compression : numbers)
      for (const int width : {1, 9, 301}) {
        const Bytes plain = noise(width, 5, depth);
        for (const Bytes& dib : {plain, depth == 24 ? plain : with_gray_ramp(plain)}) {
          SCOPED_TRACE(testing::Message() << depth << " bits, compression " << compression << ", width " << width);
          ASSERT_TRUE(save(dib, compression));
          const Bytes loaded = load();
          EXPECT_EQ(status, IMG_OK);
          EXPECT_EQ(largest_difference(loaded, dib), 0);
          EXPECT_EQ(header_of(loaded).biBitCount, depth);
          const int expected = compression != 0 ? compression : depth == 1 ? 4 : 8;
          EXPECT_EQ(modules().tiff_compression(path.c_str(), 1, nullptr), expected);
        }
      }
}

TEST_F(TiffTest, JpegKeepsPicturesNearly) {
  for (const int depth : {8, 24}) {
    const Bytes dib = smooth(70, 90, depth);
    ASSERT_TRUE(save(dib, 7));
    const Bytes loaded = load();
    EXPECT_LE(largest_difference(loaded, dib), 12) << depth;
    EXPECT_EQ(header_of(loaded).biBitCount, depth);
  }
}

TEST_F(TiffTest, ResolutionsOfAnyKindComeBack) {
  for (const auto& [x, y] : {std::pair(3937, 3937), {11812, 7874}, {0, 0}, {2835, 0}, {1, 12'345'678}}) {
    BITMAPINFOHEADER header = header_for(3, 1, 24);
    header.biXPelsPerMeter = x;
    header.biYPelsPerMeter = y;
    ASSERT_TRUE(save(with_header(header, Bytes(12))));
    const Bytes loaded = load();
    EXPECT_EQ(header_of(loaded).biXPelsPerMeter, x);
    EXPECT_EQ(header_of(loaded).biYPelsPerMeter, y);
  }
}

TEST_F(TiffTest, OneInBilevelFilesIsBlackAndComesBackAsZero) {
  constexpr uint8_t kRow = 0b01110010;
  for (const bool white_first : {false, true}) {
    Bytes dib = with_table(noise(8, 1, 1), white_first ? kWhiteBlack : kBlackWhite);
    dib[dib.size() - 4] = kRow;
    const uint8_t black = white_first ? kRow : static_cast<uint8_t>(~kRow);
    ASSERT_TRUE(save(dib, 1));
    EXPECT_EQ(read_file(path)[8], black);
    ASSERT_TRUE(modules().save_cals(path.c_str(), block_of(dib).get(), 0, 0, 0));
    Block cals(modules().load_cals(path.c_str(), nullptr));
    for (const Bytes& loaded : {bytes_of(cals.get()), (save(dib, 4), load())}) {
      ASSERT_EQ(loaded.size(), 52u);
      EXPECT_EQ(loaded[40], 0);  // the table begins with black
      EXPECT_EQ(loaded[44], 255);
      EXPECT_EQ(loaded[48], static_cast<uint8_t>(~black));
    }
  }
}

TEST_F(TiffTest, PagesAreAddedAtTheEnd) {
  const std::vector<Bytes> pages = {noise(20, 30, 1), noise(7, 5, 24), noise(300, 2, 8)};
  Bytes before;
  for (size_t i = 0; i < pages.size(); ++i) {
    ASSERT_TRUE(save(pages[i], 0, static_cast<int>(i) + 1));
    Bytes after = read_file(path);
    ASSERT_GT(after.size(), before.size());
    int changed = 0;
    for (size_t k = 0; k < before.size(); ++k) changed += before[k] != after[k];
    EXPECT_LE(changed, 4);  // the link to the new page
    before = after;
  }
  EXPECT_EQ(modules().count_tiff(path.c_str(), &status), 3);
  for (const int page : {3, 1, 2}) EXPECT_EQ(largest_difference(load(page), pages[static_cast<size_t>(page) - 1]), 0);
  for (const int page : {0, 4, -1, 1 << 30}) expect_refused(before, IMG_E_PARAMETER, std::to_string(page), page);
}

TEST_F(TiffTest, WhatCannotBeSavedLeavesTheFileAlone) {
  EXPECT_FALSE(save(noise(3, 3, 8), 0, 2));
  EXPECT_FALSE(std::filesystem::exists(path));

  write_file(path, {'n', 'o', ' ', 't', 'i', 'f', 'f'});
  const Bytes text = read_file(path);
  EXPECT_FALSE(save(noise(3, 3, 8), 0, 2));
  const std::vector<std::pair<int, int>> unsuitable = {{1, 7},  {4, 2},  {4, 7},  {8, 3},    {8, 7},
                                                       {24, 4}, {24, 6}, {1, -1}, {8, 65536}};
  for (const auto& [depth, compression] : unsuitable)
    EXPECT_FALSE(save(noise(9, 9, depth), compression)) << depth << ", " << compression;
  for (const int depth : {4, 8, 24})
    EXPECT_FALSE(modules().save_cals(path.c_str(), block_of(noise(9, 9, depth)).get(), 0, 0, 0));
  EXPECT_FALSE(save(noise(65'501, 1, 24), 7));
  EXPECT_FALSE(modules().save_cals(path.c_str(), block_of(noise(1'000'000, 1, 1)).get(), 0, 0, 0));
  EXPECT_EQ(read_file(path), text);

  // A last page that is linked to the first.
  ASSERT_TRUE(save(noise(3, 3, 8)));
  Bytes loop = read_file(path);
  size_t directory = 0;
  std::memcpy(&directory, &loop[4], 4);
  std::memcpy(&loop[directory + 2 + loop[directory] * size_t{12}], &loop[4], 4);
  write_file(path, loop);
  EXPECT_EQ(modules().count_tiff(path.c_str(), nullptr), 1);
  EXPECT_FALSE(save(noise(3, 3, 8), 0, 2));
  EXPECT_EQ(read_file(path), loop);
}

// ---- Files made by hand ----

struct Variant {
  const char* name;
  Tags tags;
  Bytes pixels;
  int depth;
  std::string picture;
};

TEST_F(TiffTest, VariantsOfSamples) {
  const Tags alpha = {{kSamples, {2}}, {kExtraSamples, {2}}};
  const Tags is_signed = {{kSampleFormat, {2}}}, is_float = {{kSampleFormat, {3}}};
  const Tags limited = {{kSampleFormat, {2}}, {kSmallest, {0}}, {kLargest, {100}}};
  const Tags float_alpha = {{kSamples, {2}}, {kExtraSamples, {2}}, {kSampleFormat, {3, 3}}};
  const std::vector<Variant> variants = {
      {"signed, from the smallest to the largest",
       page_tags(3, 1, 8, 1, is_signed),
       {0xF6, 0, 10},
       8,
       "000000 808080 FFFFFF"},
      {"signed, from white", page_tags(2, 1, 16, 0, is_signed), {0, 0x80, 0xFF, 0x7F}, 8, "FFFFFF 000000"},
      {"signed, within stated limits", page_tags(3, 1, 8, 1, limited), {0xF6, 50, 120}, 8, "000000 808080 FFFFFF"},
      {"signed and alike", page_tags(2, 1, 8, 1, is_signed), {9, 9}, 8, "000000 000000"},
      {"half precision", page_tags(3, 1, 16, 1, is_float), {0, 0x3C, 0, 0x38, 0, 0x7E}, 8, "FFFFFF 808080 000000"},
      {"single precision", page_tags(2, 1, 32, 0, is_float), {0, 0, 0x80, 0x3E, 0, 0, 0, 0}, 8, "BFBFBF FFFFFF"},
      {"beyond 0 and 1", page_tags(2, 1, 32, 1, is_float), {0, 0, 0x80, 0xBF, 0, 0, 0x80, 0x40}, 8, "000000 FFFFFF"},
      {"double precision", page_tags(1, 1, 64, 1, is_float), {0, 0, 0, 0, 0, 0, 0xE0, 0x3F}, 8, "808080"},
      {"float alpha", page_tags(1, 1, 16, 1, float_alpha), {0, 0, 0, 0x38}, 8, "7F7F7F"},
      {"2 bits from white", page_tags(4, 1, 2, 0), {0x1B}, 4, "FFFFFF AAAAAA 555555 000000"},
      {"4 bits from white", page_tags(2, 1, 4, 0), {0x0E}, 4, "FFFFFF 111111"},
      {"3 bits", page_tags(2, 1, 3, 1), {0x1C}, 8, "000000 FFFFFF"},
      {"12 bits", page_tags(2, 1, 12, 1), {0xAB, 0xCD, 0xEF}, 8, "ABABAB DEDEDE"},
      {"16 bits", page_tags(2, 1, 16, 0), {0xFF, 0x12, 0x00, 0xFE}, 8, "EDEDED 010101"},
      {"32 bits", page_tags(1, 1, 32, 1), {1, 2, 3, 4}, 8, "040404"},
      {"grey with alpha", page_tags(3, 1, 8, 1, alpha), {100, 255, 100, 0, 0, 128}, 8, "646464 FFFFFF 7F7F7F"},
      {"1 bit with alpha", page_tags(4, 1, 1, 1, alpha), {0b00011011}, 8, "FFFFFF 000000 FFFFFF FFFFFF"},
      {"white and black palette",
       page_tags(8, 1, 1, 3, {{kColorMap, {0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0}}}),
       {0x0F},
       1,
       "FFFFFF FFFFFF FFFFFF FFFFFF 000000 000000 000000 000000"},
      {"palette of bytes", page_tags(2, 1, 1, 3, {{kColorMap, {1, 4, 2, 5, 3, 6}}}), {0x40}, 1, "010203 040506"},
      {"4-bit colours", page_tags(1, 1, 4, 2, {{kSamples, {3}}}), {0x0F, 0x80}, 24, "00FF88"},
      {"premultiplied", page_tags(1, 1, 8, 2, {{kSamples, {4}}, {kExtraSamples, {1}}}), {10, 100, 0, 100}, 24, "A5FF9B"},
      {"unspecified extra", page_tags(1, 1, 8, 2, {{kSamples, {4}}, {kExtraSamples, {0}}}), {1, 2, 3, 0}, 24, "010203"},
      {"luminance",
       page_tags(2, 1, 8, 6, {{kSamples, {3}}, {kSubsampling, {1, 1}}}),
       {128, 128, 128, 76, 85, 255},
       24,
       "808080 FE0000"},
      {"lightness", page_tags(3, 1, 8, 8, {{kSamples, {3}}}), {255, 0, 0, 0, 0, 0, 136, 80, 67}, 24, "FFFFFF 000000 FF0201"},
      {"lightness of profiles", page_tags(1, 1, 8, 9, {{kSamples, {3}}}), {136, 208, 195}, 24, "FF0201"},
      {"inks", page_tags(2, 1, 8, 5, {{kSamples, {4}}}), {0, 255, 128, 0, 0, 0, 0, 200}, 24, "FF007F 373737"},
  };
  for (const Variant& variant : variants) {
    SCOPED_TRACE(variant.name);
    const Bytes loaded = load_file(tiff_file(variant.tags, variant.pixels));
    ASSERT_EQ(status, IMG_OK);
    EXPECT_EQ(header_of(loaded).biBitCount, variant.depth);
    EXPECT_EQ(picture_of(loaded), variant.picture);
  }
}

TEST_F(TiffTest, WithoutAPhotometricTagOnlyBitsOfFaxesAreInk) {
  const struct {
    uint32_t compression;
    uint8_t data;  // eight white pixels of a fax, or eight zeros
    bool is_fax;
  } cases[] = {{1, 0, false}, {2, 0x98, true}, {4, 0x80, true}};
  for (const auto& c : cases) {
    Tags tags = page_tags(8, 1, 1, 0, {{kCompression, {c.compression}}, {kByteCount, {1}}});
    tags.erase(kPhotometric);
    const std::string picture = picture_of(load_file(tiff_file(tags, {c.data})));
    EXPECT_EQ(picture.substr(0, 6), c.is_fax ? "FFFFFF" : "000000") << c.compression;
  }
}

std::string letters_of(const Bytes& dib) {
  std::string rows;
  for (int y = header_of(dib).biHeight - 1; y >= 0; --y) {
    for (int x = 0; x < header_of(dib).biWidth; ++x) rows += static_cast<char>(pixel(dib, x, y));
    rows += y > 0 ? "/" : "";
  }
  return rows;
}

TEST_F(TiffTest, PagesAreTurnedUpright) {
  const std::vector<std::string> upright = {"ABC/DEF",  "CBA/FED",  "FED/CBA",  "DEF/ABC",
                                            "AD/BE/CF", "DA/EB/FC", "FC/EB/DA", "CF/BE/AD"};
  for (uint32_t i = 0; i < upright.size(); ++i) {
    const Tags tags = page_tags(3, 2, 8, 1, {{kOrientation, {i + 1}}, {kUnit, {2}}});
    EXPECT_EQ(letters_of(load_file(tiff_file(tags, {'A', 'B', 'C', 'D', 'E', 'F'}))), upright[i]) << i + 1;
  }
  // At 1 and 24 bits a half turn is seen where rows are part-filled.
  for (const uint32_t bits : {1u, 8u}) {
    const Tags tags =
        page_tags(bits == 1 ? 5 : 2, 1, bits, bits == 1 ? 1 : 2, {{kOrientation, {3}}, {kSamples, {bits == 1 ? 1u : 3u}}});
    const Bytes loaded = load_file(tiff_file(tags, bits == 1 ? Bytes{0b10110000} : Bytes{1, 2, 3, 4, 5, 6}));
    const Bytes row(loaded.end() - (bits == 1 ? 4 : 8), loaded.end());
    EXPECT_EQ(row, bits == 1 ? Bytes({0b01101000, 0, 0, 0}) : Bytes({6, 5, 4, 3, 2, 1, 0, 0}));
  }
}

TEST_F(TiffTest, HeadersThatLieAreRefused) {
  const uint32_t most = 0xFFFFFFFF;
  const Tags tile = {{kTileOffset, {8}}, {kTileByteCount, {8}}};
  const auto with_tile = [&](uint32_t width, uint32_t height) {
    Tags tags = tile;
    tags.merge(Tags{{kTileWidth, {width}}, {kTileLength, {height}}});
    return tags;
  };
  const std::vector<std::pair<Tags, int>> lies = {
      {page_tags(0, 1, 8, 1), IMG_E_FORMAT},
      {page_tags(1, 0, 8, 1), IMG_E_FORMAT},
      {page_tags(1, 1, 0, 1), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 77), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 2), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 5, {{kSamples, {3}}}), IMG_E_FORMAT},
      {page_tags(1, 1, 24, 1, {{kSampleFormat, {3}}}), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 8, {{kSamples, {3}}, {kSampleFormat, {2, 2, 2}}}), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 1, {{kSampleFormat, {5}}}), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 1, {{kCompression, {4711}}}), IMG_E_FORMAT},
      {page_tags(1, 1, 8, 1, {{kOffset, {most}}}), IMG_E_FORMAT},
      {page_tags(100, 100, 8, 1), IMG_E_FORMAT},
      {page_tags(most, 1, 1, 1), IMG_E_MEMORY},
      {page_tags(100'000, 100'000, 1, 0, {{kCompression, {4}}}), IMG_E_MEMORY},
      {page_tags(1, 1, 8, 1, with_tile(30'000, 30'000)), IMG_E_MEMORY},
      {page_tags(1, 1 << 9, 8, 1, with_tile(1 << 22, 1)), IMG_E_MEMORY},
      {page_tags(20, 20, 1, 1, with_tile(5, 5)), IMG_E_FORMAT},
  };
  for (size_t i = 0; i < lies.size(); ++i)
    expect_refused(tiff_file(lies[i].first, Bytes(8)), lies[i].second, std::to_string(i));
  expect_refused({}, IMG_E_FORMAT, "empty");
  EXPECT_EQ(modules().count_tiff(path.c_str(), &status), 0);
  EXPECT_EQ(status, IMG_E_FORMAT);
}

TEST_F(TiffTest, StripsThatShareBytesAreFineUpToALimit) {
  for (const uint32_t strips : {300u, 400u}) {
    const Tags shared = {{kRowsPerStrip, {1}},
                         {kOffset, std::vector<uint32_t>(strips, 8)},
                         {kByteCount, std::vector<uint32_t>(strips, 65'000)}};
    EXPECT_EQ(load_file(tiff_file(page_tags(1, strips, 8, 1, shared), Bytes(65'000))).empty(), strips == 400);
  }
}

TEST_F(TiffTest, FilesThatAreCutOffAreRefused) {
  for (const auto& [compression, depth] :
       {std::pair(1, 24), {1, 8}, {2, 1}, {3, 1}, {4, 1}, {5, 8}, {7, 24}, {8, 24}, {32773, 4}}) {
    ASSERT_TRUE(save(noise(50, 40, depth), compression));
    const Bytes file = read_file(path);
    uint32_t directory = 0;
    std::memcpy(&directory, &file[4], 4);
    const size_t entries = file[directory], end = directory + 2 + entries * 12 + 4;
    for (size_t length = 0; length < file.size();) {
      expect_refused(first_bytes(file, length), IMG_E_FORMAT, std::to_string(compression) + ", " + std::to_string(length));
      const size_t next = length + file.size() / 64;
      length = length < directory ? std::min<size_t>(directory, next) : length < end ? length + 1 : next;
    }
  }
}

// A white row is a bit of 1; data says with twice 000000000001 that it ends.
TEST_F(TiffTest, Group4DataEndsWhenItSaysSo) {
  const auto page = [](uint32_t height, const Tags& more) {
    Tags tags = more;
    tags.merge(Tags{{kCompression, {4}}});
    return page_tags(16, height, 1, 0, tags);
  };
  const auto tile = [](uint32_t bytes) {
    return Tags{{kTileWidth, {16}}, {kTileLength, {16}}, {kTileOffset, {8}}, {kTileByteCount, {bytes}}};
  };
  const auto strips = [](uint32_t bytes) { return Tags{{kRowsPerStrip, {2}}, {kOffset, {8, 9}}, {kByteCount, {1, bytes}}}; };
  const struct {
    const char* name;
    Tags tags;
    Bytes data;
    bool loads;
  } cases[] = {
      {"all rows", page(2, {{kByteCount, {1}}}), {0xC0}, true},
      {"a row missing", page(3, {{kByteCount, {1}}}), {0xC0}, false},
      {"a row missing after the end", page(3, {{kByteCount, {4}}}), {0xC0, 0x04, 0x00, 0x40}, true},
      {"many rows missing after the end", page(9, {{kByteCount, {6}}}), {0xC0, 0x04, 0x00, 0x40, 0, 0}, true},
      {"a row broken off", page(2, {{kByteCount, {1}}}), {0x98}, false},  // the second: 3 white pixels and how many black?
      {"a code that is none", page(2, {{kByteCount, {4}}}), {0x90, 0, 0, 0}, false},
      {"a row that is not coded", page(2, {{kByteCount, {3}}}), {0x81, 0xE0, 0}, false},
      {"two strips", page(4, strips(1)), {0xC0, 0xC0}, true},
      {"a row of the second missing", page(4, strips(1)), {0xC0, 0x80}, false},
      {"a tile", page(16, tile(2)), {0xFF, 0xFF}, true},
      {"rows of the tile missing", page(16, tile(1)), {0xFF}, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(load_file(tiff_file(c.tags, c.data)).empty(), !c.loads) << c.name;
    EXPECT_EQ(status, c.loads ? IMG_OK : IMG_E_FORMAT) << c.name;
  }
}

// A row that begins black and changes at every pixel has one run more than libtiff's decoder of one-dimensional codes has room for
// where the width is a multiple of 32. The other rows begin white.
TEST_F(TiffTest, RowsThatChangeAtEveryPixelAreReadAndWritten) {
  constexpr uint32_t kFaxOptions = 292;
  for (const int width : {32, 40, 1728}) {
    Bytes dib = with_table(noise(width, 6, 1), kWhiteBlack);
    const size_t stride = stride_of(width, 1);
    for (size_t i = 48; i < dib.size(); ++i) dib[i] = (i - 48) / stride % 2 == 0 ? 0xAA : 0x55;
    for (const int compression : {2, 3}) {
      ASSERT_TRUE(save(dib, compression));
      EXPECT_EQ(largest_difference(load(), dib), 0) << compression << ", width " << width;
      EXPECT_EQ(modules().tiff_compression(path.c_str(), 1, nullptr), compression);
    }
  }
  // Each row: the end-of-line code, no white, then 16 times a black and a white pixel.
  std::string bits;
  for (int row = 0; row < 16; ++row) {
    bits += "00000000000100110101";
    for (int i = 0; i < 16; ++i) bits += "010000111";
  }
  for (const uint32_t fill_order : {1u, 2u}) {
    Bytes data(bits.size() / 8 + 1);
    for (size_t i = 0; i < bits.size(); ++i)
      data[i / 8] = static_cast<uint8_t>(data[i / 8] | (bits[i] - '0') << (fill_order == 1 ? 7 - i % 8 : i % 8));
    const auto bytes = static_cast<uint32_t>(data.size());
    for (const Tags& form : {Tags{{kRowsPerStrip, {16}}, {kOffset, {8}}, {kByteCount, {bytes}}},
                             Tags{{kTileWidth, {32}}, {kTileLength, {16}}, {kTileOffset, {8}}, {kTileByteCount, {bytes}}}}) {
      Tags tags = form;
      tags.merge(Tags{{kCompression, {3}}, {kFaxOptions, {0}}, {kFillOrder, {fill_order}}});
      const Bytes loaded = load_file(tiff_file(page_tags(32, 16, 1, 0, tags), data));
      ASSERT_EQ(loaded.size(), 48u + 64) << fill_order << ", status " << status;
      EXPECT_EQ(Bytes(loaded.begin() + 48, loaded.end()), Bytes(64, 0x55)) << fill_order;
    }
  }
}

// ---- CALS ----

Bytes with_record(Bytes file, const std::string& record, size_t at) {
  std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(at * 128), 128, ' ');
  std::ranges::copy(record, file.begin() + static_cast<std::ptrdiff_t>(at * 128));
  return file;
}

class CalsTest : public CodecTest {
 protected:
  CalsTest() : CodecTest(kCals) {}
};

TEST_F(CalsTest, PicturesComeBackBlackOnWhite) {
  for (const int width : {1, 31, 64, 2481}) {
    const Bytes dib = with_table(noise(width, 7, 1), kWhiteBlack);
    const Bytes file = saved(dib);
    const Bytes loaded = load();
    EXPECT_EQ(status, IMG_OK);
    EXPECT_EQ(largest_difference(loaded, dib), 0) << width;
    EXPECT_EQ(header_of(loaded).biXPelsPerMeter, 11811);
    EXPECT_EQ(header_of(loaded).biYPelsPerMeter, 11811);  // the format has one density
  }
  const std::string header(128, ' ');
  const Bytes file = saved(noise(12, 34, 1));
  EXPECT_EQ(std::string(file.begin(), file.begin() + 9), "srcdocid:");
  EXPECT_EQ(std::string(file.begin() + 1024, file.begin() + 1046), "rpelcnt: 000012,000034");
  EXPECT_EQ(std::string(file.begin() + 1152, file.begin() + 1166), "rdensty: 0300 ");
}

TEST_F(CalsTest, RecordsAreFoundWhereverTheyAre) {
  const Bytes dib = with_table(noise(40, 20, 1), kBlackWhite);
  Bytes file = saved(dib);
  file = with_record(file, "notes: moved", 8);
  file = with_record(file, "RPELCNT:40, 20", 15);
  EXPECT_EQ(largest_difference(load_file(file), dib), 0);
}

TEST_F(CalsTest, DrawingsAreTurnedUpright) {
  // An L: its corner and its long side tell each turn and mirror apart.
  Bytes dib = with_table(noise(2, 3, 1), kWhiteBlack);
  for (size_t row = 0; row < 3; ++row) dib[48 + row * 4] = row == 0 ? 0b11000000 : 0b10000000;
  const Bytes file = saved(dib);
  const std::map<std::string, std::string> seen = {{"000,270", "01/01/00"}, {"000,090", "00/01/01"}, {"180,090", "10/10/00"},
                                                   {"180,270", "00/10/10"}, {"270,270", "000/011"},  {"270,090", "000/110"},
                                                   {"090,270", "110/000"},  {"090,090", "011/000"},  {"270,180", "000/011"},
                                                   {"090,000", "110/000"}};
  for (const auto& [orientation, rows] : seen) {
    std::string found = letters_of(load_file(with_record(file, "rorient: " + orientation, 7)));
    for (char& bit : found) bit = bit == '/' ? bit : static_cast<char>(bit + '0');
    EXPECT_EQ(found, rows) << orientation;
  }
}

TEST_F(CalsTest, DamagedFilesAreRefused) {
  const Bytes file = saved(noise(40, 20, 1));
  const std::vector<std::pair<std::string, size_t>> damages = {
      {"", 8},         {"rpelcnt: 000040", 8},  {"rpelcnt: 000000,000020", 8}, {"rpelcnt: -00040,000020", 8},
      {"rtype: 2", 6}, {"rorient: 045,270", 7}, {"rorient: 000,180", 7}};
  for (const auto& [record, at] : damages) {
    expect_refused(with_record(file, record, at), IMG_E_FORMAT, record);
  }
  expect_refused(with_record(file, "rpelcnt: 999999,999999", 8), IMG_E_MEMORY, "more than memory holds");
}

TEST_F(CalsTest, DrawingsThatAreCutOffAreRefused) {
  constexpr size_t kEndOfData = 3;  // twice 000000000001, which may be missing
  const Bytes dib = with_table(noise(40, 20, 1), kWhiteBlack), file = saved(dib);
  for (size_t length = 0; length < file.size(); length += length < 2048 ? 64 : 1) {
    if (length + kEndOfData < file.size())
      expect_refused(first_bytes(file, length), IMG_E_FORMAT, std::to_string(length));
    else
      EXPECT_EQ(largest_difference(load_file(first_bytes(file, length)), dib), 0) << length;
  }
  // Data that says it ends before the last row leaves the rest white.
  const Bytes taller = load_file(with_record(file, "rpelcnt: 000040,000023", 8));
  EXPECT_EQ(header_of(taller).biHeight, 23);
  EXPECT_EQ(picture_of(taller).substr(0, picture_of(dib).size()), picture_of(dib));
  EXPECT_EQ(color_at(taller, 39, 0).rgbRed, 255);
}

}  // namespace
