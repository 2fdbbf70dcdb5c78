// PNG files through the entry points of their modules.
#include <zlib.h>

#include "codecs/codec.h"

using namespace test;

namespace {

class PngTest : public CodecTest {
 protected:
  PngTest() : CodecTest(kPng) {}
};

TEST_F(PngTest, TheColorTypeIsTheSmallestThatWillDo) {
  constexpr size_t kColorType = 25;
  for (const int depth : {1, 4, 8, 24}) {
    const Bytes dib = noise(9, 5, depth);
    EXPECT_EQ(saved(dib)[kColorType], depth == 24 ? 2 : 3);
    EXPECT_EQ(saved(depth == 24 ? dib : with_gray_ramp(dib))[kColorType], depth == 24 ? 2 : 0);
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
    std::string picture;
  } cases[] = {
      {"1-bit grey", file_of_row(3, 1, 0, {0x40}), 1, "000000 FFFFFF 000000"},
      {"2-bit grey", file_of_row(5, 2, 0, {0x1B, 0x40}), 4, "000000 555555 AAAAAA FFFFFF 555555"},
      {"high bytes", file_of_row(2, 16, 0, {0x12, 0xFF, 0x80, 0x00}), 8, "121212 808080"},
      {"high bytes of colours", file_of_row(1, 16, 2, {1, 0xFF, 2, 0xFF, 3, 0xFF}), 24, "010203"},
      {"grey key", file_of_row(3, 2, 0, {0x1B}, chunk("tRNS", {0, 1})), 4, "000000 FFFFFF AAAAAA"},
      {"grey key with surplus bits", file_of_row(3, 2, 0, {0x1B}, chunk("tRNS", {1, 5})), 4, "000000 FFFFFF AAAAAA"},
      {"16-bit grey key", file_of_row(2, 16, 0, {1, 2, 1, 3}, chunk("tRNS", {1, 2})), 8, "FFFFFF 010101"},
      {"colour key", file_of_row(2, 8, 2, {1, 2, 3, 1, 2, 4}, chunk("tRNS", {0, 1, 0, 2, 0, 3})), 24, "FFFFFF 010204"},
      {"alpha, whatever the gamma", file_of_row(2, 8, 4, {100, 128, 0, 0}, kGamma), 8, "B1B1B1 FFFFFF"},
      {"an index without a colour", file_of_row(2, 8, 3, {0, 9}, chunk("PLTE", {1, 2, 3})), 8, "010203 000000"},
  };
  for (const auto& c : cases) {
    const Bytes dib = load_file(c.file);
    ASSERT_EQ(header_of(dib).biBitCount, c.depth) << c.what << ' ' << status;
    EXPECT_EQ(picture_of(dib), c.picture) << c.what;
  }
}

// With another bit in the first byte of the chunk behind the header, whose checksum tells.
Bytes damaged(Bytes file) {
  file[33 + 8] ^= 1;
  return file;
}

TEST_F(PngTest, ChecksumsOfWhatPixelsDoNotNeedDoNotMatter) {
  const Bytes text{'a', 0, 'b'}, packed_text{'a', 0, 0, 'b'}, time{7, 0xD0, 1, 1, 0, 0, 0}, size{0, 0, 1, 0, 0, 0, 1, 0, 1};
  for (const Bytes& part :
       {chunk("tEXt", text), chunk("zTXt", packed_text), chunk("tIME", time), chunk("pHYs", size), kGamma}) {
    const Bytes dib = load_file(damaged(file_of_row(1, 8, 0, {7}, part)));
    EXPECT_EQ(status, IMG_OK) << part[4] << part[5];
    EXPECT_EQ(picture_of(dib), "070707") << part[4] << part[5];
    EXPECT_EQ(header_of(dib).biXPelsPerMeter, 0);
  }
}

TEST_F(PngTest, WhatCannotBeReadHasAStatus) {
  const struct {
    const char* what;
    Bytes file;
    int status;
  } cases[] = {
      {"the checksum of transparency", damaged(file_of_row(1, 8, 0, {7}, chunk("tRNS", {0, 7}))), 9},
      {"the checksum of the palette", damaged(file_of_row(1, 8, 3, {0}, chunk("PLTE", {1, 2, 3}))), 9},
      {"no pixels", file_of_row(0, 8, 0, {}), 9},
      {"no such depth", file_of_row(1, 3, 0, {0}), 9},
      {"no colours", file_of_row(1, 8, 3, {0}), 9},
      {"a lie", file_of_row(500000000, 8, 0, {0}, {}, 500000000), 1},
      {"a lie about 2 bits, of which 4 are made", file_of_row(40'000, 2, 0, {0}, {}, 20'000), 1},
      {"too few rows", file_of_row(1, 8, 0, {0}, {}, 2), 9},
  };
  for (const auto& c : cases) expect_refused(c.file, c.status, c.what);
}

TEST_F(PngTest, AWideRowIsSaved) {
  const Bytes wide = noise(1'500'000, 1, 1);
  EXPECT_EQ(largest_difference(load_file(saved(wide)), wide), 0);
}

}  // namespace
