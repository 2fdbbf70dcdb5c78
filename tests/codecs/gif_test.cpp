// GIF files through the entry points of their modules.
#include "codecs/codec.h"

using namespace test;

namespace {

class GifTest : public CodecTest {
 protected:
  GifTest() : CodecTest(kGif) {}
};

TEST_F(GifTest, TrueColorsStayUnlessTheyAreTooMany) {
  const Bytes few = noise(15, 17, 24);  // 255 colours at most
  EXPECT_EQ(largest_difference(load_file(saved(few)), few), 0);
  EXPECT_EQ(saved(few)[13 + 3 * 256 + 9] & 0x40, 0) << "not interlaced";
  ASSERT_TRUE(modules().save_gif(path.c_str(), block_of(few).get(), 1, nullptr));
  EXPECT_NE(read_file(path)[13 + 3 * 256 + 9] & 0x40, 0);

  Bytes alike;  // colours that differ in one sample
  for (size_t sample = 0; sample < 3; ++sample)
    for (int level = 1; level <= 80; ++level) {
      alike.resize(alike.size() + 3);
      alike[alike.size() - 3 + sample] = static_cast<uint8_t>(3 * level);
    }
  const Bytes close = with_header(header_for(80, 3, 24), alike);
  EXPECT_EQ(largest_difference(load_file(saved(close)), close), 0);

  BITMAPINFOHEADER header = header_for(64, 64, 24);
  Bytes rows;
  for (int i = 0; i < 64 * 64; ++i) rows.insert(rows.end(), {uint8_t(i % 64 * 4), uint8_t(i / 64 * 4), uint8_t(i / 16)});
  const Bytes many = with_header(header, rows);
  ASSERT_TRUE(save(many));
  const Bytes loaded = load();
  EXPECT_EQ(header_of(loaded).biBitCount, 8);
  EXPECT_LE(largest_difference(loaded, many), 48);
}

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// A file's parts, by hand. Colours are pairs: red and blue, green and white.
const Bytes kRedBlue{255, 0, 0, 0, 0, 255}, kGreenWhite{0, 255, 0, 255, 255, 255}, kNoColors, kTrailer{';'};
Bytes head(const Bytes& colors) {
  return joined({{'G', 'I', 'F', '8', '9', 'a', 9, 0, 9, 0, uint8_t(colors.empty() ? 0 : 0x80), 0, 0}, colors});
}
Bytes transparent(uint8_t index) { return {'!', 0xF9, 4, 1, 0, 0, index, 0}; }
Bytes image(uint16_t width, uint16_t height, const Bytes& colors, const Bytes& codes) {
  return joined({{',', 3, 0, 2, 0, uint8_t(width), uint8_t(width >> 8), uint8_t(height), uint8_t(height >> 8)},
                 {uint8_t(colors.empty() ? 0 : 0x80)},
                 colors,
                 {2, uint8_t(codes.size())},
                 codes,
                 {0}});
}
const Bytes kCodesOfOneZero{0x0C, 0x0A};  // clear, 1, 0, end: three bits each, from the lowest on
const Bytes kCodesOfThree{0x5C, 0x01};
const Bytes kComment{'!', 0xFE, 2, 'h', 'i', 0}, kPlainText{'!', 0x01, 1, 0, 0};

TEST_F(GifTest, EachImageHasItsOwnSizeColorsAndTransparency) {
  const Bytes file =
      joined({head(kRedBlue), image(2, 1, kNoColors, kCodesOfOneZero), kComment, transparent(1),
              image(1, 2, kGreenWhite, kCodesOfOneZero), transparent(0), kPlainText, image(2, 1, kNoColors, kCodesOfOneZero),
              transparent(0), image(2, 1, kNoColors, kCodesOfOneZero), image(1, 1, kNoColors, kCodesOfThree), transparent(3),
              image(1, 1, kNoColors, kCodesOfThree), kTrailer});
  const std::pair<int, std::string> pages[] = {{1, "0000FF FF0000"}, {1, "FFFFFF/00FF00"}, {1, "0000FF FF0000"},
                                               {1, "0000FF FFFFFF"}, {8, "000000"},        {8, "FFFFFF"}};
  for (int page = 1; page <= 6; ++page) {
    const Bytes dib = load_file(file, page);
    EXPECT_EQ(header_of(dib).biBitCount, pages[page - 1].first) << page;
    EXPECT_EQ(picture_of(dib), pages[page - 1].second) << page;
  }
  EXPECT_EQ(modules().count_gif(path.c_str(), &status), 6);
  EXPECT_EQ(status, 0);
}

TEST_F(GifTest, WhatCannotBeReadHasAStatus) {
  const Bytes good = image(2, 1, kNoColors, kCodesOfOneZero);
  const struct {
    const char* what;
    Bytes file;
    int page, status;
  } cases[] = {
      {"page 0", joined({head(kRedBlue), good, kTrailer}), 0, 8},
      {"page 2 of 1", joined({head(kRedBlue), good, kTrailer}), 2, 8},
      {"page 2 after a fault", joined({head(kRedBlue), good, {'?'}}), 2, 9},
      {"another signature", joined({{'g', 'i', 'f'}, good, good}), 1, 9},
      {"no colours", joined({head(kNoColors), good, kTrailer}), 1, 9},
      {"no pixels", joined({head(kRedBlue), image(0, 1, kNoColors, kCodesOfOneZero), kTrailer}), 1, 9},
      {"too few pixels", joined({head(kRedBlue), image(3, 1, kNoColors, kCodesOfOneZero), kTrailer}), 1, 9},
      {"a lie", joined({head(kRedBlue), image(65535, 65535, kNoColors, kCodesOfOneZero), kTrailer}), 1, 1},
  };
  for (const auto& c : cases) expect_refused(c.file, c.status, c.what, c.page);
  write_file(path, head(kRedBlue));
  EXPECT_EQ(modules().count_gif(path.c_str(), &status), 0);
  EXPECT_EQ(status, 9);
}

TEST_F(GifTest, TheWidestRowIsSaved) { EXPECT_TRUE(save(noise(65535, 1, 1))); }

}  // namespace
