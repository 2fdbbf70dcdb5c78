// The steps that make scanned pages straight, on a page of lines and on a blank one.
#include <cmath>

#include "cli_fixture.h"
#include "page/drawn_page.h"

using namespace test;
using testing::HasSubstr;

namespace {

using CliPages = Cli;

Bytes page_of(const Shape& shape, double degrees, int depth = 1) {
  const Picture page = drawn({800, 600}, depth, Table::kGray, {5906, 5906}, shape, degrees);
  return bitmap_file({page.bytes().begin(), page.bytes().end()});
}

bool is_list(Place at) {  // short lines of words
  return std::abs(at.x) < 0.04 && std::abs(at.y) < 0.03 && std::fmod(at.y + 1, 0.005) < 0.002 &&
         std::sin(at.x * 900 + std::floor((at.y + 1) / 0.005) * 2) > -0.6;
}

TEST_F(CliPages, AChainMakesAPageStraightAndTellsHow) {
  const std::string in = put("scan.bmp", page_of(is_list, -4)), out = at("page.bmp");
  ASSERT_EQ(run({"run", in, out, "threshold | despeckle | deskew | crop auto --margin 2mm | blank"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("threshold: left as it is, with 1 bit per pixel\n"));
  EXPECT_THAT(out_.str(), HasSubstr("deskew: turned by 4.0"));
  EXPECT_THAT(out_.str(), HasSubstr("blank: not blank"));
  const BITMAPINFOHEADER size = header_of(dib_at("page.bmp"));
  EXPECT_NEAR(size.biWidth, 84 * 5.906, 15);
  EXPECT_NEAR(size.biHeight, 61 * 5.906, 15);
  ASSERT_EQ(run({"deskew", out, at("again.bmp"), "--dry-run", "--json"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("\"turned\": 0.0"));
  // Nothing changes where nothing is sure.
  ASSERT_EQ(run({"run", in, at("same.bmp"), "deskew --confidence 100 | orient"}), 0) << err_;
  const std::string blank = put("blank.bmp", page_of([](Place) { return false; }, 0, 8));
  ASSERT_EQ(run({"run", blank, out, "deskew | orient | crop auto", "--overwrite"}), 0) << err_;
  EXPECT_EQ(read_file(out), read_file(blank));
  EXPECT_THAT(out_.str(), HasSubstr("left as it is: no slant is sure"));
}

TEST_F(CliPages, BlankPagesAreLeftOut) {
  const std::string blank = put("blank.bmp", page_of([](Place) { return false; }, 0)),
                    list = put("list.bmp", page_of(is_list, 0)), all = at("all.tif"), out = at("out.tif");
  ASSERT_EQ(run({"pages", "join", blank, list, blank, all}), 0) << err_;
  ASSERT_EQ(run({"blank", all, out, "--drop", "--dry-run"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("blank (0.000 % ink), would be left out"));
  ASSERT_EQ(run({"blank", all, out, "--drop"}), 0) << err_;
  ASSERT_EQ(run({"pages", "count", out}), 0) << err_;
  EXPECT_EQ(out_.str(), "1\n");
}

TEST_F(CliPages, LengthsGoByCredibleResolutions) {
  const auto page_at = [&](int per_metre, int depth) {
    Picture page = drawn({200, 100}, depth, Table::kGray, {5906, 5906}, is_list, 0);
    page.set_resolution(per_metre, per_metre);
    return put("page.bmp", bitmap_file({page.bytes().begin(), page.bytes().end()}));
  };
  const struct {
    int per_metre;
    const char *speck, *window;
  } rows[] = {{3'937'008, "3 x 3 pixels (at 300 dpi", "of 41 pixels (at 300 dpi"},
              {39, "3 x 3 pixels (at 300 dpi", "of 41 pixels (at 300 dpi"},
              {1181, "1 x 1 pixels would", "of 15 pixels\n"},  // 30 dpi
              {23'622, "6 x 6 pixels would", "of 83 pixels\n"}};
  for (const auto& row : rows) {
    ASSERT_EQ(run({"despeckle", page_at(row.per_metre, 1), at("out.bmp"), "--dry-run"}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr(row.speck));
    ASSERT_EQ(run({"threshold", page_at(row.per_metre, 8), at("out.bmp"), "sauvola", "--dry-run"}), 0) << err_;
    EXPECT_THAT(out_.str(), HasSubstr(row.window));
  }
  ASSERT_EQ(run({"threshold", at("page.bmp"), at("out.bmp"), "sauvola", "--window", "1px", "--dry-run"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("of 3 pixels"));
  Picture dot = drawn(
      {9, 9}, 1, Table::kGray, {5906, 5906}, [](Place at) { return std::hypot(at.x, at.y) < 1e-4; }, 0);
  ASSERT_EQ(run({"despeckle", put("dot.bmp", bitmap_file({dot.bytes().begin(), dot.bytes().end()})), at("out.bmp"), "--size",
                 "0px"}),
            0)
      << err_;
  EXPECT_EQ(read_file(at("out.bmp")), read_file(at("dot.bmp")));
}

TEST_F(CliPages, SizesAndLevelsAreChecked) {
  const std::string in = put("in.bmp", page_of(is_list, 0, 8)), out = at("out.bmp");
  expect_refused({{{"despeckle", in, out}, 4, "use threshold first"},
                  {{"despeckle", in, out, "--size", "3"}, 2, "is no length like"},
                  {{"threshold", in, out, "ostu"}, 2, "is no LEVEL"},
                  {{"threshold", in, out, "sauvola", "--k", "2"}, 2, "not within 0 and 1"},
                  {{"blank", in, out, "--most", "nan"}, 2, "is no number"},
                  {{"crop", in, out, "5,5"}, 2, "SIZE is missing"},
                  {{"crop", in, out, "auto", "5x5"}, 2, "leave SIZE out"}});
  for (const char* level : {"otsu", "sauvola", "128"}) {
    ASSERT_EQ(run({"threshold", in, out, level, "--overwrite"}), 0) << err_;
    EXPECT_EQ(header_of(dib_at("out.bmp")).biBitCount, 1);
  }
}

}  // namespace
