// Files made by other programs load with the pixels that those programs see in them.
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>

#include <vorel32.h>

#include "support/dib.h"
#include "support/module.h"

namespace fs = std::filesystem;
using namespace test;

namespace {

struct Page {
  std::string file, expected;
  int page, depth;
};

fs::path folder() { return program_folder().parent_path() / "foreign"; }

// What the names of the bitmaps tell.
std::vector<Page> pages() {
  static const std::regex pattern("(.+)\\.page(\\d+)\\.depth(\\d+)\\.bmp");
  std::vector<Page> found;
  for (const auto& entry : fs::directory_iterator(folder())) {
    const std::string name = entry.path().filename().string();
    std::smatch parts;
    if (std::regex_match(name, parts, pattern)) found.push_back({parts[1], name, std::stoi(parts[2]), std::stoi(parts[3])});
  }
  return found;
}

// Decoders of JPEG differ in the last bits, more so where colours are spread over pixels; so do programs that lay what is
// half transparent over white. Files of either kind say so in their names.
int tolerance(const std::string& file) {
  const auto says = [&](const char* word) { return file.find(word) != std::string::npos; };
  if (file.ends_with(".jpg") || says("jpeg")) return 6;
  return says("alpha") ? 1 : 0;
}

class ForeignFile : public testing::TestWithParam<Page> {};

TEST_P(ForeignFile, LoadsAsItsProgramSeesIt) {
  const Page& page = GetParam();
  int status = 0;
  const Block loaded(LoadImageIntoDIB((folder() / page.file).string().c_str(), page.page, &status));
  ASSERT_TRUE(loaded) << status;
  const Bytes dib = bytes_of(loaded.get());
  const Bytes expected = bytes_of(Block(LoadDIBFromFile((folder() / page.expected).string().c_str())).get());
  EXPECT_EQ(header_of(dib).biBitCount, page.depth);
  EXPECT_LE(largest_difference(dib, expected), tolerance(page.file));
}

INSTANTIATE_TEST_SUITE_P(All, ForeignFile, testing::ValuesIn(pages()), [](const auto& row) {
  return std::regex_replace(row.param.expected, std::regex("[^A-Za-z0-9]"), "_");
});

}  // namespace
