// The verbs that change tones and colours.
#include "cli_fixture.h"

using namespace test;
using testing::HasSubstr;

namespace {

using CliTone = Cli;

TEST_F(CliTone, EachVerbOnConstantPictures) {
  const struct {
    std::vector<std::string> arguments;
    int depth;
    uint8_t byte;
    int result_depth, result;  // red of every pixel
  } rows[] = {{{"tone", "--brightness", "100"}, 24, 60, 24, 188},
              {{"tone", "--contrast", "100"}, 8, 150, 8, 172},
              {{"lut", "--brightness", "-30"}, 8, 100, 8, 70},
              {{"lut", "--contrast", "-255", "--square", "0,0"}, 8, 90, 8, 90},
              {{"filter", "blur"}, 8, 77, 8, 77},
              {{"filter", "box", "--size", "7"}, 24, 77, 24, 77},
              {{"filter", "kernel", "--kernel", "0,0,0,0,2,0,0,0,0,4"}, 8, 100, 8, 50},
              {{"filter", "sharpen"}, 24, 9, 24, 9},
              {{"gray"}, 24, 33, 8, 33},
              {{"gray"}, 4, 0x33, 4, 0x33},
              {{"gray"}, 1, 0xFF, 8, 255},
              {{"gray", "--smooth", "2"}, 1, 0, 8, 0},
              {{"expand"}, 8, 44, 24, 44},
              {{"expand"}, 1, 0xFF, 24, 255}};
  for (const auto& row : rows) {
    const Bytes result = changed(row.arguments, plain(9, 7, row.depth, row.byte));
    ASSERT_EQ(header_of(result).biBitCount, row.result_depth) << row.arguments[0];
    for (int y = 0; y < 7; ++y)
      for (int x = 0; x < 9; ++x) EXPECT_EQ(color_at(result, x, y).rgbRed, row.result) << row.arguments[0] << x << y;
  }
}

TEST_F(CliTone, KernelsFromFilesAndColoursBeyondGreys) {
  const std::string in = put("in.bmp", bitmap_file(noise(12, 9, 8))),
                    kernel = put("kernel.txt",
                                 {'1', ' ', '1', ' ', '1', '\n', '1', ',', '1', ',', '1', '\n', '1', ' ', '1', ' ', '1'});
  EXPECT_EQ(run({"filter", in, at("own.bmp"), "kernel", "--kernel", kernel}), 0) << err_;
  EXPECT_EQ(run({"filter", in, at("box.bmp"), "box"}), 0) << err_;
  EXPECT_EQ(read_file(at("own.bmp")), read_file(at("box.bmp")));
  EXPECT_EQ(header_of(dib_at("box.bmp")).biBitCount, 24);
}

TEST_F(CliTone, Histogram) {
  Bytes dib = plain(10, 10, 8, 50);
  dib[40 + 1024] = 200;
  const std::string in = put("in.bmp", bitmap_file(dib));
  ASSERT_EQ(run({"histogram", in}), 0) << err_;
  EXPECT_THAT(out_.str(), testing::AllOf(HasSubstr("pixels  100\n"), HasSubstr("mean    51.50\n"), HasSubstr("     50   "),
                                         HasSubstr("    200   1\n")));
  ASSERT_EQ(run({"histogram", in, "--json", "--picture", at("bars.bmp")}), 0) << err_;
  EXPECT_THAT(out_.str(), testing::AllOf(testing::StartsWith("{"), HasSubstr("\"mean\": 51.5")));
  const Bytes bars = dib_at("bars.bmp");
  EXPECT_EQ(color_at(bars, 200, 0).rgbRed, 0) << "what occurs is seen";
  EXPECT_EQ(color_at(bars, 200, 5).rgbRed, 255);
  EXPECT_EQ(color_at(bars, 201, 0).rgbRed, 255);
}

TEST_F(CliTone, CleaningReports) {
  Bytes page = plain(40, 10, 1, 0xFF);
  page[48 + 8 * 5 + 2] = 0xF7;  // one black pixel
  const std::string in = put("page.bmp", bitmap_file(page)), out = at("clean.bmp");
  ASSERT_EQ(run({"clean", in, out, "60", "--dry-run"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("1 of 400 pixels would change"));
  EXPECT_FALSE(fs::exists(out));
  ASSERT_EQ(run({"clean", in, out, "60"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("1 of 400 pixels changed"));
  EXPECT_EQ(picture_of(dib_in(read_file(out))).find('0'), std::string::npos);
}

// Whichever bit stands for white: a lonely black pixel goes, an edge and a hole in black stay.
TEST_F(CliTone, GentleCleaningGoesByBlack) {
  for (const bool white_first : {false, true}) {
    Bytes page = plain(40, 10, 1, 0xFF);
    const auto rows = page.begin() + 48;
    rows[8 * 5 + 1] = 0xF7;
    for (int y = 0; y < 10; ++y) rows[8 * y + 3] = 0;
    rows[8 * 5 + 3] = 0x10;
    if (white_first) {
      for (auto byte = rows; byte != page.end(); ++byte) *byte = static_cast<uint8_t>(~*byte);
      std::swap_ranges(page.begin() + 40, page.begin() + 44, page.begin() + 44);
    }
    const Bytes cleaned_page = changed({"clean", "60", "--gentle"}, page);
    EXPECT_EQ(color_at(cleaned_page, 12, 5).rgbRed, 255) << "the speck";
    EXPECT_EQ(color_at(cleaned_page, 24, 5).rgbRed, 0) << "the edge";
    EXPECT_EQ(color_at(cleaned_page, 27, 5).rgbRed, 255) << "the hole";
  }
}

// By 30/59/11 the green is just lighter than the middle and the purple is not; by the greys' weights, 8/15/3, the reverse.
TEST_F(CliTone, HalftonesOfColoursGoByLuminance) {
  Bytes dib = plain(2, 1, 24, 0);
  const Bytes pixels = {0, 219, 0, 255, 40, 255};
  std::copy(pixels.begin(), pixels.end(), dib.begin() + 40);
  EXPECT_EQ(picture_of(changed({"halftone", "--method", "threshold"}, dib)), "FFFFFF 000000");
}

TEST_F(CliTone, FewColours) {
  const struct {
    std::vector<std::string> arguments;
    int depth;
  } rows[] = {{{"dither"}, 1},
              {{"dither", "--method", "sharp", "--bits", "4"}, 4},
              {{"dither", "--method", "jjn", "--bits", "8"}, 8},
              {{"halftone"}, 1},
              {{"halftone", "--method", "diffusion"}, 1}};
  for (const auto& row : rows) {
    const Bytes result = changed(row.arguments, plain(64, 32, 24, 128));
    ASSERT_EQ(header_of(result).biBitCount, row.depth);
    double sum = 0;
    for (int y = 0; y < 32; ++y)
      for (int x = 0; x < 64; ++x) sum += color_at(result, x, y).rgbGreen;
    EXPECT_NEAR(sum / (64 * 32), 128, 40) << row.arguments[0] << row.depth;
  }
  const Bytes light = changed({"halftone", "--method", "threshold", "--brightness", "60"}, plain(9, 5, 24, 100));
  EXPECT_EQ(picture_of(light).find('0'), std::string::npos);
}

TEST_F(CliTone, Refusals) {
  const std::string bits = put("bits.bmp", bitmap_file(plain(9, 9, 1, 0))),
                    colors = put("colors.bmp", bitmap_file(noise(9, 9, 8))), out = at("out.bmp");
  expect_refused(
      {{{"tone", bits, out}, 4, "grey first"},
       {{"tone", colors, out, "--contrast", "101"}, 2, "tone --help"},
       {{"lut", bits, out}, 4, "8 bits"},
       {{"filter", bits, out, "box"}, 4, "24 bits first"},
       {{"filter", colors, out, "blur", "--size", "7"}, 2, "out of bounds"},
       {{"filter", colors, out, "kernel", "--kernel", "1,2"}, 2, "9 numbers"},
       {{"filter", colors, out, "kernel", "--kernel", std::string(300, ' ') + "1,2"},
        2,
        "9 numbers"},  // too long for a name
       {{"filter", colors, out, "box", "--kernel", "1"}, 2, "leave it out"},
       {{"filter", colors, out, "kernel", "--kernel", "200,0,0,0,0,0,0,0,0,1"}, 2, "out of bounds"},
       {{"dither", put("true.bmp", bitmap_file(noise(9, 9, 24))), out, "--bits", "8", "--method", "smooth"}, 2, "fs or jjn"},
       {{"clean", colors, out, "50"}, 4, "greys"},
       {{"clean", bits, out, "10"}, 2, "clean --help"}});
}

}  // namespace
