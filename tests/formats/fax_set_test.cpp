// Colour fax page sets, with bitmap files and DCX files as planes.
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;
using namespace std::string_literals;

namespace {

// Whether pixel (x, y) of a test plane is set.
bool is_set(int plane, int x, int y) { return ((x * 7 + y * 3 + plane * 5 + x * y) >> plane & 1) != 0; }

Bytes plane_image(int plane, int width, int height) {
  BITMAPINFOHEADER header = header_for(width, height, 1);
  header.biXPelsPerMeter = 8000;
  header.biYPelsPerMeter = 4000;
  Bytes rest = {0, 0, 0, 0, 255, 255, 255, 0};
  for (int y = 0; y < height; ++y) {
    Bytes row(stride_of(width, 1), 0xFF);  // set bits in the padding must not show
    for (int x = 0; x < width; ++x)
      if (!is_set(plane, x, y)) row[static_cast<size_t>(x / 8)] &= static_cast<uint8_t>(~(0x80 >> x % 8));
    rest.insert(rest.end(), row.begin(), row.end());
  }
  return with_header(header, rest);
}

class FaxSet : public testing::Test {
 protected:
  std::string put(const std::string& name, const Bytes& dib) const {
    write_file(folder_.path(name), file_of(dib));
    return folder_.path(name);
  }
  void describe(const std::string& text) const { write_file(set_, {text.begin(), text.end()}); }
  void describe(const std::string& facts, const std::string& sections) const {
    describe("[ColorFax]\nBitsPixel=1\n" + facts + "\n" + sections);
  }
  // Adds a plane to a DCX file.
  std::string add(const std::string& name, int plane, int width) const {
    const Block image = block_of(plane_image(plane, width, 3));
    EXPECT_TRUE(SaveDIBInImageFormat(folder_.path(name).c_str(), image.get(), IMG_FORMAT_DCX, 0, 0));
    return folder_.path(name);
  }
  Bytes load(int page = 1) {
    SetImgError(0);
    status_ = 77;
    return bytes_of(Block(LoadColorFaxPage(set_.c_str(), page, &status_)).get());
  }
  void expect_refused(int code, const std::string& why, int page = 1) {
    EXPECT_TRUE(load(page).empty()) << why;
    EXPECT_EQ(ImgError(), code) << why;
    EXPECT_EQ(status_, code == 0 ? 77 : code) << why;
  }

  static void expect_planes(const Bytes& page, int planes, int width, int height) {
    const BITMAPINFOHEADER header = header_of(page);
    ASSERT_TRUE(header.biWidth == width && header.biHeight == height && header.biBitCount == 4) << planes << " " << width;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        uint32_t expected = 0;
        for (int i = 0; i < planes; ++i) expected |= is_set(i, x, y) ? 8u >> i : 0;
        ASSERT_EQ(pixel(page, x, y), expected) << planes << " " << width << " " << x << " " << y;
      }
  }

  TempFolder folder_;
  std::string set_ = folder_.path("set.fax");
  int status_ = 0;
};

TEST_F(FaxSet, PlanesBecomeColours) {
  for (int planes : {2, 3, 4})
    for (int width : {1, 5, 8, 13, 16, 31}) {
      std::string section = "[Page1]\n";
      for (int i = 0; i < planes; ++i) {
        section += fmt::format("Plane{}={}\n", i, put(fmt::format("{}.bmp", i), plane_image(i, width, 6)));
      }
      describe(fmt::format("TotalPages=1\nPlanes={0}\nFiles={0}", planes), section);
      const Bytes page = load();
      const BITMAPINFOHEADER header = header_of(page);
      EXPECT_EQ(page.size(), 40 + 64 + stride_of(width, 4) * 6);
      EXPECT_EQ(header.biSizeImage, stride_of(width, 4) * 6);
      EXPECT_TRUE(header.biXPelsPerMeter == 8000 && header.biYPelsPerMeter == 4000);
      EXPECT_TRUE(header.biClrUsed == 16 && header.biClrImportant == 16);
      expect_planes(page, planes, width, 6);
    }
}

TEST_F(FaxSet, ColoursGoByTheirPlanes) {
  describe("TotalPages=1\nPlanes=2\nFiles=2",
           fmt::format("[Page1]\nPlane0={0}\nPlane1={0}", put("0.bmp", plane_image(0, 8, 8))));
  const Bytes page = load();
  const auto entry = [&](size_t i) { return Bytes(page.begin() + 40 + i * 4, page.begin() + 44 + i * 4); };
  EXPECT_EQ(entry(1), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(entry(2), (Bytes{128, 0, 0, 0})) << "blue comes first";
  EXPECT_EQ(entry(9), (Bytes{0, 0, 255, 0}));
  EXPECT_EQ(entry(12), (Bytes{0, 128, 128, 0}));
  EXPECT_EQ(entry(15), (Bytes{255, 255, 255, 0}));
}

TEST_F(FaxSet, OnePlaneIsGivenAsItIs) {
  Bytes image = noise(9, 4, 8);
  const std::string file = put("any.bmp", image);
  describe("TotalPages=7\nPlanes=257\nFiles=7\nFirstPage=5", "[Page-1]\nPlane0=\"" + file + "\"");
  EXPECT_EQ(pixel(load(3), 8, 3), pixel(image, 8, 3)) << "the third page of those from 5 to 7; planes count in 8 bits";
  EXPECT_TRUE(load(4).empty());
  describe("TotalPages=7\nPlanes=1\nFiles=7", "[Page3]\nPlane0=\"" + file + "\"");
  EXPECT_EQ(pixel(load(3), 8, 3), pixel(image, 8, 3));
}

// Two DCX files of two pages of two planes each; every page has a width of its own.
TEST_F(FaxSet, FilesOfSeveralImagesAreWalked) {
  int width = 10;
  for (const char* name : {"a.dcx", "b.dcx"})
    for (int page = 0; page < 2; ++page, ++width)
      for (int plane = 0; plane < 2; ++plane) add(name, plane, width);
  for (int first : {1, 3}) {
    describe(fmt::format("FirstPage={}\nTotalPages={}\nPlanes=2\nFiles=2", first, first + 3),
             fmt::format("[File{}]\nName={}\nPages=2\n[File{}]\nName={}\nPages=2\n", first, folder_.path("a.dcx"), first + 1,
                         folder_.path("b.dcx")));
    expect_planes(load(1), 2, 10, 3);
    expect_planes(load(2), 2, 11, 3);
    EXPECT_TRUE(load(3).empty()) << "the first page of a further file is looked for past the end of the file before";
    EXPECT_EQ(status_, IMG_E_PARAMETER);
    expect_planes(load(4), 2, 13, 3);
    expect_planes(bytes_of(Block(LoadImageIntoDIB(set_.c_str(), 4, &status_)).get()), 2, 13, 3);
  }
}

TEST_F(FaxSet, FilesOfTheirOwnAreAskedForTheImageOfThePagesNumber) {
  std::string sections;
  for (int page : {1, 2}) {
    sections += fmt::format("[Page{}]\n", page);
    for (int plane : {0, 1}) {
      sections += fmt::format("Plane{}={}\n", plane, add(fmt::format("{}.dcx", plane), plane, 20 + page));
    }
  }
  describe("TotalPages=2\nPlanes=2\nFiles=4", sections);
  for (int page : {1, 2}) expect_planes(load(page), 2, 20 + page, 3);
}

TEST_F(FaxSet, SetsInsideSetsEndAtEight) {
  const Bytes plane = plane_image(0, 8, 8);
  std::string inner = put("plane.bmp", plane);
  for (int depth = 1; depth <= 9; ++depth) {
    set_ = folder_.path(fmt::format("{}.fax", depth));
    describe("TotalPages=1\nPlanes=1\nFiles=1", "[Page1]\nPlane0=" + inner);
    if (depth == 9) {
      expect_refused(0, "nine sets");
    } else {
      EXPECT_EQ(picture_of(load()), picture_of(plane)) << depth;
    }
    inner = set_;
  }
}

TEST_F(FaxSet, BadSetsAreRefused) {
  const std::string small = put("small.bmp", plane_image(0, 8, 8)), gray = put("gray.bmp", noise(8, 8, 8));
  Bytes compressed = plane_image(0, 8, 8), cut = compressed;
  compressed[16] = BI_RLE8;
  cut[20] = 8 * 4 - 1;
  const struct {
    const char* why;
    std::string first, second;
    int code = 0;
  } pairs[] = {
      {"planes of two widths", small, put("wide.bmp", plane_image(0, 9, 8))},
      {"planes of two heights", small, put("high.bmp", plane_image(0, 8, 9))},
      {"a compressed plane", small, put("compressed.bmp", compressed)},
      {"a plane whose block ends before its rows do", put("cut.bmp", cut), small},
      {"planes of 8 bits", gray, gray},
      {"a plane without a name", small, "", IMG_E_FORMAT},
      {"a set that lists itself second", small, set_},
      {"a set that lists itself first", set_, set_},
  };
  for (const auto& pair : pairs) {
    describe("TotalPages=1\nPlanes=2\nFiles=2", "[Page1]\nPlane0=" + pair.first + "\nPlane1=" + pair.second);
    expect_refused(pair.code, pair.why);
  }
  describe("TotalPages=1\nPlanes=1\nFiles=1", "[Page1]\nPlane0=" + set_);
  expect_refused(0, "a set that is its own page");
  for (const char* planes : {"0", "5", "255", "256", "-4"}) {
    describe(fmt::format("TotalPages=1\nPlanes={0}\nFiles={0}", planes), "[Page1]\nPlane0=" + small);
    expect_refused(0, planes);
  }
  describe("TotalPages=2147483647\nPlanes=1\nFiles=2147483646", "[File1]\nName=" + gray);
  expect_refused(IMG_E_FORMAT, "two thousand million files", 2147483647);
  describe("TotalPages=2147483647\nPlanes=2\nFiles=2147483647", "[File1]\nName=" + small);
  expect_refused(0, "an image of a number that no file can have", 2147483647);
  describe("[ColorFax]\nTotalPages=1\nPlanes=1\nFiles=1\nBitsPixel=2\n[Page1]\nPlane0=" + small);
  expect_refused(0, "2 bits per pixel");
  describe("TotalPages=1\nPlanes=1\nFiles=1", "[Page1]\nPlane0=" + small);
  for (int page : {0, 2, -1}) expect_refused(0, "no such page", page);
}

TEST_F(FaxSet, NamesOf128CharactersAreWhole) {
  for (size_t length : {127u, 128u, 129u}) {
    std::string name = folder_.path("");
    name += std::string(length - name.size(), 'n');
    // What is cut off leads to a file of the shorter name, if there is one.
    write_file(name, file_of(noise(3, 3, 1)));
    describe("TotalPages=1\nPlanes=1\nFiles=1", "[Page1]\nPlane0=" + name);
    const bool fits = !load().empty();
#ifdef _WIN32
    EXPECT_EQ(fits, length == 127) << length << ": the system opens no longer paths";
#else
    EXPECT_EQ(fits, length <= 128) << length;
#endif
    std::filesystem::remove(name);
  }
}

// A text in UTF-16, without its byte order mark.
std::string wide(const std::string& text, bool high_byte_first) {
  std::string units;
  for (char c : text) units += high_byte_first ? std::string{'\0', c} : std::string{c, '\0'};
  return units;
}

// Both builds take the same numbers from the same texts, although the system's own functions read them on Windows.
TEST_F(FaxSet, PagesAreCounted) {
  const std::string zeros(40, '0');
  const std::map<int, std::vector<std::string>> values = {{12, {"12 pages", zeros.substr(2 + 11) + "12"}},
                                                          {0, {"- 5", "0XF", "0x", "five", "\"5"}},
                                                          {5,
                                                           {"+5", "\" \1\t5\"", "\1\0025", "'5'",
                                                            "5\0"
                                                            "6"s,
                                                            "5\x1A"}},
                                                          {1, {"4294967297", zeros.substr(1 + 11) + "12"}},
                                                          {-1, {"", "\"\""}},
                                                          {-3, {"-3"}},
                                                          {17, {"017"}},
                                                          {31, {"0x1f"}},
                                                          {15, {"0o17"}},
                                                          {2, {"0b102"}},
                                                          {-16, {"-0x10"}}};
  SetImgError(5);
  for (const auto& [count, texts] : values)
    for (const std::string& value : texts) {
      describe("[ColorFax]\nTotalPages=" + value);
      EXPECT_EQ(GetNumberOfImagesInFaxFile(set_.c_str()), count) << value;
    }
  const std::string set = "[ColorFax]\nTotalPages=7";
  std::string long_section = "[" + std::string(200'000, 'x') + "]\n";
  for (int i = 0; i < 20'000; ++i) long_section += std::to_string(i) + "=\n";
  const std::map<int, std::vector<std::string>> sets = {
      {12, {"[COLORFAX]\r\n; TotalPages=9\r\n TOTALPAGES\t= 12\r\nTotalPages=13"}},
      {7,
       {"[ColorFax]\n[x\nTotalPages=7", "[ ColorFax\t] x\nTotalPages=7", "[ColorFax]\r=\r\x1ATotalPages=7\rTotalPages=8",
        "[ColorFax\0x]\nTotalPages\0x=7"s, "\xEF\xBB\xBF" + set, "\xFF\xFE" + wide(set, false), "\xFE\xFF" + wide(set, true),
        long_section + set, set + "\n" + std::string((1 << 20) - set.size() - 1, ';')}},
      {-1,
       {"TotalPages=9\n[Other]\nTotalPages=9\n[ColorFax]\n", "[ColorFax]\n[x]\n" + set, "[ColorFax]]\nTotalPages=7",
        "[ColorFax\nTotalPages=7", "[ColorFax]\nTotalPages\nTotalPages=7", "[ColorFax]\nTotalPages=\nTotalPages=7",
        "[ColorFax]\n\0TotalPages=7"s, wide(set, false), set + "\n" + std::string((1 << 20) - set.size(), ';'), ""}}};
  for (const auto& [count, texts] : sets)
    for (const std::string& text : texts) {
      describe(text);
      EXPECT_EQ(GetNumberOfImagesInFaxFile(set_.c_str()), count) << text.substr(0, 80);
      EXPECT_EQ(GetImageFormat(set_.c_str()) == IMG_FORMAT_COLOR_FAX, count > 0) << text.substr(0, 80);
    }
  EXPECT_EQ(ImgError(), 5);
}

#ifndef _WIN32
TEST_F(FaxSet, NamesInUtf16AreFoundAsUtf8) {
  const Bytes plane = plane_image(0, 8, 8);
  put("\xC3\xA9\xF0\x9F\x96\xA8.bmp", plane);
  describe("\xFF\xFE" + wide("[ColorFax]\nBitsPixel=1\nTotalPages=1\nPlanes=1\nFiles=1\n[Page1]\nPlane0=", false) +
           wide(folder_.path(""), false) + "\xE9\0\x3D\xD8\xA8\xDD"s + wide(".bmp", false));
  EXPECT_EQ(picture_of(load()), picture_of(plane));
}
#endif

TEST_F(FaxSet, MissingSetsSaySo) {
  for (const std::string& missing : {folder_.path("missing"), folder_.path(""), std::string()}) {
    SetImgError(0);
    EXPECT_EQ(GetNumberOfImagesInFaxFile(missing.c_str()), -1);
    EXPECT_EQ(ImgError(), IMG_E_OPEN_FILE);
    EXPECT_EQ(LoadColorFaxPage(missing.c_str(), 1, &status_), nullptr);
    EXPECT_EQ(status_, IMG_E_OPEN_FILE);
    EXPECT_EQ(LoadColorFaxPage(missing.c_str(), 1, nullptr), nullptr);
  }
}

}  // namespace
