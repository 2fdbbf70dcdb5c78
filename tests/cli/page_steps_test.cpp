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

TEST_F(CliPages, SizesAndLevelsAreChecked) {
  const std::string in = put("in.bmp", page_of(is_list, 0, 8)), out = at("out.bmp");
  expect_refused({{{"despeckle", in, out}, 4, "use threshold first"},
                  {{"despeckle", in, out, "--size", "3"}, 2, "is no length like"},
                  {{"threshold", in, out, "ostu"}, 2, "is no LEVEL"},
                  {{"threshold", in, out, "sauvola", "--k", "2"}, 2, "not within 0 and 1"},
                  {{"crop", in, out, "5,5"}, 2, "SIZE is missing"},
                  {{"crop", in, out, "auto", "5x5"}, 2, "leave SIZE out"}});
  for (const char* level : {"otsu", "sauvola", "128"}) {
    ASSERT_EQ(run({"threshold", in, out, level, "--overwrite"}), 0) << err_;
    EXPECT_EQ(header_of(dib_at("out.bmp")).biBitCount, 1);
  }
}

}  // namespace
