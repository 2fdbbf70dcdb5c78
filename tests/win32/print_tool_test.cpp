// vorel print on a real printer.
#include "cli/cli_fixture.h"
#include "win32/support/printer.h"

using namespace test;
using testing::HasSubstr;

namespace {

size_t sheets(const std::string& job) {
  size_t count = 0;
  for (size_t at = job.find("\n%%Page: "); at != std::string::npos; at = job.find("\n%%Page: ", at + 1)) ++count;
  return count;
}

TEST_F(Cli, PrintsAllPagesOfAllFilesSoManyTimes) {
  put("a.bmp", bitmap_file(signed_picture(40, 30, 8, 3937)));
  put("b.bmp", bitmap_file(signed_picture(40, 30, 1)));
  const std::vector<std::string> files = {"print", at("a.bmp"), at("b.bmp")};
  const auto with = [&](std::vector<std::string> options) {
    options.insert(options.begin(), files.begin(), files.end());
    return options;
  };
  EXPECT_EQ(run(with({"--printer", printer_name(150), "--copies", "3", "--fit", "--center", "both"})), 0);
  EXPECT_EQ(sheets(text_of_job(150)), 6u);
  EXPECT_THAT(text_of_job(150), HasSubstr("%%Title: a.bmp and others"));

  for (const std::vector<std::string>& layout : {std::vector<std::string>{"--stretch"},
                                                 {"--center", "down"},
                                                 {"--center", "across"},
                                                 {"--printer-dpi"},
                                                 {"--true-size"},
                                                 {}}) {
    auto options = with(layout);
    options.insert(options.end(), {"--printer", printer_name(150)});
    EXPECT_EQ(run(options), 0);
    EXPECT_EQ(sheets(text_of_job(150)), 2u);
  }

  EXPECT_EQ(run(with({"--printer", "nowhere"})), 2);
  EXPECT_THAT(err_, HasSubstr("nowhere: there is no such printer"));
  EXPECT_EQ(run(with({"--fit", "--stretch"})), 2);
  EXPECT_EQ(run(with({"--center", "left"})), 2);
  EXPECT_EQ(run(with({"--copies", "0"})), 2);
  EXPECT_THAT(err_, HasSubstr("--copies: \"0\" is no whole number from 1 on"));
  EXPECT_EQ(run({"print", at("missing.bmp"), "--printer", printer_name(150)}), 3);
}

TEST_F(Cli, PrintsWholeDocumentsOrNothing) {
  const std::string printer = printer_name(150);
  ASSERT_EQ(run({"print", "--list"}), 0);
  EXPECT_THAT(out_.str(), HasSubstr(printer + "\n"));
  // Far larger than the page at its own resolution.
  put("large.bmp", bitmap_file(signed_picture(3000, 2000, 8, 3937)));
  ASSERT_EQ(run({"print", at("large.bmp"), "--printer", printer}), 0);
  EXPECT_EQ(err_, "");
  ASSERT_EQ(run({"print", at("large.bmp"), "--printer", printer, "--true-size"}), 0);
  EXPECT_THAT(err_, testing::AllOf(HasSubstr("mm of its width"), HasSubstr("mm of its height")));
  // Copies follow each other as whole documents: their pages differ in depth.
  put("a.bmp", bitmap_file(signed_picture(40, 30, 8)));
  put("b.bmp", bitmap_file(signed_picture(40, 30, 1)));
  ASSERT_EQ(run({"pages", "join", at("a.bmp"), at("b.bmp"), at("two.tif")}), 0);
  ASSERT_EQ(run({"print", at("two.tif"), "--printer", printer, "--page", "2,1", "--copies", "2"}), 0);
  EXPECT_EQ(sheets(text_of_job(150)), 4u);
  // A damaged file behind a good one: the job that is there stays.
  const std::string before = text_of_job(150);
  put("bad.bmp", {'B', 'M', 0});
  EXPECT_EQ(run({"print", at("a.bmp"), at("bad.bmp"), "--printer", printer}), 4);
  EXPECT_EQ(text_of_job(150), before);
  EXPECT_EQ(run({"print", at("a.bmp"), "--printer", "B\xC3\xBCrodrucker"}), 2);
  EXPECT_THAT(err_, HasSubstr("B\xC3\xBCrodrucker: there is no such printer"));
}

}  // namespace
