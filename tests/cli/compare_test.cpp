// Two pictures compared.
#include "cli_fixture.h"

using namespace test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class CliCompare : public Cli {
 protected:
  // A difference is told on standard output and gives exit code 1 without a message.
  int compare(std::vector<std::string> words) {
    words.insert(words.begin(), "compare");
    out_.str("");
    std::istringstream in;
    std::ostringstream err;
    const int code = vorel::cli::run(std::move(words), in, out_, err);
    EXPECT_EQ(err.str(), "");
    return code;
  }
};

Bytes with_resolution(Bytes dib, int per_metre) {
  return with_header_changed(std::move(dib),
                             [&](BITMAPINFOHEADER& header) { header.biXPelsPerMeter = header.biYPelsPerMeter = per_metre; });
}

void add_to(Bytes& dib, size_t at, int change) { dib[at] = static_cast<uint8_t>(dib[at] + change); }

TEST_F(CliCompare, ColoursCountAndNotTheirForm) {
  for (const int depth : {1, 4, 8}) {
    const std::string in = put("in.bmp", bitmap_file(noise(37, 21, depth)));
    ASSERT_EQ(run({"expand", in, at("24.bmp"), "--overwrite"}), 0) << err_;
    EXPECT_EQ(compare({in, at("24.bmp")}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr(": equal; depths are " + std::to_string(depth) + " and 24 bits per pixel\n"));
    EXPECT_EQ(compare({in, at("24.bmp"), "--strict"}), 1);
    EXPECT_THAT(out_.str(), Not(HasSubstr("equal")));
  }
  Bytes black_first = plain(37, 21, 1, 0x5A), white_first = plain(37, 21, 1, 0xA5);
  for (int i = 0; i < 3; ++i) std::swap(white_first[40 + static_cast<size_t>(i)], white_first[44 + static_cast<size_t>(i)]);
  black_first[48 + 4] = 0x5F;  // past the width
  const std::string a = put("a.bmp", bitmap_file(black_first)), b = put("b.bmp", bitmap_file(white_first));
  EXPECT_EQ(compare({a, b, "--strict"}), 0) << err_;
  EXPECT_EQ(out_.str(), a + " and " + b + ": equal\n");

  // The same rows with the upper one first, and as 32 bits with anything in the fourth bytes.
  const Bytes colors = noise(3, 2, 24),
              turned = with_header_changed(noise(3, 2, 32), [](auto&header) { header.biHeight = -2; });
  Bytes wide = turned;
  for (size_t y = 0; y < 2; ++y)
    for (size_t x = 0; x < 3; ++x)
      for (size_t i = 0; i < 3; ++i) wide[40 + (1 - y) * 12 + x * 4 + i] = colors[40 + y * 12 + x * 3 + i];
  EXPECT_EQ(compare({put("c.bmp", bitmap_file(colors)), put("d.bmp", bitmap_file(wide))}), 0) << out_.str();
  EXPECT_EQ(compare({at("c.bmp"), put("d.bmp", bitmap_file(turned))}), 1);

  const std::string fine = put("fine.bmp", bitmap_file(with_resolution(colors, 11811))),
                    coarse = put("coarse.bmp", bitmap_file(with_resolution(colors, 0)));
  EXPECT_EQ(compare({fine, coarse}), 0);
  EXPECT_THAT(out_.str(), HasSubstr(": equal; resolutions are 300 x 300 dpi and none\n"));
  EXPECT_EQ(compare({fine, coarse, "--strict"}), 1);
}

TEST_F(CliCompare, CountsMeasuresAndDrawsDifferences) {
  for (const int depth : {1, 8, 24}) {
    Bytes page = plain(19, 11, depth, 0), changed = page;
    const size_t rows = 40 + table_bytes(page), stride = stride_of(19, depth);
    if (depth == 1) {
      changed[rows + 2 * stride + 2] = 0x20 | 0x1F;  // the last pixel of the row, and padding
      changed[rows + 10 * stride] = 0x80;
    } else {
      const size_t bytes = static_cast<size_t>(depth) / 8;
      add_to(changed, rows + 2 * stride + 18 * bytes, 3);
      add_to(changed, rows + 10 * stride, 200);
    }
    const int largest = depth == 1 ? 255 : 200;
    const std::string a = put("a.bmp", bitmap_file(page)), b = put("b.bmp", bitmap_file(changed)), drawing = at("d.bmp");
    for (const bool draws : {false, true}) {
      std::vector<std::string> words = {a, b};
      if (draws) words.insert(words.end(), {"--out", drawing, "--overwrite"});
      ASSERT_EQ(compare(words), 1) << depth;
      EXPECT_THAT(out_.str(),
                  HasSubstr(": 2 of 209 pixels differ; the largest difference is " + std::to_string(largest) + "\n"));
    }
    for (int y = 0; y < 11; ++y)
      for (int x = 0; x < 19; ++x) {
        const RGBQUAD color = color_at(dib_at("d.bmp"), x, y);
        const bool is_red = color.rgbRed == 255 && color.rgbGreen < 160;
        EXPECT_EQ(is_red, (x == 18 && y == 2) || (x == 0 && y == 10)) << x << ' ' << y << " of " << depth;
        EXPECT_EQ(color.rgbRed, is_red ? 255 : 128);
      }
    EXPECT_EQ(compare({a, b, "--threshold", std::to_string(largest)}), 0);
    EXPECT_THAT(out_.str(), HasSubstr(": equal; the largest difference is "));
    EXPECT_EQ(compare({a, b, "--threshold", std::to_string(largest - 1), "--json"}), 1);
    EXPECT_THAT(out_.str(),
                AllOf(HasSubstr(depth == 1 ? "\"different\": 2" : "\"different\": 1"), HasSubstr("\"equal\": false")));
  }
}

TEST_F(CliCompare, SizesPagesAndRefusals) {
  const std::string a = put("a.bmp", bitmap_file(plain(9, 7, 8, 50))), b = put("b.bmp", bitmap_file(plain(9, 8, 8, 50)));
  EXPECT_EQ(compare({a, b, "--threshold", "255"}), 1);
  EXPECT_THAT(out_.str(),
              HasSubstr(": sizes differ, 9 x 7 and 9 x 8 pixels; 0 of 63 pixels that both have at the upper left differ\n"));

  const std::string two = at("two.tif"), three = at("three.tif");
  ASSERT_EQ(run({"pages", "join", a, a, two}), 0) << err_;
  ASSERT_EQ(run({"pages", "join", a, b, a, three}), 0) << err_;
  EXPECT_EQ(compare({two, three, "--out", at("d.png"), "--numbered"}), 1) << err_;
  EXPECT_THAT(out_.str(),
              AllOf(HasSubstr("two.tif, page 2 and " + three + ", page 2: sizes differ"), Not(HasSubstr("page 1 and")),
                    HasSubstr("numbers of pages differ, 2 and 3\n"), HasSubstr(": 1 of 2 pages differ\n")));
  EXPECT_TRUE(fs::exists(at("d-1.png")) && fs::exists(at("d-2.png")));
  EXPECT_EQ(compare({two, three, "--page", "1"}), 0) << err_;
  EXPECT_EQ(compare({three, three}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr(": all 3 pages are equal\n"));

  const Bytes before = read_file(a);
  expect_refused({{{"compare", a, b, "--out", a, "--overwrite"}, 2, "would replace one of the two"},
                  {{"compare", a, b, "--out", b}, 5, "there is a file of this name already"},
                  {{"compare", "-", "-"}, 2, "it can be read once only"},
                  {{"compare", a, at("missing.bmp")}, 3, "missing.bmp"},
                  {{"compare", two, three, "--out", at("d.png")}, 2, "2 pages do not go into one PNG file"},
                  {{"compare", a, b, "--threshold", "256"}, 2, "256"}});
  EXPECT_EQ(read_file(a), before);
}

}  // namespace
