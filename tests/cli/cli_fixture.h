// The command line tool, run in process.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "cli/run.h"
#include "support/dib.h"

namespace test {

namespace fs = std::filesystem;

inline constexpr size_t kFileHeader = sizeof(BITMAPFILEHEADER);

inline size_t table_bytes(const Bytes& dib) { return PaletteSize(const_cast<uint8_t*>(dib.data())); }

inline Bytes bitmap_file(const Bytes& dib) {
  return file_of(dib, static_cast<uint32_t>(kFileHeader + sizeof(BITMAPINFOHEADER) + table_bytes(dib)));
}

inline Bytes dib_in(const Bytes& file) { return {file.begin() + kFileHeader, file.end()}; }

// A picture whose pixels are all of one byte, with a table from black to white.
inline Bytes plain(int width, int height, int depth, uint8_t byte) {
  Bytes dib = noise(width, height, depth);
  std::fill(dib.begin() + 40, dib.end(), byte);
  const size_t colors = depth <= 8 ? size_t{1} << depth : 0;
  for (size_t i = 0; i < colors * 4; ++i) dib[40 + i] = static_cast<uint8_t>(i % 4 == 3 ? 0 : i / 4 * 255 / (colors - 1));
  return dib;
}

// A TIFF file of greys, with opacity if there are two samples. Its pixels are cut off after the first one.
inline Bytes gray_tiff(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples) {
  enum : uint16_t { kShort = 3, kLong = 4 };
  constexpr uint32_t kPixelsAt = 8, kDirectoryAt = 16, kUnassociated = 2;
  struct Entry {
    uint16_t tag, type;
    uint32_t count, value;
  };
  const uint32_t bits_of_each = bits * (samples == 2 ? 0x10001u : 1u), row_bytes = (width * bits * samples + 7) / 8;
  const Entry entries[] = {{256, kLong, 1, width},
                           {257, kLong, 1, height},
                           {258, kShort, samples, bits_of_each},
                           {259, kShort, 1, 1},
                           {262, kShort, 1, 1},
                           {273, kLong, 1, kPixelsAt},
                           {277, kShort, 1, samples},
                           {278, kLong, 1, height},
                           {279, kLong, 1, row_bytes * height},
                           {338, kShort, samples - 1u, kUnassociated}};
  Bytes file = {'I', 'I', 42, 0, kDirectoryAt, 0, 0, 0, 1, 2, 3, 4, 0, 0, 0, 0, samples == 2 ? uint8_t{10} : uint8_t{9}, 0};
  for (const Entry& entry : entries) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&entry);
    if (entry.count > 0) file.insert(file.end(), bytes, bytes + sizeof entry);
  }
  file.insert(file.end(), 4, 0);
  return file;
}

inline size_t entries(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

class Cli : public testing::Test {
 protected:
  Cli() {
    fs::create_directory(temporary_);
    use_for_temporary_files(temporary_);
  }
  // Whatever happened, nothing temporary stays.
  ~Cli() override {
    EXPECT_EQ(entries(temporary_), 0u);
    for (const auto& entry : fs::directory_iterator(fs::path(at("")))) {
      EXPECT_FALSE(entry.path().filename().string().starts_with("vorel-")) << entry.path();
    }
    use_for_temporary_files(usual_.string());
  }

  static void use_for_temporary_files(const std::string& folder) {
#ifdef _WIN32
    SetEnvironmentVariableA("TMP", folder.c_str());
#else
    setenv("TMPDIR", folder.c_str(), 1);
#endif
  }
  std::string at(const std::string& name) const { return folder_.path(name); }
  std::string put(const std::string& name, const Bytes& bytes) const {
    write_file(at(name), bytes);
    return at(name);
  }
  // Runs the tool and checks the form of its messages.
  int run(const std::vector<std::string>& arguments, const std::string& input = "") {
    out_.str("");
    std::ostringstream err;
    std::istringstream in(input);
    const int code = vorel::cli::run(arguments, in, out_, err);
    err_ = err.str();
    std::istringstream lines(err_);
    bool failed = false;
    for (std::string line; std::getline(lines, line);) {
      EXPECT_THAT(line, testing::AllOf(testing::StartsWith("vorel: "), testing::HasSubstr("; ")));
      failed = failed || !line.starts_with("vorel: note: ");
    }
    EXPECT_EQ(failed, code != 0) << err_;
    return code;
  }
  Bytes converted(std::vector<std::string> verb_and_choice, const Bytes& file) {
    verb_and_choice.insert(verb_and_choice.begin() + 1, {put("in.bmp", file), at("out.bmp"), "--overwrite"});
    EXPECT_EQ(run(verb_and_choice), 0) << err_;
    return read_file(at("out.bmp"));
  }

  // The same of a picture, to a picture.
  Bytes changed(std::vector<std::string> verb_and_choice, const Bytes& dib) {
    return dib_in(converted(std::move(verb_and_choice), bitmap_file(dib)));
  }
  Bytes dib_at(const std::string& name) const { return dib_in(read_file(at(name))); }

  struct Refusal {
    std::vector<std::string> arguments;
    int code;
    const char* message;
  };
  // Runs that fail, each with its code and message, leave nothing of an output.
  void expect_refused(const std::vector<Refusal>& refusals) {
    const size_t files = entries(at(""));
    for (const Refusal& refusal : refusals) {
      EXPECT_EQ(run(refusal.arguments), refusal.code) << refusal.message;
      EXPECT_THAT(err_, testing::HasSubstr(refusal.message));
      EXPECT_EQ(entries(at("")), files) << refusal.message;
    }
  }

  const fs::path usual_ = fs::temp_directory_path();
  TempFolder folder_;
  std::string temporary_ = folder_.path("temporary");
  std::ostringstream out_;
  std::string err_;
};

}  // namespace test
