// Steps: what a chain makes of words, and what becomes of pages on their way.
#include "cli/chain.h"

#include "cli/failure.h"
#include "cli/words.h"
#include "cli_fixture.h"

using namespace test;
using testing::HasSubstr;
using vorel::cli::Chain;

namespace {

using CliChain = Cli;

std::string text_of(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

TEST_F(CliChain, OneRunGivesWhatTheVerbsGiveOneByOne) {
  const Bytes page = bitmap_file(noise(61, 40, 24));
  const std::string in = put("in.bmp", page), first = at("1.bmp"), second = at("2.bmp"), third = at("3.bmp");
  ASSERT_EQ(run({"gray", in, first, "--weighted"}), 0) << err_;
  ASSERT_EQ(run({"rotate", first, second, "-30", "--white"}), 0) << err_;
  ASSERT_EQ(run({"halftone", second, third, "--method", "diffusion"}), 0) << err_;
  const std::string steps = "gray --weighted | rotate -30 --white|halftone --method=diffusion";
  ASSERT_EQ(run({"run", in, at("out.bmp"), steps}), 0) << err_;
  EXPECT_EQ(read_file(at("out.bmp")), read_file(third));
  ASSERT_EQ(run({"run", "-", "-", steps}, text_of(page)), 0) << err_;
  EXPECT_EQ(out_.str(), text_of(read_file(third)));
  const std::string job =
      "\xEF\xBB\xBF# a job\n\n  gray --weighted   # by colour\r\nrotate -30 --white |\nhalftone --method 'diffusion'\n";
  ASSERT_EQ(run({"run", in, at("job.bmp"), "--steps", put("job.vorel", {job.begin(), job.end()})}), 0) << err_;
  EXPECT_EQ(read_file(at("job.bmp")), read_file(third));
}

TEST(Chains, HaveOneSpelling) {
  const std::string one =
      Chain::parse("rotate --white   -2|\"scale\"  --method=cubic '50%'\n\nfilter kernel --kernel '1 1 1'\" 1 1 1 1 1 1\"")
          .text();
  EXPECT_EQ(one, "rotate -2 --white | scale 50% --method=cubic | filter kernel '--kernel=1 1 1 1 1 1 1 1 1'");
  EXPECT_EQ(Chain::parse(one).text(), one);
}

TEST(Chains, WordsAreQuotedAndTakenBack) {
  for (const std::string word :
       {"plain", "two words", "", "it's", "a\"b'c", "C:\\scans\\x.txt", "a|b", "#", "\\\\", "\\'\" |"}) {
    const auto pieces = vorel::cli::pieces_of("x " + vorel::cli::quoted(word));
    ASSERT_TRUE(pieces && pieces->size() == 2) << word;
    EXPECT_EQ((*pieces)[1].text, word);
  }
  EXPECT_EQ((*vorel::cli::pieces_of("C:\\scans\\x.txt"))[0].text, "C:\\scans\\x.txt");
  EXPECT_EQ((*vorel::cli::pieces_of("it\\'s a\\ b"))[1].text, "a b");
}

TEST_F(CliChain, MistakesAreNamedBeforeAnyFileIsRead) {
  const std::string none = at("none.tif"), out = at("out.tif");
  const auto refusal = [&](const char* steps, const char* message) {
    return Refusal{{"run", none, out, steps}, 2, message};
  };
  expect_refused({refusal("gray | rotaet 3", "step 2, \"rotaet\": there is no such step; did you mean \"rotate\"?"),
                  refusal("clean", "step 1, \"clean\": LEVEL is missing; see \"vorel help clean\""),
                  refusal("rotate 3 --wite", "there is no option --wite; did you mean \"--white\"?"),
                  refusal("rotate 3 4", "\"4\" is one argument too many"),
                  refusal("gray --weighted=3", "--weighted takes no value"),
                  refusal("scale 50% --method", "--method needs a value: METHOD"),
                  refusal("scale 50% --method cubik", "did you mean \"cubic\"?"),
                  refusal("tone --brightness 1 --brightness 2", "--brightness is given more than once"),
                  refusal("scale --dpi 300 --keep-dpi", "do not go together"),
                  refusal("scale", "either SIZE or --dpi"),
                  refusal("filter kernel --kernel 1,2", "9 numbers"),
                  refusal("gray || invert", "nothing beside the bar"),
                  refusal("gray |", "nothing beside the bar"),
                  refusal("mirror 'horizontal", "does not end"),
                  refusal("# nothing", "there is no step"),
                  {{"run", none, out}, 2, "either STEPS or --steps"},
                  {{"run", none, out, "--steps", at("none.vorel")}, 3, "cannot be read"},
                  {{"run", none, out, "--steps", at("")}, 3, "cannot be read"},  // a folder
                  {{"run", none, out, "gray --to"}, 2, "there is no option --to"}});
  // Which step was not possible is said where there are several.
  const std::string bits = put("bits.bmp", bitmap_file(plain(9, 9, 1, 0)));
  expect_refused({{{"run", bits, out, "invert | tone --contrast 5"}, 4, "bits.bmp: step 2, \"tone\": black and white"}});
}

TEST_F(CliChain, ReportsAreForPeopleAndPrograms) {
  Bytes page = plain(40, 10, 1, 0xFF);
  page[48 + 8 * 5 + 2] = 0xF7;  // one black pixel
  const std::string in = put("page.bmp", bitmap_file(page)), out = at("out.bmp");
  ASSERT_EQ(run({"run", in, out, "clean 60 | dither", "--dry-run"}), 0) << err_;
  EXPECT_EQ(out_.str(),
            in + ": clean: 1 of 400 pixels would change\n" + in + ": dither: left as it is, with 1 bit per pixel\n");
  EXPECT_FALSE(fs::exists(out));
  ASSERT_EQ(run({"run", in, out, "clean 60", "--json"}), 0) << err_;
  EXPECT_THAT(out_.str(), HasSubstr("\"step\": \"clean\",\n        \"pixels\": 400,\n        \"changed\": 1"));
}

TEST_F(CliChain, LossesAreNotedAndStrictRunsFail) {
  Bytes photo = with_header_changed(
      noise(64, 64, 24), [](BITMAPINFOHEADER& header) { header.biXPelsPerMeter = header.biYPelsPerMeter = 11811; });
  const std::string in = put("photo.bmp", bitmap_file(photo));
  ASSERT_EQ(run({"convert", in, at("out.gif")}), 0);
  EXPECT_THAT(err_, testing::AllOf(HasSubstr("GIF keeps 256"), HasSubstr("300 x 300 dpi is lost")));
  expect_refused({{{"convert", in, at("strict.gif"), "--strict"}, 4, "leave --strict out"},
                  {{"run", in, at("strict.tga"), "scale 50%", "--strict"}, 4, "150 x 150 dpi is lost"}});
  ASSERT_EQ(run({"convert", in, at("out.tif"), "--strict"}), 0) << err_;
  EXPECT_EQ(err_, "");
  // What loading takes.
  const Bytes tga = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 32, 8, 1, 2, 3, 128};
  const std::string out = at("out.png"), deep = put("deep.tif", gray_tiff(1, 1, 16, 2));
  expect_refused({{{"convert", deep, out, "--strict"}, 4, "samples of 16 bits become 8 bits"},
                  {{"convert", put("blended.tif", gray_tiff(1, 1, 8, 2)), out, "--strict"}, 4, "opacity is blended"},
                  {{"convert", put("blended.tga", tga), out, "--strict"}, 4, "opacity is blended"}});
  ASSERT_EQ(run({"convert", deep, out}), 0) << err_;
  EXPECT_THAT(err_, testing::AllOf(HasSubstr("16 bits"), HasSubstr("opacity")));
  ASSERT_EQ(run({"convert", put("plain.tif", gray_tiff(1, 1, 8, 1)), at("plain.png"), "--strict"}), 0) << err_;
}

}  // namespace
