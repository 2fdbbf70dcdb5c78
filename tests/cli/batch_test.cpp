// Batches: what is an input, what outputs are called, and how a run goes on from another.
#include <map>
#include <nlohmann/json.hpp>

#include "cli/batch/inputs.h"
#include "cli/batch/journal.h"
#include "cli/batch/naming.h"
#include "cli/batch/patterns.h"
#include "cli/batch/shard.h"
#include "cli_fixture.h"

using namespace test;
using namespace vorel::cli::batch;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using vorel::cli::name_of;
using vorel::cli::path_of;

namespace {

using Json = nlohmann::json;

class CliBatch : public Cli {
 protected:
  CliBatch() { fs::create_directories(at("in/deep/er")); }

  void put_page(const std::string& name, uint8_t byte = 0xF0) {
    const Bytes file = bitmap_file(plain(40, 30, 1, byte));
    std::ofstream(path_of(at("in/" + name)), std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
  }
  int batch(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"batch", "invert"});
    arguments.insert(arguments.end(), {"--out", at("out")});
    return run(arguments);
  }
  static Bytes bytes_in(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  // Paths below the output folder.
  std::map<std::string, Bytes> outputs(const std::string& folder = "out") const {
    std::map<std::string, Bytes> files;
    for (fs::recursive_directory_iterator entry(at(folder)), end; entry != end; ++entry)
      if (entry->is_regular_file() && entry->path().string().find(kJournalFolder) == std::string::npos)
        files[name_of(entry->path().lexically_relative(at(folder)))] = bytes_in(entry->path());
    return files;
  }
  std::vector<std::string> names(const std::string& folder = "out") const {
    std::vector<std::string> list;
    for (const auto& [name, bytes] : outputs(folder)) list.push_back(name);
    return list;
  }
  std::vector<std::string> ids(const std::vector<std::string>& given, bool is_recursive = false) const {
    std::istringstream nothing;
    std::vector<std::string> list;
    for (const InputFile& file : find_inputs({given, "", is_recursive, false, path_of(at("in/out"))}, nothing).files)
      list.push_back(file.id);
    return list;
  }
  std::string journal() const {
    const Bytes bytes = read_file(at("out/.vorel-batch/journal.jsonl"));
    return {bytes.begin(), bytes.end()};
  }
  size_t count(const std::string& part) const {
    const std::string text = journal();
    size_t found = 0;
    for (size_t i = text.find(part); i != std::string::npos; i = text.find(part, i + 1)) ++found;
    return found;
  }
};

TEST_F(CliBatch, InputsAreFilesFoldersAndPatterns) {
  fs::create_directories(at("in/out"));
  for (const char* name :
       {"b.bmp", "a.bmp", "notes.txt", ".hidden.bmp", "deep/c.bmp", "deep/er/d1.bmp", "deep/map.PGM", "out/own.bmp"})
    put_page(name);
  EXPECT_THAT(ids({at("in")}), ElementsAre("a.bmp", "b.bmp"));
  EXPECT_THAT(ids({at("in")}, true), ElementsAre("a.bmp", "b.bmp", "deep/c.bmp", "deep/er/d1.bmp", "deep/map.PGM"));
  EXPECT_THAT(ids({at("in/*.bmp")}), ElementsAre("a.bmp", "b.bmp"));
  EXPECT_THAT(ids({at("in/**/[!ab]*.bmp")}), ElementsAre("deep/c.bmp", "deep/er/d1.bmp"));
  EXPECT_THAT(ids({at("in/*/er/d?.b*")}), ElementsAre("deep/er/d1.bmp"));
  EXPECT_THAT(ids({at("in/notes.txt"), at("in/gone.bmp"), at("in/../in/notes.txt")}), ElementsAre("notes.txt", "gone.bmp"));
  for (const auto& [pattern, name] : std::map<std::string, std::string>{
           {"*", ""}, {"a*b*c", "aXbbYc"}, {"?", "\xC3\xA4"}, {"[a-c]?[!x]", "b\xE2\x82\xAC-"}, {"[", "["}, {"[]]", "]"}})
    EXPECT_TRUE(matches(pattern, name)) << pattern;
  for (const auto& [pattern, name] :
       std::map<std::string, std::string>{{"", "a"}, {"a*b", "ab-"}, {"??", "\xC3\xA4"}, {"[!a]", "a"}, {"*.tif", "tif"}})
    EXPECT_FALSE(matches(pattern, name)) << pattern;
}

TEST_F(CliBatch, NamesComeFromTheTemplate) {
  const InputFile input{"x", "deep/er/my.scan.tif", "", "", 7};
  const auto name = [&](const char* pattern, const char* to = "") { return Naming(pattern, to).name_for(input, 3, 12); };
  EXPECT_EQ(name(kUsualName), "deep/er/my.scan.tif");
  EXPECT_EQ(name("{stem}-{page:03}of{pages}.{ext}", "png"), "my.scan-003of12.png");
  EXPECT_EQ(name("{stem}.{ext}", "pnm"), "my.scan.pnm");
  EXPECT_EQ(name("{{{index:02}}} {name}//x"), "{07} my.scan.tif/x");
  EXPECT_EQ(Naming(kUsualName, "").name_for({"x", "a.tif", "", "", 1}, 1, 1), "a.tif");
  EXPECT_EQ(Naming(kUsualName, "").name_for({"x", "a.pbm", "", "", 1}, 1, 1), "a.pbm");
  for (const char* wrong : {"", "a/", "{stem", "stem}", "{step}", "{stem:03}", "{page:3}", "{page:}"})
    EXPECT_NE(Naming::wrong(wrong), "") << wrong;
  put_page("a.bmp");
  EXPECT_EQ(batch({at("in"), "--name", "../{name}"}), 1);
  EXPECT_THAT(err_, HasSubstr("no file below the output folder"));
  EXPECT_FALSE(fs::exists(at("a.bmp")));
}

TEST_F(CliBatch, ShardsShareAllInputs) {
  for (const unsigned shards : {1u, 2u, 7u}) {
    std::vector<int> sizes(shards);
    for (int i = 0; i < 2000; ++i) {
      int owners = 0;
      for (unsigned number = 1; number <= shards; ++number) {
        const bool has = Shard{number, shards}.has("scans/page-" + std::to_string(i) + ".tif");
        owners += has;
        sizes[number - 1] += has;
      }
      ASSERT_EQ(owners, 1) << i;
    }
    for (const int size : sizes) EXPECT_NEAR(size, 2000.0 / shards, 400.0 / shards);
  }
  EXPECT_TRUE((Shard{1, 7}.has("a/b.tif")));  // on every system
  for (int i = 0; i < 20; ++i) put_page("p" + std::to_string(i) + ".bmp");
  for (const char* shard : {"1/3", "2/3", "3/3"}) ASSERT_EQ(batch({at("in"), "--shard", shard, "--jobs", "1"}), 0) << err_;
  EXPECT_EQ(names().size(), 20u);
}

TEST_F(CliBatch, GoodFilesAmongBadOnesComeThrough) {
  for (const char* name : {"b a'd.bmp", "-dash.bmp", "\xC3\xA4\xE2\x82\xAC.bmp", "deep/er/z.bmp"}) put_page(name);
  put("in/empty.bmp", {});
  put("in/cut.bmp", Bytes(30, 'B'));
  put("in/text.tif", Bytes(3000, 'x'));
  const std::string longest(300, 'n');
  const std::string list = at("in/deep/er/z.bmp") + "\r\n\n" + at(longest + ".bmp") + "\n" + at("in") + "\n";
  EXPECT_EQ(
      run({"batch", "invert", "--files-from", "-", "--recursive", "--json", "--out", at("out"), "--name", "{name}"}, list),
      1);
  for (const char* bad : {"empty.bmp: ", "cut.bmp: ", "text.tif: ", "nnn.bmp: "}) EXPECT_THAT(err_, HasSubstr(bad));
  const std::u8string foreign = fs::path("\xC3\xA4\xE2\x82\xAC.bmp").u8string();  // a narrow name as the system takes it
  EXPECT_THAT(names(), UnorderedElementsAre("b a'd.bmp", "-dash.bmp", std::string(foreign.begin(), foreign.end()), "z.bmp"));
  std::istringstream lines(out_.str());
  std::map<std::string, int> count;
  for (std::string line; std::getline(lines, line);) {
    const Json json = Json::parse(line);
    ++count[json.at("status")];
    EXPECT_EQ(json.at("failure").is_null(), json.at("status") == "done") << line;
    if (json.at("status") != "done") continue;
    EXPECT_EQ(json.at("outputs").size(), 1u);
    EXPECT_EQ(json.at("pages").at(0).at("steps").at(0).at("step"), "invert");
    EXPECT_EQ(json.at("pages").at(0).at("to"), (Json{{"width", 40}, {"height", 30}, {"bits", 1}}));
  }
  EXPECT_EQ(count, (std::map<std::string, int>{{"done", 4}, {"failed", 4}}));
}

TEST_F(CliBatch, PagesGoToFilesOfTheirOwn) {
  put_page("a.bmp");
  put_page("b.bmp", 0x3C);
  ASSERT_EQ(run({"pages", "join", at("in/a.bmp"), at("in/b.bmp"), at("both.tif")}), 0) << err_;
  ASSERT_EQ(batch({at("both.tif"), "--name", "{stem}-{page:02}.bmp"}), 0) << err_;
  ASSERT_EQ(run({"convert", at("both.tif"), at("page.bmp"), "--numbered"}), 0) << err_;
  ASSERT_EQ(run({"invert", at("page-2.bmp"), at("two.bmp")}), 0) << err_;
  EXPECT_THAT(names(), ElementsAre("both-01.bmp", "both-02.bmp"));
  EXPECT_EQ(outputs()["both-02.bmp"], read_file(at("two.bmp")));
}

TEST_F(CliBatch, PagesStayWithinTheirLimits) {
  put_page("a.bmp");
  put("in/large.tif", gray_tiff(20'000, 20'000, 1, 1));  // nothing of its pixels is there
  EXPECT_EQ(batch({at("in"), "--max-pixels", "1199"}), 1);
  for (const char* need :
       {"a.bmp: the page needs 1200 pixels, and --max-pixels allows 1199; ", "large.tif: the page needs 400000000 "})
    EXPECT_THAT(err_, HasSubstr(need));
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(run({"batch", "invert | scale 200%", at("in/a.bmp"), "--out", at("larger"), "--max-pixels", "4799"}), 1);
  EXPECT_THAT(err_, HasSubstr("step 2, \"scale\": the page needs 4800 pixels"));
}

TEST_F(CliBatch, WhatCannotGoWellIsRefusedBeforeAnythingIsDone) {
  put_page("a.bmp");
  put_page("deep/a.bmp");
  const std::string in = at("in"), out = at("out");
  const auto refusal = [&](std::vector<std::string> arguments, int code, const char* message) {
    arguments.insert(arguments.begin(), "batch");
    return Refusal{arguments, code, message};
  };
  expect_refused(
      {refusal({"invert", at("in/a.bmp"), at("in/deep/a.bmp"), "--out", out}, 2, "same output as"),
       refusal({"invert", in, "--recursive", "--name", "x.bmp", "--out", out}, 2, "same output as"),
       refusal({"invert", in, "--out", in}, 2, "the output folder itself"),
       refusal({"invert", at("in/a.bmp"), "--out", in}, 2, "take the place of inputs"),
       refusal({"invert", at("in/*.bmp"), "--out", in, "--overwrite", "--name", "{stem}{page}.bmp"}, 2, "place of"),
       refusal({"invert", at("temporary"), "--out", out}, 3, "there are 0 inputs"),
       refusal({"invert", at("in/*.tif"), "--out", out}, 3, "no file matches"),
       refusal({"invret", in, "--out", out}, 2, "did you mean \"invert\""), refusal({"invert", in}, 2, "--out is missing"),
       refusal({"--out", out}, 2, "STEPS is missing"),
       refusal({"invert", in, "--out", out, "--shard", "3/2"}, 2, "no shard"),
       refusal({"invert", in, "--out", out, "--null"}, 2, "--files-from"),
       refusal({"invert", in, "--out", out, "--files-from", at("none")}, 3, "cannot be read"),
       refusal({"invert", in, "--out", at("in/a.bmp")}, 5, "cannot be written")});
  ASSERT_EQ(run({"batch", "invert", in, "--recursive", "--dry-run", "--out", out, "--name", "{dir}/{page}.{ext}"}), 0);
  EXPECT_EQ(out_.str(),
            name_of(at("in/a.bmp")) + " -> {page}.bmp\n" + name_of(at("in/deep/a.bmp")) + " -> deep/{page}.bmp\n");
  EXPECT_FALSE(fs::exists(out));
}

TEST_F(CliBatch, ARunGoesOnFromItsJournal) {
  for (const char* name : {"a.bmp", "b.bmp", "c.bmp", "d.bmp"}) put_page(name);
  fs::create_directory(at("out"));
  put("out/d.bmp", {1, 2, 3});  // somebody else's
  EXPECT_EQ(batch({at("in")}), 1);
  EXPECT_THAT(err_, HasSubstr("d.bmp: there is a file of this name already"));
  const auto undisturbed = outputs();
  ASSERT_EQ(undisturbed.size(), 4u);
  EXPECT_EQ(undisturbed.at("d.bmp"), (Bytes{1, 2, 3}));
  EXPECT_EQ(batch({at("in")}), 5);
  EXPECT_THAT(err_, HasSubstr("go on from it with --resume"));
  EXPECT_EQ(run({"batch", "mirror horizontal", at("in"), "--out", at("out"), "--resume"}), 2);
  EXPECT_THAT(err_, HasSubstr("of other steps or options: invert;"));

  // Done before; an output gone; an input changed; begun when the run was killed, and the last line cut.
  fs::remove(at("out/b.bmp"));
  put_page("c.bmp", 0x55);
  fs::last_write_time(at("in/c.bmp"), fs::last_write_time(at("in/a.bmp")) + std::chrono::hours(1));
  put_page("e.bmp");
  put("out/e.bmp", {4, 5, 6});
  std::ofstream(at("out/.vorel-batch/journal.jsonl"), std::ios::app) << "{\"begin\":\"e.bmp\"}\n{\"done\":\"a.b";
  fs::remove(at("out/d.bmp"));
  ASSERT_EQ(batch({at("in"), "--resume", "--json"}), 0) << err_;
  EXPECT_THAT(err_, HasSubstr("5 inputs: 4 done, 1 done before, 0 failed"));
  ASSERT_EQ(outputs().size(), 5u);
  EXPECT_EQ(outputs()["b.bmp"], undisturbed.at("b.bmp"));
  EXPECT_NE(outputs()["c.bmp"], undisturbed.at("c.bmp"));
  EXPECT_EQ(outputs()["e.bmp"], undisturbed.at("a.bmp"));

  // By content, a new time is no change.
  ASSERT_EQ(batch({at("in"), "--overwrite", "--checksum"}), 0) << err_;
  fs::last_write_time(at("in/a.bmp"), fs::last_write_time(at("in/a.bmp")) + std::chrono::hours(2));
  put_page("b.bmp", 0x0F);
  ASSERT_EQ(batch({at("in"), "--resume", "--checksum"}), 0) << err_;
  EXPECT_THAT(err_, HasSubstr("1 done, 4 done before"));
  EXPECT_EQ(count("\"done\":"), 6u);
}

}  // namespace
