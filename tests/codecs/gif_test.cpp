// GIF files through the entry points of their modules.
#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

#include "support/dib.h"
#include "support/module.h"

using namespace test;

namespace {

class GifTest : public testing::Test {
 protected:
  Bytes load(int page = 1) { return bytes_of(Block(load_page(path.c_str(), page, &status)).get()); }
  Bytes load_file(const Bytes& file, int page = 1) {
    write_file(path, file);
    return load(page);
  }
  bool save(const Bytes& dib, int interlaced = 0) {
    return save_gif(path.c_str(), block_of(dib).get(), interlaced, &status) != FALSE;
  }

  Module loader{"SUNE32"}, saver{"SUNE"};
  ImgLoadPage load_page = loader.entry<ImgLoadPage>("LoadGIFIntoDIB");
  ImgCountPages count_pages = loader.entry<ImgCountPages>("GetNumberOfImagesInGIFFile");
  ImgSaveGif save_gif = saver.entry<ImgSaveGif>("SaveDIBInGIFFormat");
  TempFolder folder;
  std::string path = folder.path("picture.gif");
  int status = -1;
};

TEST_F(GifTest, PicturesComeBackAsTheyWereSaved) {
  for (const int depth : {1, 4, 8})
    for (const int width : {1, 9, 301})
      for (const int height : {1, 3, 21})
        for (const int interlaced : {0, 1}) {
          const Bytes dib = noise(width, height, depth);
          ASSERT_TRUE(save(dib, interlaced));
          EXPECT_EQ((read_file(path)[13 + (3u << depth) + 9] & 0x40) != 0, interlaced != 0);
          const Bytes loaded = load();
          EXPECT_EQ(largest_difference(loaded, dib), 0) << depth << ' ' << width << ' ' << height << ' ' << interlaced;
          EXPECT_EQ(header_of(loaded).biBitCount, depth);
          EXPECT_EQ(header_of(loaded).biXPelsPerMeter, 0);
        }
}

TEST_F(GifTest, TrueColorsStayUnlessTheyAreTooMany) {
  const Bytes few = noise(15, 17, 24);  // 255 colours at most
  ASSERT_TRUE(save(few, 1));
  EXPECT_EQ(largest_difference(load(), few), 0);

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
  const uint32_t red = 0xFF0000, blue = 0xFF, green = 0xFF00, white = 0xFFFFFF, black = 0;
  const struct {
    int depth;
    std::vector<uint32_t> colors;  // from the top left
  } pages[] = {{1, {blue, red}}, {1, {white, green}}, {1, {blue, red}}, {1, {blue, white}}, {8, {black}}, {8, {white}}};
  for (int page = 1; page <= 6; ++page) {
    const auto& [depth, colors] = pages[page - 1];
    const Bytes dib = load_file(file, page);
    const BITMAPINFOHEADER header = header_of(dib);
    EXPECT_EQ(header.biBitCount, depth) << page;
    std::vector<uint32_t> seen;
    for (int y = header.biHeight - 1; y >= 0; --y)
      for (int x = 0; x < header.biWidth; ++x) {
        const RGBQUAD c = color_at(dib, x, y);
        seen.push_back(static_cast<uint32_t>(c.rgbRed << 16 | c.rgbGreen << 8 | c.rgbBlue));
      }
    EXPECT_EQ(seen, colors) << page;
  }
  EXPECT_EQ(count_pages(path.c_str(), &status), 6);
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
  for (const auto& c : cases) {
    EXPECT_EQ(load_file(c.file, c.page), Bytes()) << c.what;
    EXPECT_EQ(status, c.status) << c.what;
  }
  EXPECT_EQ(load_page(folder.path("missing").c_str(), 1, &status), nullptr);
  EXPECT_EQ(status, 3);
  write_file(path, head(kRedBlue));
  EXPECT_EQ(count_pages(path.c_str(), &status), 0);
  EXPECT_EQ(status, 9);
}

TEST_F(GifTest, FilesThatAreCutOffDoNotLoad) {
  ASSERT_TRUE(save(noise(33, 20, 8), 1));
  const Bytes file = read_file(path);
  const size_t last = file.size() - 1;  // without its trailer a file is good
  for (size_t size = 0; size < last; size += size < 820 ? 1 : 1 + file.size() / 64) {
    EXPECT_EQ(load_file({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)}), Bytes()) << size;
    EXPECT_EQ(status, 9);
  }
}

TEST_F(GifTest, WhatCannotBeSavedLeavesTheFileAlone) {
  write_file(path, kTrailer);
  EXPECT_FALSE(save(noise(65536, 1, 1)));
  EXPECT_EQ(status, 19);
  EXPECT_FALSE(save(noise(4, 4, 16)));
  EXPECT_EQ(status, 21);
  EXPECT_FALSE(save_gif(path.c_str(), nullptr, 0, nullptr));
  EXPECT_EQ(read_file(path), kTrailer);
  EXPECT_TRUE(save(noise(65535, 1, 1)));
}

}  // namespace
