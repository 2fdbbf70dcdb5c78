// What all savers have in common.
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

#include "support/dib.h"
#include "support/module.h"

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

using namespace test;

namespace {

struct Modules {
  Module merv{"MERV"}, odal{"ODAL"}, sune{"SUNE"}, brix{"BRIX"}, kalo{"KALO"}, wert{"WERT"};
  ImgSaveTiff tiff = merv.entry<ImgSaveTiff>("SaveDIBInTiffFormat");
  ImgSaveCals cals = merv.entry<ImgSaveCals>("SAVEDIBINCALSFORMAT");
  ImgSavePicture pcx = odal.entry<ImgSavePicture>("SaveDIBInPCXFormat");
  ImgMakeFile make_dcx = odal.entry<ImgMakeFile>("MakeDCXFile");
  ImgSavePicture dcx = odal.entry<ImgSavePicture>("SaveDIBInDCXFormat");
  ImgSaveGif gif = sune.entry<ImgSaveGif>("SaveDIBInGIFFormat");
  ImgSaveTga tga = brix.entry<ImgSaveTga>("SaveDIBInTGAFormat");
  ImgSaveJpeg jpeg = kalo.entry<ImgSaveJpeg>("SaveDIBInJPEGFile");
  ImgSavePicture png = wert.entry<ImgSavePicture>("SaveDIBInPNGFormat");
};

struct Saver {
  const char* name;
  int most_bits;
  std::function<BOOL(const Modules&, const char*, HGLOBAL)> save;
  // For a saver that adds pages: makes the file that it adds to.
  std::function<BOOL(const Modules&, const char*, HGLOBAL)> begin = nullptr;
};

const Saver kSavers[] = {
    {"TIFF", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.tiff(path, dib, 0, 1); }},
    {"TIFF page", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.tiff(path, dib, 1, 2); },
     [](const Modules& m, const char* path, HGLOBAL dib) { return m.tiff(path, dib, 0, 1); }},
    {"CALS", 1, [](const Modules& m, const char* path, HGLOBAL dib) { return m.cals(path, dib, 0, 0, 0); }},
    {"PCX", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.pcx(path, dib, nullptr); }},
    {"DCX page", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.dcx(path, dib, nullptr); },
     [](const Modules& m, const char* path, HGLOBAL) { return m.make_dcx(path, nullptr); }},
    {"GIF", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.gif(path, dib, 1, nullptr); }},
    {"TGA", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.tga(path, dib, 1, 1); }},
    {"JPEG", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.jpeg(path, dib, 100); }},
    {"PNG", 24, [](const Modules& m, const char* path, HGLOBAL dib) { return m.png(path, dib, nullptr); }},
};

class EverySaver : public testing::TestWithParam<Saver> {
 protected:
  bool save(const Bytes& dib) const { return GetParam().save(modules_, path_.c_str(), block_of(dib).get()) != FALSE; }
  // The file that a page is added to; none for other savers.
  Bytes begin() const {
    std::filesystem::remove(path_);
    if (GetParam().begin == nullptr) return {};
    EXPECT_TRUE(GetParam().begin(modules_, path_.c_str(), block_of(noise(20, 9, 1)).get()));
    return read_file(path_);
  }
  Bytes saved(const Bytes& dib) const {
    begin();
    EXPECT_TRUE(save(dib));
    return read_file(path_);
  }

  Modules modules_;
  TempFolder folder_;
  std::string path_ = folder_.path("picture");
};

// A picture of noise in three parts, to be put together in other ways.
struct Parts {
  BITMAPINFOHEADER header;
  Bytes table, rows;

  Parts(int width, int height, int depth) {
    const Bytes dib = noise(width, height, depth);
    header = header_of(dib);
    const auto rows_begin = dib.end() - static_cast<std::ptrdiff_t>(stride_of(width, depth) * static_cast<size_t>(height));
    table.assign(dib.begin() + sizeof header, rows_begin);
    rows.assign(rows_begin, dib.end());
  }

  Bytes dib() const { return with_header(header, joined(table, rows)); }

  void turn_over() {
    header.biHeight = -header.biHeight;
    const auto stride = static_cast<std::ptrdiff_t>(stride_of(header.biWidth, header.biBitCount));
    Bytes turned;
    for (auto end = rows.end(); end != rows.begin(); end -= stride) turned.insert(turned.end(), end - stride, end);
    rows = turned;
  }

  void state_colors(size_t count) {
    header.biClrUsed = static_cast<uint32_t>(count);
    table.resize(count * sizeof(RGBQUAD), 0xEE);
  }
};

TEST_P(EverySaver, SeesThroughTheOrderOfRowsAndTheLengthOfTheTable) {
  for (const int depth : {1, 4, 8, 24}) {
    if (depth > GetParam().most_bits) continue;
    SCOPED_TRACE(testing::Message() << depth << " bits");
    const Parts usual(9, 5, depth);
    const Bytes file = saved(usual.dib());
    Parts top_down = usual;
    top_down.turn_over();
    EXPECT_EQ(saved(top_down.dib()), file);
    Parts long_table = usual;
    long_table.state_colors(usual.table.size() / sizeof(RGBQUAD) + 3);
    EXPECT_EQ(saved(long_table.dib()), file);
    if (depth == 24) continue;
    Parts short_table = usual, black_from_there = usual;
    short_table.state_colors(size_t{1} << (depth - 1));
    std::fill(black_from_there.table.begin() + static_cast<std::ptrdiff_t>(short_table.table.size()),
              black_from_there.table.end(), uint8_t{0});
    EXPECT_EQ(saved(short_table.dib()), saved(black_from_there.dib()));
  }
}

#ifndef _WIN32
// Files cannot grow beyond a size, for a scope.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(size_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_P(EverySaver, LeavesNothingHalfWritten) {
  const Bytes dib = noise(400, 400, GetParam().most_bits);
  const size_t whole = saved(dib).size();
  const Bytes before = begin();
  for (const size_t limit : {before.size(), before.size() + 1, (before.size() + whole) / 2, whole - 1}) {
    {
      const FileSizeLimit no_more(limit);
      EXPECT_FALSE(save(dib)) << limit;
    }
    EXPECT_EQ(std::filesystem::exists(path_), GetParam().begin != nullptr) << limit;
    EXPECT_EQ(read_file(path_), before) << limit;
  }
}
#endif

INSTANTIATE_TEST_SUITE_P(All, EverySaver, testing::ValuesIn(kSavers), [](const auto& row) {
  std::string name = row.param.name;
  std::erase(name, ' ');
  return name;
});

}  // namespace
