// PCX and DCX files through the entry points of their modules.
#include <algorithm>

#include "codecs/codec.h"

using namespace test;

namespace {

class PcxTest : public CodecTest {
 protected:
  PcxTest() : CodecTest(kPcx) {}
};

// The header of a file; most tests make files of rows whose bytes are below the mark of a run.
struct Variant {
  int version = 5, encoding = 1, plane_depth = 1, planes = 1, plane_bytes = 2, width = 9, height = 1, palette_kind = 0,
      dpi_x = 300, dpi_y = 0;
  size_t colors = 0;  // 010203, 040506 and so on

  Bytes file(const Bytes& data) const {
    Bytes bytes(128);
    const auto word = [&](size_t at, int value) {
      bytes[at] = static_cast<uint8_t>(value);
      bytes[at + 1] = static_cast<uint8_t>(value >> 8);
    };
    bytes[0] = 10;
    bytes[1] = static_cast<uint8_t>(version);
    bytes[2] = static_cast<uint8_t>(encoding);
    bytes[3] = static_cast<uint8_t>(plane_depth);
    word(4, 3);  // pictures need not begin at 0, 0
    word(6, 1);
    word(8, 3 + width - 1);
    word(10, 1 + height - 1);
    word(12, dpi_x);
    word(14, dpi_y);
    for (size_t i = 0; i < colors * 3; ++i) bytes[16 + i] = static_cast<uint8_t>(i + 1);
    bytes[65] = static_cast<uint8_t>(planes);
    word(66, plane_bytes);
    word(68, palette_kind);
    return joined(bytes, data);
  }
};

TEST_F(PcxTest, SavedBytesAreAsOthersReadThem) {
  // Five pixels 1, 2, 4, 8 and 15: one in each plane, then one in all.
  BITMAPINFOHEADER header = header_for(5, 1, 4);
  Bytes rest(64 + 4, 0);
  rest[4] = 3, rest[5] = 2, rest[6] = 1;  // colour 1: blue, green, red
  rest[64] = 0x12, rest[65] = 0x48, rest[66] = 0xF7;
  const Bytes file = saved(with_header(header, rest));
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 4), Bytes({10, 5, 1, 1}));
  EXPECT_EQ(Bytes(file.begin() + 19, file.begin() + 22), Bytes({1, 2, 3}));
  EXPECT_EQ(Bytes(file.begin() + 65, file.begin() + 68), Bytes({4, 2, 0}));
  EXPECT_EQ(Bytes(file.begin() + 128, file.end()), Bytes({0x88, 0, 0x48, 0, 0x28, 0, 0x18, 0}));

  // A white and a black pixel, where white is 0: stored as 1, for readers that do not look at colours. Three bytes alike.
  header = header_for(24, 1, 1);
  header.biClrUsed = 2;
  const Bytes swapped = saved(with_header(header, {255, 255, 255, 0, 0, 0, 0, 0, 0x0F, 0x0F, 0x0F, 0}));
  EXPECT_EQ(Bytes(swapped.begin() + 128, swapped.end()), Bytes({0xC3, 0xF0, 0}));

  const Bytes blank = saved(with_header(header_for(1024, 1, 1)));
  EXPECT_EQ(Bytes(blank.begin() + 128, blank.end()), Bytes({0xFF, 0, 0xFF, 0, 0xC2, 0}));
}

TEST_F(PcxTest, VariantsLoad) {
  const Bytes with_table = joined({1, 0, 12}, Bytes(768, 0x11)), padded = joined(with_table, Bytes(100));
  Bytes ramp(768 + 38);  // padded so that its entry 12 looks like the mark of a table that ends the file
  for (size_t i = 0; i < 768; ++i) ramp[i] = static_cast<uint8_t>(i / 3);
  const struct {
    const char* name;
    Variant variant;
    Bytes data;
    int depth;
    std::string picture;
  } kVariants[] = {
      {"two colours", {.width = 2, .colors = 2}, {0x40, 0}, 1, "010203 040506"},
      {"a table that has nothing to do with it", {.width = 2, .colors = 16}, {0x40, 0}, 1, "000000 FFFFFF"},
      {"no table", {.width = 2}, {0x40, 0}, 1, "000000 FFFFFF"},
      {"two planes", {.planes = 2, .width = 4, .colors = 16}, {0x50, 0, 0x30, 0}, 4, "010203 040506 070809 0A0B0C"},
      {"three planes", {.planes = 3, .width = 2, .colors = 16}, {0x40, 0, 0, 0, 0xC1, 0xC0, 0}, 4, "0D0E0F 101112"},
      {"packed 2 bits", {.plane_depth = 2, .width = 4, .colors = 16}, {0x1B, 0}, 4, "010203 040506 070809 0A0B0C"},
      {"packed 4 bits", {.plane_depth = 4, .width = 3, .colors = 16}, {0x12, 0x30}, 4, "040506 070809 0A0B0C"},
      {"standard", {.version = 3, .plane_depth = 4, .width = 3, .colors = 16}, {0x16, 0x90}, 4, "0000AA AA5500 5555FF"},
      {"standard, oldest",
       {.version = 0, .plane_depth = 4, .width = 3, .colors = 16},
       {0x06, 0x90},
       4,
       "000000 AA5500 5555FF"},
      {"16 greys", {.version = 3, .plane_depth = 4, .width = 3, .palette_kind = 2}, {0x16, 0x90}, 4, "111111 666666 999999"},
      {"four greys", {.planes = 2, .width = 4, .palette_kind = 2}, {0x50, 0, 0x30, 0}, 4, "000000 555555 AAAAAA FFFFFF"},
      {"plain", {.encoding = 0, .plane_depth = 8, .planes = 3, .width = 2}, {0xC1, 2, 3, 4, 5, 6}, 24, "C10305 020406"},
      {"a run over planes", {.plane_depth = 8, .planes = 3, .width = 2}, {0xC4, 7, 0xC0, 1, 8, 9}, 24, "070708 070709"},
      {"alpha", {.plane_depth = 8, .planes = 4, .width = 2}, {1, 1, 2, 2, 3, 3, 0xC1, 0xFF, 0}, 24, "010203 FFFFFF"},
      {"grey", {.plane_depth = 8, .width = 2, .palette_kind = 2}, {0xC1, 0xFE, 5}, 8, "FEFEFE 050505"},
      {"table", {.plane_depth = 8, .width = 2, .palette_kind = 1}, with_table, 8, "111111 111111"},
      {"padding after the table", {.plane_depth = 8, .width = 2}, padded, 8, "111111 111111"},
      {"padding after a ramp", {.plane_depth = 8, .width = 2}, joined({1, 0, 12}, ramp), 8, "010101 000000"},
      {"padding before the table", {.plane_depth = 8, .width = 2}, joined({1, 0}, with_table), 8, "111111 111111"},
  };
  for (const auto& [name, variant, data, depth, picture] : kVariants) {
    SCOPED_TRACE(name);
    const Bytes dib = load_file(variant.file(data));
    ASSERT_EQ(status, IMG_OK);
    EXPECT_EQ(header_of(dib).biBitCount, depth);
    EXPECT_EQ(header_of(dib).biXPelsPerMeter, 11811);
    EXPECT_EQ(picture_of(dib), picture);
  }
  EXPECT_EQ(header_of(load_file(Variant{.dpi_x = 9, .dpi_y = 1}.file({0, 0}))).biXPelsPerMeter,
            0);  // the picture's own size

  const Bytes two_lines = load_file(Variant{.width = 16, .height = 2}.file({0xC3, 0x21, 0x43}));
  EXPECT_EQ(Bytes(two_lines.end() - 8, two_lines.end()), Bytes({0x21, 0x43, 0, 0, 0x21, 0x21, 0, 0}));
}

TEST_F(PcxTest, RefusesWhatIsNotRead) {
  const Bytes data(1000, 0);
  const Variant refused[] = {{.version = 1},
                             {.version = 6},
                             {.encoding = 2},
                             {.plane_depth = 3},
                             {.planes = 0},
                             {.planes = 5},
                             {.plane_depth = 2, .planes = 2},
                             {.plane_bytes = 1},
                             {.width = 0},
                             {.height = 0},
                             {.plane_bytes = 65'535, .width = 65'000, .height = 65'000},
                             {.encoding = 0, .height = 501},
                             {.plane_depth = 8, .width = 2, .height = 500, .palette_kind = 1}};
  for (int i = 0; const Variant& variant : refused) expect_refused(variant.file(data), IMG_E_FORMAT, std::to_string(i++));
  Bytes unsigned_file = Variant{}.file(data);
  unsigned_file[0] = 11;
  expect_refused(unsigned_file, IMG_E_FORMAT, "another signature");
  EXPECT_FALSE(save(with_header(header_for(65'535, 1, 8)))) << "a line has no more than 65,535 bytes";
  EXPECT_EQ(status, IMG_E_DIB_SIZE);
}

TEST_F(PcxTest, PicturesOfOneColorComeBackAndLookTheSameWithoutTheTable) {
  for (const int depth : {1, 4})
    for (const uint8_t value : {uint8_t{0}, uint8_t{255}}) {
      Bytes dib = noise(16, 1, depth);
      std::fill_n(dib.begin() + 40, 4 << depth, value);
      const Bytes file = saved(dib);
      EXPECT_EQ(file[129], depth == 1 ? value : 0) << depth;
      EXPECT_EQ(largest_difference(load_file(file), dib), 0) << depth;
    }
}

class DcxTest : public CodecTest {
 protected:
  DcxTest() : CodecTest(kDcx) {}

  bool make() { return modules().make_dcx(path.c_str(), &status) != FALSE; }
  int count() { return modules().count_dcx(path.c_str(), &status); }
};

TEST_F(DcxTest, PagesComeBackInOrder) {
  ASSERT_TRUE(make());
  EXPECT_EQ(read_file(path).size(), 4100u);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(status, IMG_OK);
  const Bytes pages[] = {noise(20, 9, 8), noise(9, 20, 1), noise(5, 5, 24)};
  for (const Bytes& page : pages) ASSERT_TRUE(save(page)) << status;
  EXPECT_EQ(count(), 3);
  for (int page = 1; page <= 3; ++page) EXPECT_EQ(largest_difference(load(page), pages[page - 1]), 0) << page;
  for (const int page : {-1, 0, 4}) {
    EXPECT_EQ(load(page), Bytes());
    EXPECT_EQ(status, IMG_E_PARAMETER);
  }
}

TEST_F(DcxTest, DirectoriesOfOthersAreUnderstood) {
  ASSERT_TRUE(modules().save_pcx(path.c_str(), block_of(noise(20, 9, 8)).get(), &status));
  const Bytes picture = read_file(path);
  EXPECT_FALSE(save(noise(3, 3, 1))) << "no DCX file";
  EXPECT_EQ(status, IMG_E_FORMAT);
  const auto page_at = [&](uint8_t begin) {  // the directory ends where the page begins
    Bytes file = joined({0xB1, 0x68, 0xDE, 0x3A, begin}, Bytes(begin - 5));
    write_file(path, joined(file, picture));
  };
  page_at(12);
  EXPECT_EQ(largest_difference(load(1), noise(20, 9, 8)), 0);
  EXPECT_FALSE(save(noise(3, 3, 1)));
  EXPECT_EQ(status, IMG_E_PARAMETER);
  page_at(16);
  EXPECT_TRUE(save(noise(3, 3, 1)));
  EXPECT_EQ(largest_difference(load(1), noise(20, 9, 8)), 0);
  EXPECT_EQ(largest_difference(load(2), noise(3, 3, 1)), 0);

  // What is behind the end of a directory need not be 0, and a file need not have what its directory has room for.
  for (const Bytes& file : {joined({0xB1, 0x68, 0xDE, 0x3A, 20, 0, 0, 0, 0, 0, 0, 0, 9, 9, 9, 9, 0, 0, 0, 0}, picture),
                            Bytes{0xB1, 0x68, 0xDE, 0x3A, 0, 64, 0, 0, 0, 0, 0, 0}}) {
    write_file(path, file);
    EXPECT_TRUE(save(noise(3, 3, 1)));
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(largest_difference(load(2), noise(3, 3, 1)), 0);
  }

  Bytes full = joined({0xB1, 0x68, 0xDE, 0x3A}, Bytes(4096, 1));
  write_file(path, full);
  EXPECT_EQ(count(), 1023);
  EXPECT_FALSE(save(noise(3, 3, 1)));
  EXPECT_EQ(status, IMG_E_PARAMETER);
  EXPECT_EQ(load(1), Bytes());
  EXPECT_EQ(status, IMG_E_FORMAT);
  EXPECT_EQ(read_file(path), full);
  full.resize(100);
  write_file(path, full);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(status, IMG_E_FORMAT);
}

// The euro sign of Windows, and no text at all in UTF-8.
TEST_F(DcxTest, NamesAreTheSystemsOwn) {
  path += "\x80.dcx";
  ASSERT_TRUE(make());
  ASSERT_TRUE(save(noise(20, 9, 8))) << status;
  EXPECT_EQ(largest_difference(load(1), noise(20, 9, 8)), 0) << status;
}

}  // namespace
