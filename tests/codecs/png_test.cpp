// PNG files through the entry points of their modules.
#include <gtest/gtest.h>
#include <string>
#include <zlib.h>

#include <vorel32.h>

#include "support/dib.h"
#include "support/module.h"

using namespace test;

namespace {

class PngTest : public testing::Test {
 protected:
  Bytes load() { return bytes_of(Block(load_png(path.c_str(), &status)).get()); }
  Bytes load_file(const Bytes& file) {
    write_file(path, file);
    return load();
  }
  bool save(const Bytes& dib) { return save_png(path.c_str(), block_of(dib).get(), &status) != FALSE; }

  Module loader{"WERT32"}, saver{"WERT"};
  ImgLoadPicture load_png = loader.entry<ImgLoadPicture>("LoadPNGIntoDIB");
  ImgSavePicture save_png = saver.entry<ImgSavePicture>("SaveDIBInPNGFormat");
  TempFolder folder;
  std::string path = folder.path("picture.png");
  int status = -1;
};

Bytes with_gray_ramp(Bytes dib) {
  const int depth = header_of(dib).biBitCount, last = (1 << depth) - 1;
  for (int i = 0; i <= last; ++i)
    for (int component = 0; component < 3; ++component)
      dib[sizeof(BITMAPINFOHEADER) + static_cast<size_t>(i * 4 + component)] = uint8_t(i * 255 / last);
  return dib;
}

TEST_F(PngTest, PicturesComeBackAsTheyWereSaved) {
  constexpr size_t kColorType = 25;
  for (const int depth : {1, 4, 8, 24})
    for (const int width : {1, 9, 301})
      for (const bool is_gray : {false, true}) {
        if (is_gray && depth == 24) continue;
        const Bytes plain = noise(width, 5, depth), dib = is_gray ? with_gray_ramp(plain) : plain;
        ASSERT_TRUE(save(dib));
        EXPECT_EQ(read_file(path)[kColorType], is_gray ? 0 : depth == 24 ? 2 : 3);
        const Bytes loaded = load();
        const BITMAPINFOHEADER header = header_of(loaded), saved = header_of(dib);
        EXPECT_EQ(largest_difference(loaded, dib), 0) << depth << ' ' << width << ' ' << is_gray;
        EXPECT_EQ(header.biBitCount, depth);
        EXPECT_EQ(header.biXPelsPerMeter, saved.biXPelsPerMeter);
        EXPECT_EQ(header.biYPelsPerMeter, saved.biYPelsPerMeter);
      }
}

void append_number(Bytes& bytes, uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(uint8_t(value >> shift));
}

Bytes chunk(const std::string& type, const Bytes& content) {
  Bytes body(type.begin(), type.end());
  body.insert(body.end(), content.begin(), content.end());
  Bytes bytes;
  append_number(bytes, static_cast<uint32_t>(content.size()));
  bytes.insert(bytes.end(), body.begin(), body.end());
  append_number(bytes, static_cast<uint32_t>(crc32(0, body.data(), static_cast<uInt>(body.size()))));
  return bytes;
}

// A picture of one row, and chunks between its header and its pixels.
Bytes file_of_row(uint32_t width, uint8_t bits, uint8_t color_type, const Bytes& row, const Bytes& chunks = {},
                  uint32_t height = 1) {
  Bytes header;
  append_number(header, width);
  append_number(header, height);
  header.insert(header.end(), {bits, color_type, 0, 0, 0});
  Bytes filtered{0};
  filtered.insert(filtered.end(), row.begin(), row.end());
  uLongf size = compressBound(static_cast<uLong>(filtered.size()));
  Bytes packed(size);
  compress(packed.data(), &size, filtered.data(), static_cast<uLong>(filtered.size()));
  packed.resize(size);
  Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  for (const Bytes& part : {chunk("IHDR", header), chunks, chunk("IDAT", packed), chunk("IEND", {})})
    file.insert(file.end(), part.begin(), part.end());
  return file;
}

const Bytes kGamma = chunk("gAMA", {0, 0, 0xFF, 0xFF});

TEST_F(PngTest, SamplesBecomeColors) {
  const struct {
    const char* what;
    Bytes file;
    int depth;
    std::vector<uint32_t> colors;
  } cases[] = {
      {"1-bit grey", file_of_row(3, 1, 0, {0x40}), 1, {0, 0xFFFFFF, 0}},
      {"2-bit grey", file_of_row(5, 2, 0, {0x1B, 0x40}), 4, {0, 0x555555, 0xAAAAAA, 0xFFFFFF, 0x555555}},
      {"high bytes", file_of_row(2, 16, 0, {0x12, 0xFF, 0x80, 0x00}), 8, {0x121212, 0x808080}},
      {"high bytes of colours", file_of_row(1, 16, 2, {1, 0xFF, 2, 0xFF, 3, 0xFF}), 24, {0x010203}},
      {"grey key", file_of_row(3, 2, 0, {0x1B}, chunk("tRNS", {0, 1})), 4, {0, 0xFFFFFF, 0xAAAAAA}},
      {"grey key with surplus bits", file_of_row(3, 2, 0, {0x1B}, chunk("tRNS", {1, 5})), 4, {0, 0xFFFFFF, 0xAAAAAA}},
      {"16-bit grey key", file_of_row(2, 16, 0, {1, 2, 1, 3}, chunk("tRNS", {1, 2})), 8, {0xFFFFFF, 0x010101}},
      {"colour key", file_of_row(2, 8, 2, {1, 2, 3, 1, 2, 4}, chunk("tRNS", {0, 1, 0, 2, 0, 3})), 24, {0xFFFFFF, 0x010204}},
      {"alpha, whatever the gamma", file_of_row(2, 8, 4, {100, 128, 0, 0}, kGamma), 8, {0xB1B1B1, 0xFFFFFF}},
      {"an index without a colour", file_of_row(2, 8, 3, {0, 9}, chunk("PLTE", {1, 2, 3})), 8, {0x010203, 0}},
  };
  for (const auto& c : cases) {
    const Bytes dib = load_file(c.file);
    ASSERT_EQ(header_of(dib).biBitCount, c.depth) << c.what << ' ' << status;
    for (size_t x = 0; x < c.colors.size(); ++x) {
      const RGBQUAD seen = color_at(dib, static_cast<int>(x), 0);
      EXPECT_EQ(seen.rgbRed << 16 | seen.rgbGreen << 8 | seen.rgbBlue, c.colors[x]) << c.what << ' ' << x;
    }
  }
}

TEST_F(PngTest, WhatCannotBeReadHasAStatus) {
  Bytes damaged = file_of_row(1, 8, 0, {7}, kGamma);
  damaged[45] ^= 1;  // in the gamma, whose checksum tells
  const struct {
    const char* what;
    Bytes file;
    int status;
  } cases[] = {
      {"a checksum", damaged, 9},
      {"no pixels", file_of_row(0, 8, 0, {}), 9},
      {"no such depth", file_of_row(1, 3, 0, {0}), 9},
      {"no colours", file_of_row(1, 8, 3, {0}), 9},
      {"a lie", file_of_row(500000000, 8, 0, {0}, {}, 500000000), 1},
      {"a lie about 2 bits, of which 4 are made", file_of_row(40'000, 2, 0, {0}, {}, 20'000), 1},
      {"too few rows", file_of_row(1, 8, 0, {0}, {}, 2), 9},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(load_file(c.file), Bytes()) << c.what;
    EXPECT_EQ(status, c.status) << c.what;
  }
  EXPECT_EQ(load_png(folder.path("missing").c_str(), &status), nullptr);
  EXPECT_EQ(status, 3);
}

TEST_F(PngTest, FilesThatAreCutOffDoNotLoad) {
  ASSERT_TRUE(save(noise(33, 20, 8)));
  const Bytes file = read_file(path);
  for (size_t size = 0; size < file.size(); size += size < 100 ? 1 : 1 + file.size() / 64) {
    EXPECT_EQ(load_file({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)}), Bytes()) << size;
    EXPECT_EQ(status, 9);
  }
}

TEST_F(PngTest, AWideRowIsSavedAndWhatIsNoPictureIsNot) {
  const Bytes wide = noise(1'500'000, 1, 1);
  ASSERT_TRUE(save(wide));
  EXPECT_EQ(largest_difference(load(), wide), 0);
  const Bytes file = read_file(path);
  EXPECT_FALSE(save(noise(4, 4, 16)));
  EXPECT_EQ(status, 21);
  EXPECT_EQ(read_file(path), file);
}

}  // namespace
