// The verbs that move, scale, cut and combine pictures.
#include <functional>

#include "cli/paper.h"
#include "cli_fixture.h"

using namespace test;
using testing::HasSubstr;

namespace {

constexpr int kDepths[] = {1, 4, 8, 24};

std::pair<int, int> extent_of(const BITMAPINFOHEADER& header) { return {header.biWidth, header.biHeight}; }

struct Place {
  int x, y;
};

// Whether each pixel of a result, counted from the top left, is that of a source at the place that `from` tells.
void expect_pixels(const Bytes& result, const Bytes& source, int width, int height,
                   const std::function<Place(int, int)>& from) {
  const BITMAPINFOHEADER header = header_of(result);
  ASSERT_EQ(extent_of(header), std::pair(width, height));
  EXPECT_EQ(header.biSizeImage, stride_of(width, header.biBitCount) * static_cast<size_t>(height));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const Place place = from(x, y);
      ASSERT_EQ(pixel(result, x, height - 1 - y), pixel(source, place.x, header_of(source).biHeight - 1 - place.y))
          << x << ' ' << y;
    }
}

using CliGeometry = Cli;

TEST_F(CliGeometry, AnyAngle) {
  const Bytes paper = plain(40, 20, 1, 0xFF);
  for (const char* degrees : {"30", "-330"}) {
    const Bytes turned = changed({"rotate", degrees}, paper);
    const BITMAPINFOHEADER header = header_of(turned);
    EXPECT_EQ(extent_of(header), std::pair(44, 38));
    EXPECT_EQ(color_at(turned, 0, 0).rgbRed, 0) << "a corner that nothing covers";
    EXPECT_EQ(color_at(turned, 22, 19).rgbRed, 255);
    // Clockwise: the left upper corner of the paper is what lies highest.
    EXPECT_EQ(color_at(turned, 11, 36).rgbRed, 255);
  }
  for (const int depth : kDepths) {
    const Bytes white = changed({"rotate", "30", "--white"}, plain(40, 20, depth, 0));
    EXPECT_EQ(color_at(white, 0, 0).rgbRed, 255) << depth;
    EXPECT_EQ(color_at(white, 22, 19).rgbRed, 0) << depth;
  }
  const Bytes source = noise(9, 5, 8);
  expect_pixels(changed({"rotate", "360"}, source), source, 9, 5, [](int x, int y) { return Place{x, y}; });
}

// Of the left half white, of the right half black, turned by a hair: greys are mixed along the edge, and nothing else.
TEST_F(CliGeometry, FractionsOfDegreesMixPixels) {
  Bytes halves = plain(40, 20, 8, 0xFF);
  for (size_t y = 0; y < 20; ++y) std::fill_n(halves.end() - static_cast<long>(40 * y) - 20, 20, uint8_t{0});
  const Bytes turned = changed({"rotate", "1.25", "--white"}, halves);
  int mixed = 0;
  for (int y = 0; y < header_of(turned).biHeight; ++y)
    for (int x = 0; x < header_of(turned).biWidth; ++x) {
      const int level = color_at(turned, x, y).rgbRed;
      mixed += level != 0 && level != 255 ? 1 : 0;
    }
  EXPECT_THAT(mixed, testing::AllOf(testing::Gt(20), testing::Lt(120)));
  EXPECT_EQ(changed({"rotate", "360.0"}, halves), changed({"rotate", "0"}, halves));
}

TEST_F(CliGeometry, Skew) {
  const Bytes black = plain(10, 4, 1, 0);
  const Bytes right = changed({"skew", "horizontal", "4", "--white"}, black);
  EXPECT_EQ(header_of(right).biWidth, 14);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 14; ++x) EXPECT_EQ(color_at(right, x, y).rgbRed, x >= y && x < y + 10 ? 0 : 255) << x << ' ' << y;
  EXPECT_EQ(header_of(changed({"skew", "vertical", "-3"}, black)).biHeight, 7);
}

// Against the definition, a pixel at a time: parts of 1/12 across and 1/10 down.
TEST_F(CliGeometry, ReducingWeighsByArea) {
  constexpr int kWidth = 12, kHeight = 10, kNewWidth = 5, kNewHeight = 3;
  const auto weight = [](int from, int before, int to, int after) {
    return std::max(0, std::min((from + 1) * after, (to + 1) * before) - std::max(from * after, to * before));
  };
  for (const int depth : {1, 8, 24}) {
    Bytes dib = noise(kWidth, kHeight, depth);
    if (depth <= 8) std::copy_n(plain(kWidth, kHeight, depth, 0).begin() + 40, size_t{4} << depth, dib.begin() + 40);
    const Bytes small = changed({"scale", "5x3"}, dib);
    for (int y = 0; y < kNewHeight; ++y)
      for (int x = 0; x < kNewWidth; ++x) {
        int sum = 0;
        for (int v = 0; v < kHeight; ++v)
          for (int u = 0; u < kWidth; ++u)
            sum += weight(u, kWidth, x, kNewWidth) * weight(v, kHeight, y, kNewHeight) * color_at(dib, u, v).rgbGreen;
        constexpr int kWhole = kWidth * kHeight;
        const int expected = depth == 1 ? (sum > kWhole * 255 / 2 ? 255 : 0) : (sum + kWhole / 2) / kWhole;
        EXPECT_EQ(color_at(small, x, y).rgbGreen, expected) << depth << ' ' << x << ' ' << y;
      }
  }
  EXPECT_EQ(header_of(changed({"scale", "50%", "--gray"}, plain(20, 20, 1, 0x55))).biBitCount, 8);
  EXPECT_EQ(color_at(changed({"scale", "50%", "--gray"}, plain(20, 20, 1, 0x55)), 3, 3).rgbRed, 128);
  EXPECT_EQ(color_at(changed({"scale", "50%"}, plain(20, 20, 1, 0x55)), 3, 3).rgbRed, 0) << "the darker half";
}

TEST_F(CliGeometry, Scale) {
  const struct {
    std::vector<std::string> arguments;
    int width, height;
  } rows[] = {{{"50%"}, 50, 20},
              {{"1%"}, 1, 1},
              {{"33x44"}, 33, 44},
              {{"50x50", "--fit"}, 50, 20},
              {{"500x50", "--fit", "--method", "cubic"}, 125, 50},
              {{"200%", "--method", "nearest"}, 200, 80}};
  for (const auto& row : rows)
    for (const int depth : kDepths) {
      std::vector<std::string> arguments = row.arguments;
      arguments.insert(arguments.begin(), "scale");
      const Bytes scaled = changed(arguments, noise(100, 40, depth));
      EXPECT_EQ(extent_of(header_of(scaled)), std::pair(row.width, row.height));
      EXPECT_EQ(header_of(scaled).biBitCount, depth);
    }
  for (const int depth : kDepths) {
    const Bytes source = noise(7, 5, depth);
    const Bytes larger = changed({"scale", "300%", "--method", "nearest"}, source);
    // Rounded to nearest, so that a pixel begins half of it early.
    const auto of = [](int at, int count) { return std::min(count - 1, (2 * at + 3) / 6); };
    expect_pixels(larger, source, 21, 15, [&](int x, int y) { return Place{of(x, 7), of(y, 5)}; });
  }
}

TEST_F(CliGeometry, CutAndCrop) {
  for (const int depth : kDepths) {
    const Bytes source = noise(33, 9, depth);
    const std::string in = put("in.bmp", bitmap_file(source));
    ASSERT_EQ(run({"cut", in, at("above.bmp"), at("below.bmp"), "4", "--overwrite"}), 0) << err_;
    expect_pixels(dib_at("above.bmp"), source, 33, 4, [](int x, int y) { return Place{x, y}; });
    expect_pixels(dib_at("below.bmp"), source, 33, 5, [](int x, int y) { return Place{x, y + 4}; });
    for (const auto& [corner, size, left, top, width, height] :
         {std::tuple("3,2", "17x5", 3, 2, 17, 5), std::tuple("0,0", "33x1", 0, 0, 33, 1),
          std::tuple("32,8", "1x1", 32, 8, 1, 1)}) {
      const Bytes piece = changed({"crop", corner, size}, source);
      expect_pixels(piece, source, width, height, [&](int x, int y) { return Place{x + left, y + top}; });
    }
  }
}

TEST_F(CliGeometry, Combine) {
  const auto combined = [&](const Bytes& base, const Bytes& overlay, std::vector<std::string> options) {
    std::vector<std::string> arguments = {"combine", put("base.bmp", bitmap_file(base)),
                                          put("overlay.bmp", bitmap_file(overlay)), at("out.bmp"), "--overwrite"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(run(arguments), 0) << err_;
    return picture_of(dib_at("out.bmp"));
  };
  // Two pixels, black and white, in every way they can meet.
  const auto pair = [](uint8_t bits) { return plain(4, 1, 1, bits); };
  const auto picture = [&](const char* text) {
    std::string whole;
    for (; *text != 0; ++text) whole.append(whole.empty() ? "" : " ").append(*text == '1' ? "FFFFFF" : "000000");
    return whole;
  };
  put("mask.bmp", bitmap_file(pair(0x60)));
  const std::vector<std::string> mask = {"--mask", at("mask.bmp")};
  const auto with_mask = [&](const char* mode) { return std::vector<std::string>{"--mode", mode, mask[0], mask[1]}; };
  EXPECT_EQ(combined(pair(0x30), pair(0x50), {}), picture("0101"));
  EXPECT_EQ(combined(pair(0x30), pair(0x50), {"--mode", "or"}), picture("0111"));
  EXPECT_EQ(combined(pair(0x30), pair(0x50), {"--mode", "xor"}), picture("0110"));
  EXPECT_EQ(combined(pair(0x30), pair(0x50), with_mask("replace")), picture("0101"));
  EXPECT_EQ(combined(pair(0x90), pair(0x50), with_mask("xor")), picture("1101"));
  EXPECT_EQ(combined(pair(0x00), pair(0xF0), {"--at", "2,0"}), picture("0011"));
  EXPECT_EQ(combined(pair(0x00), pair(0xF0), {"--at=-3,0"}), picture("1000"));
  for (const char* outside : {"--at=0,1", "--at=-4,0", "--at=2147483647,0", "--at=-2147483648,0", "--at=0,-2147483648"})
    EXPECT_EQ(combined(pair(0x00), pair(0xF0), {outside}), picture("0000")) << outside;
  // Other colours: at 24 bits.
  EXPECT_EQ(combined(plain(2, 1, 4, 0x33), plain(1, 1, 24, 0x77), {}), "777777 333333");
  EXPECT_EQ(run({"combine", at("base.bmp"), at("overlay.bmp"), at("out.bmp"), "--overwrite", mask[0], mask[1]}), 4);
  EXPECT_THAT(err_, HasSubstr("as large as"));
}

// A picture of 8 bits whose table is white, red, black and no more.
Bytes short_table(int width, int height, uint8_t index) {
  BITMAPINFOHEADER header = header_for(width, height, 8);
  header.biClrUsed = 3;
  return with_header(header, joined({255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 0, 0},
                                    Bytes(stride_of(width, 8) * static_cast<size_t>(height), index)));
}

TEST_F(CliGeometry, ColoursOfOddTables) {
  const Bytes black = bitmap_file(short_table(8, 4, 2));
  const auto red_of = [](const Bytes& dib, int x, int y) { return color_at(dib, x, y).rgbRed; };
  EXPECT_EQ(red_of(dib_in(converted({"scale", "16x8"}, black)), 0, 0), 0);
  EXPECT_EQ(red_of(dib_in(converted({"rotate", "45", "--white"}, black)), 0, 0), 255);
  const Bytes paper = bitmap_file(short_table(8, 4, 0));
  EXPECT_EQ(red_of(dib_in(converted({"rotate", "45"}, paper)), 0, 0), 0);
  // What only fills up rows does not come to light.
  Bytes padded = plain(5, 2, 1, 0);
  padded[48] = padded[52] = 0x07;
  const Bytes skewed = changed({"skew", "horizontal", "6"}, padded);
  EXPECT_EQ(picture_of(skewed).find('F'), std::string::npos);
  // Numbers that no colour stands for.
  put("overlay.bmp", bitmap_file(short_table(8, 4, 1)));
  ASSERT_EQ(run({"combine", put("base.bmp", black), at("overlay.bmp"), at("out.bmp"), "--overwrite", "--mode", "or"}), 0)
      << err_;
  EXPECT_EQ(red_of(dib_at("out.bmp"), 0, 0), 255);
}

TEST_F(CliGeometry, NothingIsLostByWritingInPlace) {
  const Bytes file = bitmap_file(noise(9, 6, 8));
  const std::string in = put("in.bmp", file);
  EXPECT_EQ(run({"cut", in, in, at("missing/below.bmp"), "3", "--overwrite"}), 5);
  EXPECT_EQ(read_file(in), file);
  EXPECT_EQ(run({"cut", in, at("same.bmp"), at("same.bmp"), "3"}), 2);
  const std::string pages = at("pages.tif");
  ASSERT_EQ(run({"pages", "join", in, in, pages}), 0) << err_;
  const Bytes joined_pages = read_file(pages);
  EXPECT_EQ(run({"rotate", pages, pages, "90", "--page", "2", "--overwrite"}), 2);
  EXPECT_EQ(read_file(pages), joined_pages);
}

// A standard fax has 204 x 98 dots to the inch.
TEST_F(CliGeometry, SizesOnPaperStay) {
  Bytes fax = with_header_changed(plain(102, 49, 1, 0xFF), [](BITMAPINFOHEADER& header) {
    header.biXPelsPerMeter = 8031;
    header.biYPelsPerMeter = 3858;
  });
  const struct {
    std::vector<std::string> arguments;
    int x, y;
  } rows[] = {{{"rotate", "1"}, 7985, 3904},
              {{"rotate", "-1"}, 7985, 3904},
              {{"rotate", "179"}, 7985, 3904},
              {{"rotate", "45"}, 5945, 5945},
              {{"rotate", "89"}, 3904, 7985},
              {{"rotate", "90"}, 3858, 8031},
              {{"rotate", "180"}, 8031, 3858},
              {{"scale", "204x49"}, 16062, 3858},
              {{"scale", "50%", "--keep-dpi"}, 8031, 3858},
              {{"convert", "--dpi", "300x150"}, 11811, 5906}};
  for (const auto& row : rows) {
    const BITMAPINFOHEADER header = header_of(changed(row.arguments, fax));
    EXPECT_EQ((std::pair<int, int>(header.biXPelsPerMeter, header.biYPelsPerMeter)), std::pair(row.x, row.y))
        << row.arguments[0] << ' ' << row.arguments[1];
  }
  const BITMAPINFOHEADER square = header_of(changed({"scale", "--dpi", "200"}, fax));
  EXPECT_EQ(extent_of(square), std::pair(100, 100));
  EXPECT_EQ(square.biXPelsPerMeter, square.biYPelsPerMeter);
}

using vorel::cli::fitted;
using vorel::cli::Paper;
using vorel::cli::PaperLayout;
using vorel::cli::PaperSizing;

TEST(CliPaper, ShrinksTurnsAndTellsWhatIsCut) {
  const Paper paper = {{100, 100}, {700, 1000}};  // 7 x 10 inches
  const struct {
    const char* name;
    int width, height, per_metre;  // of the picture
    PaperLayout layout;
    int shown_width, shown_height, shown_per_metre;
    const char* cut;
  } rows[] = {
      {"small", 300, 200, 3937, {}, 300, 200, 3937, ""},
      {"exact", 700, 1000, 3937, {}, 700, 1000, 3937, ""},
      {"wide, whole once turned", 1000, 700, 3937, {}, 700, 1000, 3937, ""},
      {"wide, upright", 1400, 100, 3937, {.may_turn = false}, 1400, 100, 7875, ""},
      {"large", 1400, 2000, 3937, {}, 1400, 2000, 7875, ""},
      {"without resolution", 1400, 2000, 0, {}, 1400, 2000, 7875, ""},
      {"a dot a pixel", 350, 500, 50, {.by_printer_dots = true}, 350, 500, 0, ""},
      {"cut", 700, 1100, 3937, {.sizing = PaperSizing::kTrueSize}, 700, 1100, 3937, "25 mm of its height"},
      {"fit turns", 200, 100, 3937, {.sizing = PaperSizing::kFit}, 100, 200, 3937, ""},
      {"stretch does not", 200, 100, 3937, {.sizing = PaperSizing::kStretch}, 200, 100, 3937, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const vorel::DibHeader header{
        .width = row.width, .height = row.height, .depth = 24, .x_per_metre = row.per_metre, .y_per_metre = row.per_metre};
    const auto shown = fitted(vorel::programs::Picture::blank(header), row.layout, paper);
    EXPECT_EQ(std::pair(shown.picture.width(), shown.picture.height()), std::pair(row.shown_width, row.shown_height));
    EXPECT_EQ(shown.picture.header().x_per_metre, row.shown_per_metre);
    EXPECT_EQ(shown.cut, row.cut);
  }
}

TEST_F(CliGeometry, Refusals) {
  const std::string in = put("in.bmp", bitmap_file(noise(10, 8, 8))), out = at("out.bmp");
  expect_refused({{{"rotate", in, out, "1,5"}, 2, "rotate --help"},
                  {{"skew", in, out, "horizontal", "2000000000"}, 6, "memory"},
                  {{"scale", in, out, "0x5"}, 2, "640x480"},
                  {{"scale", in, out, "-5%"}, 2, "scale --help"},
                  {{"scale", in, out, "70000x1"}, 6, "65535"},
                  {{"scale", in, out, "50%", "--fit"}, 2, "leave --fit out"},
                  {{"cut", in, out, at("out2.bmp"), "8"}, 2, "from 1 to 7"},
                  {{"cut", in, out, at("out2.bmp"), "0"}, 2, "from 1 to 7"},
                  {{"crop", in, out, "5,0", "6x1"}, 2, "10 x 8"},
                  {{"crop", in, out, "-1,0", "6x1"}, 2, "reaches outside"},
                  {{"combine", in, at("none.bmp"), out}, 3, "no such file"}});
}

}  // namespace
