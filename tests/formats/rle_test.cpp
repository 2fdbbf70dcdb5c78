// Run-length compression through the exports: codes byte by byte, the way there and back, and codes that lie.
#include "kernels/rle/rle.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <span>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

size_t table_end(int depth) { return 40 + (size_t{4} << depth); }

// A DIB with a full colour table of ascending bytes.
Bytes dib_of(const BITMAPINFOHEADER& header, const Bytes& data) {
  Bytes rest(table_end(header.biBitCount) - 40);
  for (size_t i = 0; i < rest.size(); ++i) rest[i] = static_cast<uint8_t>(i);
  rest.insert(rest.end(), data.begin(), data.end());
  return with_header(header, rest);
}

BITMAPINFOHEADER coded_header(int width, int height, int depth, uint32_t image_bytes = 1) {
  BITMAPINFOHEADER header = header_for(width, height, depth);
  header.biCompression = depth == 8 ? BI_RLE8 : BI_RLE4;
  header.biSizeImage = image_bytes;
  return header;
}

Bytes converted(HGLOBAL(VORELCALL* convert)(HGLOBAL), const Bytes& dib) {
  return bytes_of(Block(convert(block_of(dib).get())).get());
}

Bytes data_of(const Bytes& dib) {
  const size_t begin = table_end(header_of(dib).biBitCount);
  return dib.size() < begin ? Bytes{} : Bytes(dib.begin() + static_cast<std::ptrdiff_t>(begin), dib.end());
}

TEST(CompressDIB, WritesTheseCodes) {
  struct Case {
    int width, height, depth;
    Bytes rows, codes;
  };
  const Case cases[] = {
      {4, 1, 8, {7, 7, 7, 7}, {4, 7, 0, 0, 0, 1}},
      {5, 1, 8, {1, 2, 3, 4, 5, 9, 9, 9}, {0, 5, 1, 2, 3, 4, 5, 0xFF, 0, 0, 0, 1}},
      {5, 1, 8, {1, 2, 3, 4, 5, 5, 9, 9}, {0, 4, 1, 2, 3, 4, 2, 5, 0, 0, 0, 1}},  // the byte behind the row takes part
      {4, 1, 8, {1, 2, 2, 2}, {1, 1, 3, 2, 0, 0, 0, 1}},
      {4, 1, 8, {1, 2, 3, 3}, {1, 1, 1, 2, 2, 3, 0, 0, 0, 1}},
      {6, 1, 8, {1, 2, 3, 4, 4, 4, 9, 9}, {0, 3, 1, 2, 3, 0xFF, 3, 4, 0, 0, 0, 1}},
      {2, 1, 8, {1, 2, 3, 3}, {1, 1, 1, 2, 0, 0, 0, 1}},
      {1, 2, 8, {8, 9, 9, 9, 8, 8, 9, 9}, {1, 8, 1, 9, 0, 0, 2, 8, 0, 0, 0, 1}},
      {4, 2, 8, {1, 2, 2, 3, 4, 5, 5, 6}, {1, 1, 2, 2, 1, 3, 1, 4, 0, 0, 1, 4, 2, 5, 1, 6, 1, 0, 0, 0, 0, 1}},
      {4, 1, 8, {1, 2, 2, 3, 3}, {1, 1, 2, 2, 2, 3, 0, 0, 0, 1}},  // as far as the block goes
      {300, 1, 8, Bytes(300, 6), {250, 6, 50, 6, 0, 0, 0, 1}},
      {8, 1, 4, {0x77, 0x77, 0x77, 0x77}, {8, 0x77, 0, 0, 0, 1}},
      {8, 1, 4, {0x12, 0x34, 0x56, 0x78, 0x9A}, {0, 8, 0x12, 0x34, 0x56, 0x78, 0, 0, 0, 1}},
      {6, 1, 4, {0x12, 0x34, 0x56, 0x78}, {0, 6, 0x12, 0x34, 0x56, 0xFF, 0, 0, 0, 1}},
      {8, 1, 4, {0x12, 0x34, 0x34, 0x34}, {2, 0x12, 6, 0x34, 0, 0, 0, 1}},
      {7, 1, 4, {0x12, 0x34, 0x56, 0x56}, {2, 0x12, 2, 0x34, 3 + 1, 0x56, 0, 0, 0, 1}},
      {3, 1, 4, {0x12, 0x30, 0x45, 0x67}, {0, 4, 0x12, 0x30, 0, 0, 0, 1}},
      {3, 1, 4, {0x12, 0x30, 0x30, 0x67}, {2, 0x12, 1, 0x30, 0, 0, 0, 1}},
      {7, 1, 4, {0x12, 0x12, 0x34, 0x50}, {4, 0x12, 2, 0x34, 2, 0x50, 0, 0, 0, 1}},
      {1, 1, 4, {0x12, 0x12, 0x12, 0x12}, {1, 0x12, 0, 0, 0, 1}},
      {502, 1, 4, Bytes(252, 0x66), {250, 0x66, 250, 0x66, 2, 0x66, 0, 0, 0, 1}},
      {INT32_MAX, 0, 8, {}, {0, 1}},
      {0, 2, 4, {}, {0, 0, 0, 0, 0, 1}},
      {5, 1, 8, {}, {5, 0, 0, 0, 0, 1}},  // missing rows are zero
  };
  for (const Case& c : cases) {
    const BITMAPINFOHEADER header = header_for(c.width, c.height, c.depth);
    const auto code_bytes = static_cast<uint32_t>(c.codes.size());
    EXPECT_EQ(converted(CompressDIB, dib_of(header, c.rows)),
              dib_of(coded_header(c.width, c.height, c.depth, code_bytes), c.codes))
        << c.width << " x " << c.height << ", first code " << int{c.codes[0]} << ' ' << int{c.codes[1]};
  }
}

TEST(CompressDIB, FindsWhereRunsAndLiteralsEnd) {
  for (uint8_t run = 2; run <= 30; ++run)
    for (uint8_t literal = 3; literal <= 30; ++literal) {
      const int width = run + literal + 3;
      Bytes row(run, 99), codes{run, 99, 0, literal};
      for (uint8_t value = 1; value <= literal; ++value) {
        row.push_back(value);
        codes.push_back(value);
      }
      row.insert(row.end(), 3, 99);
      if (literal % 2 != 0) codes.push_back(0xFF);
      codes.insert(codes.end(), {3, 99, 0, 0, 0, 1});
      ASSERT_EQ(data_of(converted(CompressDIB, dib_of(header_for(width, 1, 8), row))), codes) << +run << ", " << +literal;
    }
}

// Bytes of so few values that runs, literals and single pixels meet in all ways, with some long runs between them.
Bytes runs_and_noise(size_t count, unsigned seed) {
  std::minstd_rand random(seed);
  Bytes bytes(count);
  for (size_t i = 0; i < count;) {
    const size_t length = std::min<size_t>(random() % 8 == 0 ? random() % 400 : 1, count - i);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(i), length, static_cast<uint8_t>(random() % (2 + seed) * 0x31));
    i += length;
  }
  return bytes;
}

TEST(CompressDIB, GivesCodesThatExpandToTheSamePixels) {
  for (int depth : {4, 8})
    for (int width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 60, 250, 251, 252, 503, 1000})
      for (unsigned seed : {0u, 1u, 2u, 5u, 250u}) {
        const Bytes rows = runs_and_noise(stride_of(width, depth) * 5, seed);
        const Bytes dib = dib_of(header_for(width, 5, depth), rows);
        const Block source = block_of(dib);
        SetImgError(7);
        const Block codes(CompressDIB(source.get()));
        EXPECT_EQ(ImgError(), 0);
        SetImgError(7);
        const Bytes result = bytes_of(Block(ExpandCompressedDIB(codes.get())).get());
        EXPECT_EQ(ImgError(), 0);
        EXPECT_EQ(bytes_of(source.get()), dib) << "the source is only read";
        BITMAPINFOHEADER header = header_for(width, 5, depth);
        header.biSizeImage = static_cast<uint32_t>(rows.size());
        ASSERT_EQ(Bytes(result.begin(), result.end() - static_cast<std::ptrdiff_t>(rows.size())), dib_of(header, {}));
        for (int y = 0; y < 5; ++y)
          for (int x = 0; x < width; ++x)
            ASSERT_EQ(pixel(result, x, y), pixel(dib, x, y)) << depth << " bits, " << width << " wide: " << x << ", " << y;
      }
}

// Every row of a few values: none takes more bytes than there is room for, and some row takes as many.
TEST(MostCodeBytes, IsReachedByShortRows) {
  for (const auto& [depth, longest] : {std::pair{4, 8}, {8, 6}})
    for (int width = 1; width <= longest; ++width) {
      const auto room = static_cast<size_t>(vorel::kernels::most_code_bytes(depth, width, 1).value());
      size_t most = 0;
      for (int digits = 0; digits < 4 * 4 * 4 * 4 * 4 * 4 * 4; ++digits) {
        Bytes row(8);  // of which those up to the one behind the pixels vary
        for (size_t i = 0; i < 7; ++i) row[i] = static_cast<uint8_t>(digits >> 2 * i & 3);
        Bytes codes(room + 16);
        most = std::max(most, vorel::kernels::rle().encode({row.data(), 8, width, 1, depth}, row.data(), codes));
      }
      EXPECT_EQ(most, room) << depth << " bits, " << width << " wide";
    }
}

TEST(ExpandCompressedDIB, DrawsThesePictures) {
  struct Case {
    const char* what;
    int width, height, depth;
    Bytes codes, rows;
  };
  const Case cases[] = {
      {"runs, a literal and its pad", 4, 2, 8, {3, 7, 1, 8, 0, 0, 0, 3, 1, 2, 3, 99, 1, 4, 0, 1}, {7, 7, 7, 8, 1, 2, 3, 4}},
      {"halves take turns", 8, 1, 4, {3, 0x12, 4, 0x34, 0, 1}, {0x12, 0x13, 0x43, 0x40}},
      {"a literal on even ground", 8, 1, 4, {2, 0x11, 0, 5, 0xAB, 0xCD, 0xEF, 99, 1, 0x70, 0, 1}, {0x11, 0xAB, 0xCD, 0xE7}},
      {"a literal on odd ground", 8, 1, 4, {1, 0x10, 0, 4, 0xAB, 0xCD, 3, 0x23, 0, 1}, {0x1A, 0xBC, 0xD2, 0x32}},
      {"an odd literal on odd ground", 8, 1, 4, {1, 0x10, 0, 5, 0xAB, 0xCD, 0xEF, 99, 0, 1}, {0x1A, 0xBC, 0xDE, 0}},
      {"deltas", 4, 3, 8, {1, 1, 0, 2, 1, 1, 1, 2, 0, 2, 0, 1, 1, 3, 0, 1}, {1, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3}},
      {"nothing behind the end", 4, 1, 8, {1, 1, 0, 1, 1, 2}, {1, 0, 0, 0}},
      {"no end", 4, 1, 8, {1, 1, 2, 2}, {1, 2, 2, 0}},
      {"no codes", 4, 1, 8, {}, {0, 0, 0, 0}},
      {"half a code", 4, 1, 8, {1, 1, 9}, {1, 0, 0, 0}},
      {"half a delta", 4, 1, 8, {1, 1, 0, 2, 1}, {1, 0, 0, 0}},
      {"half a literal", 4, 1, 8, {0, 4, 1, 2}, {1, 2, 0, 0}},
      {"half a 4-bit literal", 8, 1, 4, {1, 0x10, 0, 7, 0xAB}, {0x1A, 0xB0, 0, 0}},
      {"run past the row", 3, 2, 8, {255, 5}, {5, 5, 5, 0, 0, 0, 0, 0}},
      {"run past the row, 4 bits", 3, 2, 4, {255, 0x56}, {0x56, 0x50, 0, 0, 0, 0, 0, 0}},
      {"literal past the row", 3, 1, 8, {1, 9, 0, 5, 1, 2, 3, 4, 5, 6, 0, 0}, {9, 1, 2, 0}},
      {"literal past the row, 4 bits", 3, 1, 4, {0, 5, 0x12, 0x34, 0x56, 0x78}, {0x12, 0x30, 0, 0}},
      {"a full row takes no more", 2, 2, 8, {2, 1, 1, 2, 0, 3, 3, 3, 3, 0, 0, 0, 1, 4}, {1, 1, 0, 0, 4, 0, 0, 0}},
      {"columns of a delta behind a full row", 2, 2, 8, {2, 1, 0, 2, 1, 1, 1, 4}, {1, 1, 0, 0, 0, 4, 0, 0}},
      {"no such thing at 4 bits", 2, 2, 4, {2, 0x11, 0, 2, 1, 1, 1, 0x44}, {0x11, 0, 0, 0, 0, 0, 0, 0}},
      {"nor where a delta led there", 2, 2, 8, {0, 2, 2, 0, 0, 2, 0, 1, 1, 4}, Bytes(8)},
      {"past the last row", 2, 1, 8, {0, 0, 1, 1, 0, 0, 1, 1, 0, 5, 1, 2, 3, 4, 5, 6, 0, 1}, {0, 0, 0, 0}},
      {"a delta past both edges", 2, 1, 8, {1, 7, 0, 2, 255, 255, 1, 1, 0, 2, 1, 1, 9, 9, 0, 1}, {7, 0, 0, 0}},
      {"a delta past the right edge",
       2,
       2,
       4,
       {0, 2, 9, 0, 1, 0x11, 0, 3, 0x22, 0x22, 0, 0, 1, 0x33},
       {0, 0, 0, 0, 0x30, 0, 0, 0}},
      {"no columns", 0, 2, 8, {9, 9, 0, 0, 0, 3, 1, 1, 1, 1}, {}},
      {"no rows", 5, 0, 4, {9, 9, 0, 0, 0, 3, 1, 1, 1, 1}, {}},
  };
  for (const Case& c : cases) {
    const Bytes dib = dib_of(coded_header(c.width, c.height, c.depth), c.codes);
    BITMAPINFOHEADER header = header_for(c.width, c.height, c.depth);
    header.biSizeImage = static_cast<uint32_t>(c.rows.size());
    EXPECT_EQ(converted(ExpandCompressedDIB, dib), dib_of(header, c.rows)) << c.what;
  }
}

TEST(ExpandCompressedDIB, CountsColumnsPastWhat32BitsHold) {
  constexpr size_t kDeltas = 0xFFFFFFFF / 255;
  Bytes codes(kDeltas * 4);
  for (size_t i = 0; i < kDeltas; ++i) {
    codes[i * 4 + 1] = 2;
    codes[i * 4 + 2] = 255;
  }
  codes.insert(codes.end(), {0, 2, 1, 0, 1, 9});
  EXPECT_EQ(data_of(converted(ExpandCompressedDIB, dib_of(coded_header(3, 1, 8), codes))), Bytes(4));
}

TEST(ExpandCompressedDIB, ReadsOtherCompressionsAsFourBits) {
  struct Case {
    int depth;
    Bytes data;
  };
  // Where a pixel has less than 4 bits the row ends with its bytes.
  for (const Case& c : {Case{4, {0x12, 0x12, 0x10, 0}},
                        {8, {0x12, 0x12, 0x10, 0, 0, 0, 0, 0}},
                        {1, {0x12, 0x12, 0x10, 0}},
                        {0, {}},
                        {16, {0x12, 0x12, 0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0}}}) {
    BITMAPINFOHEADER header = coded_header(5, 1, c.depth);
    header.biCompression = BI_BITFIELDS;
    EXPECT_EQ(data_of(converted(ExpandCompressedDIB, dib_of(header, {9, 0x12, 0, 1}))), c.data) << c.depth;
  }
  BITMAPINFOHEADER header = coded_header(32, 4, 1);
  header.biCompression = 5;
  EXPECT_EQ(data_of(converted(ExpandCompressedDIB, dib_of(header, {32, 0x12, 0, 0, 0, 0, 32, 0x34}))),
            (Bytes{0x12, 0x12, 0x12, 0x12, 0, 0, 0, 0, 0x34, 0x34, 0x34, 0x34, 0, 0, 0, 0}));
}

TEST(DamagedDibs, LackWhatIsMissingAlone) {
  Bytes cut = dib_of(coded_header(2, 1, 4), {2, 0x12, 0, 1});
  cut.resize(50);
  Bytes expected = dib_of(header_for(2, 1, 4), {0, 0, 0, 0});
  expected[20] = 4;
  std::fill(expected.begin() + 50, expected.end(), uint8_t{0});
  EXPECT_EQ(converted(ExpandCompressedDIB, cut), expected) << "no codes, and half a table";
}

TEST(RunLengthCodes, AreRefused) {
  struct Refusal {
    const char* what;
    int width, height, depth;
    uint32_t compression, image_bytes, header_bytes;
    int code;
  };
  const Refusal compressions[] = {{"compressed", 4, 4, 8, BI_RLE8, 9, 40, 8},
                                  {"colour masks", 4, 4, 8, BI_BITFIELDS, 9, 40, 8},
                                  {"1 bit", 4, 4, 1, BI_RGB, 0, 40, 8},
                                  {"24 bits", 4, 4, 24, BI_RGB, 0, 40, 8},
                                  {"other header", 4, 4, 8, BI_RGB, 0, 64, 8},
                                  {"negative width", -4, 4, 8, BI_RGB, 0, 40, 8},
                                  {"top-down", 4, -4, 8, BI_RGB, 0, 40, 8},
                                  {"wraps in 32 bits", 65'536, 65'536, 8, BI_RGB, 0, 40, 1},
                                  {"largest", INT32_MAX, INT32_MAX, 8, BI_RGB, 0, 40, 1},
                                  {"ends of lines alone", 0, INT32_MAX, 4, BI_RGB, 0, 40, 1}};
  const Refusal expansions[] = {{"uncompressed", 4, 4, 8, BI_RGB, 9, 40, 8},
                                {"8-bit codes at 4", 4, 4, 4, BI_RLE8, 9, 40, 8},
                                {"4-bit codes at 8", 4, 4, 8, BI_RLE4, 9, 40, 8},
                                {"no size", 4, 4, 8, BI_RLE8, 0, 40, 8},
                                {"no size, colour masks", 4, 4, 16, BI_BITFIELDS, 0, 40, 8},
                                {"other header", 4, 4, 8, BI_RLE8, 9, 12, 8},
                                {"negative width", -4, 4, 8, BI_RLE8, 9, 40, 8},
                                {"top-down", 4, -4, 4, BI_RLE4, 9, 40, 8},
                                {"wraps in 32 bits", 65'536, 65'536, 8, BI_RLE8, 9, 40, 1},
                                {"largest", INT32_MAX, INT32_MAX, 65'535, 9, 9, 40, 1},
                                {"table of 2 GB", 1, 1, 29, 9, 9, 40, 1},
                                {"table of 2^32 colours", 1, 1, 32, 9, 9, 40, 1},
                                {"table of 2^64 bytes", 1, 1, 62, 9, 9, 40, 1}};
  const auto expect_refusals = [](HGLOBAL(VORELCALL * convert)(HGLOBAL), std::span<const Refusal> refusals) {
    const auto expect_refusal = [&](HGLOBAL dib, int code, const char* what) {
      SetImgError(7);
      EXPECT_FALSE(Block(convert(dib))) << what;
      EXPECT_EQ(ImgError(), code) << what;
    };
    expect_refusal(nullptr, 8, "null");
    expect_refusal(dead_handle(), 8, "dead");
    expect_refusal(block_of(Bytes(39, 40)).get(), 8, "header cut");
    for (const Refusal& r : refusals) {
      BITMAPINFOHEADER header = header_for(r.width, r.height, r.depth);
      header.biSize = r.header_bytes;
      header.biCompression = r.compression;
      header.biSizeImage = r.image_bytes;
      expect_refusal(block_of(with_header(header, Bytes(2000))).get(), r.code, r.what);
    }
  };
  expect_refusals(CompressDIB, compressions);
  expect_refusals(ExpandCompressedDIB, expansions);
}

}  // namespace
