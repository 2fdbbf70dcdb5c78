// Pictures of every format through the tool.
#include <cstdlib>

#include "cli_fixture.h"
#include "common/page_range.h"
#include "support/module.h"

using namespace test;
using testing::HasSubstr;

namespace {

constexpr const char* kEndings[] = {"tif", "png", "gif", "pcx", "dcx", "tga", "jpg", "cal", "bmp"};

// Black and white at 1 bit, which every format holds.
Bytes bilevel(int width, int height) {
  Bytes dib = noise(width, height, 1);
  const uint8_t table[] = {0, 0, 0, 0, 255, 255, 255, 0};
  std::copy(std::begin(table), std::end(table), dib.begin() + sizeof(BITMAPINFOHEADER));
  return dib;
}

using CliFormats = Cli;

TEST_F(CliFormats, EveryFormatComesBack) {
  const Bytes picture = bilevel(33, 21);
  put("in.bmp", bitmap_file(picture));
  for (const std::string ending : kEndings) {
    const std::string file = at("file." + ending);
    ASSERT_EQ(run({"convert", at("in.bmp"), file}), 0) << err_;
    ASSERT_EQ(run({"info", file}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr("33 x 21 pixels"));
    EXPECT_THAT(out_.str(), testing::Not(HasSubstr("compression  unknown"))) << ending;
    ASSERT_EQ(run({"convert", file, at("back.bmp"), "--overwrite"}), 0) << err_;
    EXPECT_LE(largest_difference(dib_at("back.bmp"), picture), ending == "jpg" ? 60 : 0) << ending;
  }
}

TEST_F(CliFormats, StreamsTakeTheFormatThatIsNamed) {
  const Bytes picture = noise(9, 5, 24), file = bitmap_file(picture);
  ASSERT_EQ(run({"convert", "-", "-", "--to", "png"}, {file.begin(), file.end()}), 0) << err_;
  const std::string png = out_.str();
  EXPECT_EQ(png.substr(1, 3), "PNG");
  ASSERT_EQ(run({"rotate", "-", at("out"), "180", "--to", "tga"}, png), 0) << err_;
  fs::rename(at("out"), at("out.tga"));
  ASSERT_EQ(run({"rotate", at("out.tga"), at("back.bmp"), "180"}), 0) << err_;
  EXPECT_EQ(largest_difference(dib_at("back.bmp"), picture), 0);
}

Bytes bytes_of(const std::string& text) { return {text.begin(), text.end()}; }

// The same two rows of three pixels as text and as bytes, behind comments, with samples of 4, 8 and 16 bits.
TEST_F(CliFormats, PortableMapsOfEveryKind) {
  const std::string gray = "000000 FFFFFF 808080/FFFFFF 000000 FFFFFF", bits = "000000 FFFFFF FFFFFF/FFFFFF 000000 FFFFFF",
                    colors = "FF0000 00FF00 0000FF/FFFFFF 000000 808080";
  using namespace std::string_literals;
  const struct {
    std::string file, picture;
    int depth;
  } rows[] = {
      {"P1 # bits\n3 2\n1 0 0\n010", bits, 1},
      {"P4\n3 2\n\x9F\x5F", bits, 1},
      {"P4 8 1\n\x9F", "000000 FFFFFF FFFFFF 000000 000000 000000 000000 000000", 1},
      {"P2\n3 # wide\n2 255 0 255 128 255 0 255", gray, 8},
      {"P5\n3 2\n255\n\0\xFF\x80\xFF\0\xFF"s, gray, 8},
      {"P5\n3 2\n65535\n\0\0\xFF\xFF\x80\x80\xFF\xFF\0\0\xFF\xFF"s, gray, 8},
      {"P3 3 2 255 255 0 0  0 255 0  0 0 255\n255 255 255  0 0 0  128 128 128\n", colors, 24},
      {"P6 3 2 255\n\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF\0\0\0\x80\x80\x80"s, colors, 24},
  };
  std::string all;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file.substr(0, 12));
    all += row.file;
    ASSERT_EQ(run({"convert", "-", at("out.bmp"), "--overwrite"}, row.file), 0) << err_;
    EXPECT_EQ(err_.empty(), row.file.find("65535") == std::string::npos) << "lost bits are noted";
    EXPECT_EQ(picture_of(dib_at("out.bmp")), row.picture);
    EXPECT_EQ(header_of(dib_at("out.bmp")).biBitCount, row.depth);
    // What is written comes back.
    ASSERT_EQ(run({"convert", at("out.bmp"), "-", "--to", "pnm"}), 0) << err_;
    EXPECT_EQ(out_.str().substr(0, 2), row.depth == 1 ? "P4" : row.depth == 8 ? "P5" : "P6");
    ASSERT_EQ(run({"convert", "-", at("back.bmp"), "--overwrite"}, out_.str()), 0) << err_;
    EXPECT_EQ(read_file(at("back.bmp")), read_file(at("out.bmp")));
    for (size_t size = 0; size < row.file.find_last_not_of('\n') - 1; ++size)
      EXPECT_EQ(run({"convert", "-", at("cut.bmp")}, row.file.substr(0, size)), 4) << size;
  }
  // Files of several maps have as many pages.
  ASSERT_EQ(run({"pages", "count", put("all.pnm", bytes_of(all))}), 0) << err_;
  EXPECT_EQ(out_.str(), std::to_string(std::size(rows)) + "\n");
  ASSERT_EQ(run({"convert", at("all.pnm"), at("all.tif")}), 0) << err_;
  ASSERT_EQ(run({"convert", at("all.tif"), at("again.pnm"), "--page", "2-4"}), 0) << err_;
  ASSERT_EQ(run({"pages", "count", at("again.pnm")}), 0) << err_;
  EXPECT_EQ(out_.str(), "3\n");
  ASSERT_EQ(run({"info", at("again.pnm"), "--page", "3"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("PNM, P5"));
  // The other colour of a table of one is black.
  Bytes one_color = plain(8, 1, 1, 0xF0);
  one_color[32] = 1;
  one_color.erase(one_color.begin() + 44, one_color.begin() + 48);
  std::fill_n(one_color.begin() + 40, 3, uint8_t{255});
  ASSERT_EQ(run({"convert", put("one.bmp", bitmap_file(one_color)), "-", "--to", "pnm"}), 0) << err_;
  EXPECT_EQ(out_.str(), "P4\n8 1\n\xF0");
  const std::string photo = put("photo.bmp", bitmap_file(noise(5, 5, 24)));
  expect_refused({{{"convert", photo, at("out.pbm")}, 4, "PBM holds 1 bit"},
                  {{"convert", photo, at("out.pgm")}, 4, "PGM holds greys"},
                  {{"convert", put("a.pnm", bytes_of("P5 99999 99999 255\n")), at("x.bmp")}, 4, "ends before its 99999"},
                  {{"convert", put("b.pnm", bytes_of("P5 1 1 9\n\xFF")), at("x.bmp")}, 4, "above full light"},
                  {{"convert", put("c.pnm", bytes_of("P2 1 1 0 5 5 5")), at("x.bmp")}, 4, "full light is 0"},
                  {{"convert", put("d.pnm", bytes_of("P5 4294967297 1 255 x")), at("x.bmp")}, 4, "the width is above"}});
}

// An application segment with an orientation and, in a directory of either byte order, 240 x 120 dots per inch.
Bytes with_exif(const Bytes& jpeg, uint8_t orientation, bool is_big_endian) {
  Bytes tiff = {'I', 'I', 42, 0, 8, 0, 0, 0, 4, 0};
  const auto put = [&](uint32_t value, int size) {
    for (int i = 0; i < size; ++i) tiff.push_back(static_cast<uint8_t>(value >> (8 * (is_big_endian ? size - 1 - i : i))));
  };
  if (is_big_endian) tiff = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 4};
  const auto entry = [&](uint32_t tag, uint32_t type, uint32_t value) {
    put(tag, 2), put(type, 2), put(1, 4);
    if (type == 3)
      put(value, 2), put(0, 2);
    else
      put(value, 4);
  };
  entry(0x112, 3, orientation);
  entry(0x11A, 5, 62);
  entry(0x11B, 5, 70);
  entry(0x128, 3, 2);
  for (const uint32_t number : {0u, 240u, 1u, 120u, 1u}) put(number, 4);
  const Bytes other = {0xFF, 0xE1, 0, 9, 'o', 't', 'h', 'e', 'r', 's', 0};  // a segment of another kind
  const Bytes record = joined({0xFF, 0xE1, 0, static_cast<uint8_t>(2 + 6 + tiff.size()), 'E', 'x', 'i', 'f', 0, 0}, tiff);
  Bytes second = record;  // counts for nothing
  constexpr size_t kOrientationAt = 10 + 8 + 2 + 8;
  second[kOrientationAt] = second[kOrientationAt + 1] = 9;
  return joined(joined(joined({0xFF, 0xD8}, other), joined(record, second)), Bytes(jpeg.begin() + 2, jpeg.end()));
}

// A picture whose quarters are four greys, as cameras store it in each of eight ways.
TEST_F(CliFormats, CameraPicturesComeUpright) {
  Bytes dib = with_header_changed(plain(32, 16, 8, 0),
                                  [](BITMAPINFOHEADER& header) { header.biXPelsPerMeter = header.biYPelsPerMeter = 0; });
  const auto rows = dib.end() - 32 * 16;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 32; ++x) rows[32 * y + x] = static_cast<uint8_t>((y >= 8 ? 0 : 128) + (x >= 16 ? 64 : 0));
  const std::string in = put("in.bmp", bitmap_file(dib));
  const char* quarters[] = {"", "0123", "1032", "3210", "2301", "0213", "2031", "3120", "1302"};  // top left, top right, ...
  ASSERT_EQ(run({"convert", in, at("plain.jpg"), "--quality", "100"}), 0) << err_;
  for (uint8_t orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(int{orientation});
    const std::string file = put("exif.jpg", with_exif(read_file(at("plain.jpg")), orientation, orientation % 2 == 0));
    ASSERT_EQ(run({"convert", file, at("out.bmp"), "--overwrite"}), 0) << err_;
    const Bytes out = dib_at("out.bmp");
    const BITMAPINFOHEADER header = header_of(out);
    const bool is_turned = orientation >= 5;
    EXPECT_EQ(header.biWidth, is_turned ? 16 : 32);
    EXPECT_EQ(header.biXPelsPerMeter, is_turned ? 4724 : 9449);
    std::string found;
    for (const int y : {static_cast<int>(header.biHeight) - 4, 3})
      for (const int x : {3, static_cast<int>(header.biWidth) - 4})
        found += static_cast<char>('0' + (color_at(out, x, y).rgbRed + 8) / 64);
    EXPECT_EQ(found, quarters[orientation]);
    ASSERT_EQ(run({"info", file, "--json"}), 0) << err_;
    EXPECT_THAT(out_.str(),
                HasSubstr(is_turned ? "\"width\": 16,\n    \"height\": 32" : "\"width\": 32,\n    \"height\": 16"));
  }
}

TEST_F(CliFormats, CompressionIsAsRequested) {
  const std::string in = put("in.bmp", bitmap_file(noise(64, 64, 24)));
  const struct {
    const char *file, *word, *stated;
  } rows[] = {{"a.tga", "none", "none"}, {"b.tga", "rle", "run-length"},    {"c.tif", "none", "none"},
              {"d.tif", "lzw", "LZW"},   {"e.tif", "packbits", "PackBits"}, {"f.tif", "deflate", "deflate"}};
  for (const auto& row : rows) {
    ASSERT_EQ(run({"convert", in, at(row.file), "--compression", row.word}), 0) << err_;
    ASSERT_EQ(run({"info", at(row.file)}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr(std::string("compression  ") + row.stated + "\n")) << row.file;
  }
}

TEST_F(CliFormats, JpegFilesAreAsRequested) {
  const std::string in = put("in.bmp", bitmap_file(noise(64, 64, 24)));
  const auto bytes_of_file = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"convert", in, at("out.jpg"), "--overwrite"});
    EXPECT_EQ(run(options), 0) << err_;
    return read_file(at("out.jpg"));
  };
  const Bytes usual = bytes_of_file({}), good = bytes_of_file({"--quality", "95"}),
              progressive = bytes_of_file({"--progressive"});
  EXPECT_EQ(bytes_of_file({"--quality", "75"}), usual);
  EXPECT_GT(good.size(), usual.size() * 3 / 2);
  const auto has_marker = [](const Bytes& file, uint8_t marker) {
    const Bytes start = {0xFF, marker, 0, 17};  // a frame of three components
    return std::search(file.begin(), file.end(), start.begin(), start.end()) != file.end();
  };
  EXPECT_TRUE(has_marker(usual, 0xC0) && has_marker(progressive, 0xC2));
  ASSERT_EQ(run({"run", in, at("gray.jpg"), "gray --weighted"}), 0) << err_;
  ASSERT_EQ(run({"info", at("gray.jpg")}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("8 bits per pixel"));
  expect_refused({{{"convert", in, at("o.png"), "--quality", "9"}, 2, "only JPEG files have a quality"},
                  {{"convert", in, at("o.png"), "--progressive"}, 2, "only JPEG files can be progressive"}});
}

// What "info" tells is what loading gives, though it decodes no rows: a file without its last ones is described too.
TEST_F(CliFormats, PicturesAreDescribedWithoutTheirRows) {
  put("bits.bmp", bitmap_file(bilevel(300, 200)));
  put("gray.bmp", bitmap_file(with_header_changed(plain(300, 200, 8, 9), [](BITMAPINFOHEADER& header) {
        header.biXPelsPerMeter = header.biYPelsPerMeter = 11811;
      })));
  put("true.bmp", bitmap_file(noise(300, 200, 24)));
  for (const std::string ending : {"tif", "png", "jpg", "pcx", "dcx", "tga"})
    for (const std::string kind : {"bits", "gray", "true"}) {
      SCOPED_TRACE(kind + "." + ending);
      const std::string file = at(kind + "." + ending);
      ASSERT_EQ(run({"convert", at(kind + ".bmp"), file}), 0) << err_;
      ASSERT_EQ(run({"info", file, "--json"}), 0) << err_;
      const std::string told = out_.str();
      ASSERT_EQ(run({"convert", file, at("back.bmp"), "--overwrite"}), 0) << err_;
      const BITMAPINFOHEADER header = header_of(dib_at("back.bmp"));
      for (const auto& [name, value] : {std::pair("width", header.biWidth), std::pair("height", header.biHeight),
                                        std::pair("depth", decltype(header.biWidth){header.biBitCount})})
        EXPECT_THAT(told, HasSubstr("\"" + std::string(name) + "\": " + std::to_string(value) + ","));
      const std::string resolution = header.biXPelsPerMeter == 0 ? "null" : std::to_string(header.biXPelsPerMeter);
      EXPECT_THAT(told, HasSubstr("\"xPixelsPerMetre\": " + resolution));
      if (ending != "png" && ending != "jpg") continue;  // others are measured, or end in a directory or table
      Bytes bytes = read_file(file);
      bytes.resize(bytes.size() - std::min<size_t>(bytes.size() / 4, 64));
      EXPECT_EQ(run({"info", put("cut." + ending, bytes)}), 0) << err_;
    }
}

// Metafiles, clipboard files and texts. Where nothing draws them, the tool says so.
TEST_F(CliFormats, WhatIsDrawnNeedsWindows) {
  const std::string in = put("in.bmp", bitmap_file(bilevel(48, 24)));
  const std::string text = put("text.txt", {'o', 'n', 'e', 13, 10, 0x84});
#ifdef _WIN32
  for (const std::string ending : {"wmf", "emf", "clp"}) {
    const std::string file = at("file." + ending);
    ASSERT_EQ(run({"convert", in, file}), 0) << err_;
    ASSERT_EQ(run({"info", file}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr("48 x 24 pixels"));
    ASSERT_EQ(run({"convert", file, at("back.bmp"), "--overwrite"}), 0) << err_;
    const Bytes back = dib_at("back.bmp");
    EXPECT_EQ(header_of(back).biWidth, 48);
    if (ending == "emf") continue;  // drawn a pixel smaller
    EXPECT_EQ(largest_difference(back, bilevel(48, 24)), 0) << ending;
  }
  put("odd.bmp", bitmap_file(bilevel(33, 21)));
  EXPECT_EQ(run({"convert", at("odd.bmp"), at("odd.emf")}), 0) << "one pixel is lost";
  ASSERT_EQ(run({"text", text, at("ansi.bmp")}), 0) << err_;
  ASSERT_EQ(run({"text", text, at("oem.bmp"), "--oem"}), 0) << err_;
  EXPECT_EQ(header_of(dib_at("oem.bmp")).biHeight, 32);
  EXPECT_NE(dib_at("oem.bmp"), dib_at("ansi.bmp"));
  EXPECT_EQ(run({"text", put("long.txt", Bytes(40'000, 13)), at("long.bmp")}), 6);
  EXPECT_THAT(err_, HasSubstr("split the file"));
  put("damaged.wmf", {0xD7, 0xCD, 0xC6, 0x9A});
  EXPECT_EQ(run({"info", at("damaged.wmf")}), 3);
#else
  put("a.wmf", {0xD7, 0xCD, 0xC6, 0x9A});
  const std::pair<std::vector<std::string>, int> calls[] = {
      {{"convert", in, at("b.emf")}, 4}, {{"info", at("a.wmf")}, 4}, {{"text", text, at("text.png")}, 2}};
  for (const auto& [arguments, code] : calls) {
    EXPECT_EQ(run(arguments), code);
    EXPECT_THAT(err_, HasSubstr("use the Windows build of this tool, vorel.exe"));
  }
#endif
}

TEST_F(CliFormats, PagesAreCountedSplitAndJoined) {
  put("a.bmp", bitmap_file(bilevel(5, 4)));
  put("b.bmp", bitmap_file(noise(6, 4, 8)));
  ASSERT_EQ(run({"pages", "join", at("a.bmp"), at("b.bmp"), at("two.tif")}), 0) << err_;
  ASSERT_EQ(run({"pages", "join", at("two.tif"), at("a.bmp"), at("two.tif"), at("five.tif")}), 0) << err_;
  ASSERT_EQ(run({"pages", "count", at("five.tif")}), 0) << err_;
  EXPECT_EQ(out_.str(), "5\n");
  ASSERT_EQ(run({"info", at("five.tif"), "--page", "4", "--json"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("\"pages\": 5,\n    \"page\": 4,\n    \"width\": 5,"));
  EXPECT_THAT(out_.str(), HasSubstr("\"compression\": \"Group 4\""));
  ASSERT_EQ(run({"pages", "split", at("five.tif"), at("page.png")}), 0) << err_;
  for (int page = 1; page <= 5; ++page) EXPECT_TRUE(fs::exists(at("page-" + std::to_string(page) + ".png")));
  ASSERT_EQ(run({"convert", at("page-5.png"), at("back.bmp")}), 0) << err_;
  EXPECT_EQ(largest_difference(dib_at("back.bmp"), noise(6, 4, 8)), 0);
  EXPECT_EQ(run({"pages", "count", at("a.bmp"), at("missing.tif"), at("two.tif")}), 1);
  EXPECT_EQ(out_.str(), "1 " + at("a.bmp") + "\n2 " + at("two.tif") + "\n");
}

// No page is lost without a word.
TEST_F(CliFormats, AllPagesGoThroughEveryVerb) {
  for (const int width : {5, 6, 7}) put(std::to_string(width) + ".bmp", bitmap_file(bilevel(width, 4)));
  const std::string three = at("three.tif"), out = at("out.tif");
  ASSERT_EQ(run({"pages", "join", at("5.bmp"), at("6.bmp"), at("7.bmp"), three}), 0) << err_;
  const auto heights_of = [&](const std::string& file) {
    std::string heights;
    for (const std::string page : {"1", "2", "3", "4"}) {
      if (run({"info", file, "--page", page, "--json"}) != 0) break;
      heights += out_.str().substr(out_.str().find("\"height\": ") + 10, 1);
    }
    return heights;
  };
  ASSERT_EQ(run({"rotate", three, out, "90"}), 0) << err_;
  EXPECT_EQ(heights_of(out), "567");
  ASSERT_EQ(run({"rotate", three, at("out.dcx"), "90", "--page", "3,1-2"}), 0) << err_;
  EXPECT_EQ(heights_of(at("out.dcx")), "756");
  ASSERT_EQ(run({"clean", three, out, "60", "--overwrite"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr(three + ", page 3: "));
  ASSERT_EQ(run({"combine", three, at("5.bmp"), out, "--overwrite"}), 0) << err_;
  EXPECT_EQ(heights_of(out), "444");
  ASSERT_EQ(run({"cut", three, at("above.tif"), at("below.tif"), "1"}), 0) << err_;
  EXPECT_EQ(heights_of(at("above.tif")) + heights_of(at("below.tif")), "111333");
  ASSERT_EQ(run({"histogram", three, "--json"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("page 3"));
  ASSERT_EQ(run({"convert", three, at("page.png"), "--numbered"}), 0) << err_;
  EXPECT_TRUE(fs::exists(at("page-3.png")));
  ASSERT_EQ(run({"rotate", three, three, "90", "--overwrite"}), 0) << err_;
  EXPECT_EQ(heights_of(three), "567");
  expect_refused({{{"convert", three, at("one.png")}, 2, "3 pages do not go into one PNG file"},
                  {{"convert", three, at("one.png"), "--page", "2-5"}, 2, "does not list pages of it"},
                  {{"convert", three, three, "--page", "2", "--overwrite"}, 2, "more pages than those chosen"},
                  {{"combine", at("5.bmp"), three, out, "--overwrite"}, 2, "BASE has 1"}});
}

TEST(ProgramPages, AreListedAsTheyAreWritten) {
  using Pages = std::vector<int>;
  const struct {
    const char* text;
    std::optional<Pages> pages;
  } cases[] = {
      {"1-3,5", Pages{1, 2, 3, 5}},
      {" 2 , 1, 2", Pages{2, 1, 2}},
      {"4-", Pages{4, 5}},
      {"", Pages{1, 2, 3, 4, 5}},
      {"5-5", Pages{5}},
      {"6", {}},
      {"4-6", {}},
      {"0", {}},
      {"3-2", {}},
      {"1,", {}},
      {"-2", {}},
      {"1-2-3", {}},
      {"two", {}},
      {"99999999999999999999", {}},
  };
  for (const auto& row : cases) EXPECT_EQ(vorel::programs::parse_page_range(row.text, 5), row.pages) << row.text;
}

// Its first bytes are those of a plain metafile, but the name says what it is.
TEST_F(CliFormats, RunLengthTgaWithColoursIsKnownByItsName) {
  const Bytes header = {0, 1, 9, 0, 0, 2, 0, 24, 0, 0, 0, 0, 3, 0, 1, 0, 8, 0};
  const Bytes colors = {1, 2, 3, 0xAA, 0xBB, 0xCC}, packets = {0x82, 1};
  const std::string in = put("in.tga", joined(joined(header, colors), packets));
  EXPECT_EQ(GetImageFormat(in.c_str()), IMG_FORMAT_METAFILE);
  ASSERT_EQ(run({"convert", in, at("out.bmp")}), 0) << err_;
  EXPECT_EQ(picture_of(dib_at("out.bmp")), "CCBBAA CCBBAA CCBBAA");
  EXPECT_EQ(run({"convert", in, at("out"), "--to", "tif"}), 0) << err_;
}

TEST_F(CliFormats, WhatDoesNotGoTogetherIsRefused) {
  const std::string gray = put("gray.bmp", bitmap_file(noise(9, 5, 8)));
  expect_refused(
      {{{"convert", gray, at("out.webp")}, 2, "--to with one of tiff"},
       {{"convert", gray, at("out.png"), "--compression", "lzw"}, 2, "PNG files have no compression"},
       {{"convert", gray, at("out.tga"), "--compression", "g4"}, 2, "TGA files have no compression"},
       {{"convert", gray, at("out.tif"), "--interlaced"}, 2, "only GIF files"},
       {{"convert", gray, at("out.tif"), "--compression", "g4"}, 4, "Group 4 compresses 1 bit"},
       {{"convert", gray, at("out.tif"), "--compression", "jpeg"}, 4, "JPEG compresses 24 bits per pixel and greys"},
       {{"convert", gray, at("out.cal")}, 4, "CALS raster holds 1 bit"},
       {{"convert", gray, at("out.png"), "--page", "2"}, 2, "there is no page 2; the file has 1 page"},
       {{"convert", gray, at("out.png"), "--page", "0"}, 2, "there is no page 0"},
       {{"pages", "join", gray}, 2, "nothing to join"},
       {{"pages", "join", gray, at("out.png")}, 2, "--to tiff"},
       {{"pages", "split", gray, "-", "--to", "png"}, 2, "give OUT a name"},
       {{"pages"}, 2, "pages --help"}});
}

TEST_F(CliFormats, DamagedFilesAreRefused) {
  put("in.bmp", bitmap_file(bilevel(200, 100)));
  for (const std::string ending : {"tif", "png", "gif", "pcx", "dcx", "tga", "jpg"}) {
    const std::string file = at("file." + ending);
    ASSERT_EQ(run({"convert", at("in.bmp"), file}), 0) << err_;
    Bytes bytes = read_file(file);
    bytes.resize(bytes.size() / 2);
    write_file(file, bytes);
    EXPECT_EQ(run({"convert", file, at("out.bmp")}), 4) << ending;
    EXPECT_FALSE(fs::exists(at("out.bmp"))) << ending;
  }
}

TEST_F(CliFormats, RunLengthCodesBehindAShortTableAreExpanded) {
  BITMAPINFOHEADER header = header_for(4, 1, 8);
  header.biCompression = BI_RLE8;
  header.biSizeImage = 6;
  header.biClrUsed = 2;
  const Bytes codes = {9, 8, 7, 0, 60, 50, 40, 0, 3, 0, 1, 1, 0, 1};
  put("rle.bmp", bitmap_file(with_header(header, codes)));
  ASSERT_EQ(run({"convert", at("rle.bmp"), at("out.png")}), 0) << err_;
  ASSERT_EQ(run({"convert", at("out.png"), at("out.bmp")}), 0) << err_;
  EXPECT_EQ(color_at(dib_at("out.bmp"), 2, 0).rgbRed, 7);
  EXPECT_EQ(color_at(dib_at("out.bmp"), 3, 0).rgbBlue, 60);
}

// The tool in a folder of its own, where the library has no modules beside it but a saver of PNG files that writes eight bytes and
// reports success.
TEST_F(CliFormats, MissingAndFalseModulesAreReported) {
#ifdef _WIN32
  const std::string tool = "vorel.exe";
#else
  const std::string tool = "vorel";
#endif
  for (const std::string& file : {tool, std::string(VOREL_FILE_NAME)}) fs::copy_file(program_folder() / file, at(file));
  for (const auto& [built, name] : {std::pair("FALSE_SAVER", "WERT"), std::pair("WERT32", "WERT32")})
    fs::copy_file(program_folder() / (std::string(built) + kModuleEnding), at(std::string(name) + kModuleEnding));
  const std::string gif = put("in.gif", {'G', 'I', 'F', '8', '9', 'a'});
  const std::string bmp = put("in.bmp", bitmap_file(noise(5, 5, 8)));
  const auto exit_code = [&](const std::string& arguments) {
    const int result = std::system((at(tool) + " " + arguments + " 2>" + at("errors.txt")).c_str());
#ifdef _WIN32
    return result;
#else
    return WEXITSTATUS(result);
#endif
  };
  for (const std::string& arguments : {"info " + gif, "convert " + bmp + " " + at("out.gif")}) {
    EXPECT_EQ(exit_code(arguments), 7) << arguments;
    const Bytes said = read_file(at("errors.txt"));
    EXPECT_THAT(std::string(said.begin(), said.end()), HasSubstr("is missing or does not load; put it beside the library"));
  }
  EXPECT_EQ(exit_code("convert " + bmp + " " + at("out.bmp")), 0);
  EXPECT_EQ(exit_code("convert " + bmp + " " + at("out.png")), 5);
  EXPECT_FALSE(fs::exists(at("out.gif")) || fs::exists(at("out.png")));
}

}  // namespace
