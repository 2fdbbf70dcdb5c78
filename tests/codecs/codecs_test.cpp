// What all formats have in common.
#include <algorithm>
#include <filesystem>

#include "codecs/codec.h"

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#endif

using namespace test;

namespace {

struct Format {
  const char* name;
  int number;
  Codec codec;
  int most_bits, exact_bits;  // of pictures that are saved, and that come back as they were
  int most_side;              // in pixels; 0 if there is none
  int surplus;                // bytes at a file's end that are not missed; -1 where the format's own test looks
  bool tells_status, keeps_resolution;
  BOOL (*begin)(const char* path, HGLOBAL dib) = nullptr;  // makes the file that a saver adds its page to
};

// Those that add pages get their page 2.
const Format kFormats[] = {
    {"TIFF", IMG_FORMAT_TIFF, kTiff, 24, 24, 0, -1, false, true},
    {"TIFF page",
     IMG_FORMAT_TIFF,
     {kTiff.load, [](const char* path, HGLOBAL dib, int*) { return modules().save_tiff(path, dib, 1, 2); }},
     24,
     24,
     0,
     -1,
     false,
     true,
     [](const char* path, HGLOBAL dib) { return modules().save_tiff(path, dib, 0, 1); }},
    {"CALS", IMG_FORMAT_CALS, kCals, 1, 0, 0, -1, false, false},
    {"PCX", IMG_FORMAT_PCX, kPcx, 24, 24, 65'535, 0, true, true},
    {"DCX page", IMG_FORMAT_DCX, kDcx, 24, 24, 65'535, 0, true, true,
     [](const char* path, HGLOBAL dib) {
       return BOOL{modules().make_dcx(path, nullptr) && modules().save_dcx(path, dib, nullptr)};
     }},
    {"GIF", IMG_FORMAT_GIF, kGif, 24, 8, 65'535, 1, true, false},
    {"GIF interlaced",
     IMG_FORMAT_GIF,
     {kGif.load, [](const char* path, HGLOBAL dib, int* status) { return modules().save_gif(path, dib, 1, status); }},
     24,
     8,
     65'535,
     1,
     true,
     false},
    {"TGA", IMG_FORMAT_TGA, kTga, 24, 24, 65'535, 26, false, false},
    {"TGA packets",
     IMG_FORMAT_TGA,
     {kTga.load, [](const char* path, HGLOBAL dib, int*) { return modules().save_tga(path, dib, 1, 0); }},
     24,
     24,
     65'535,
     0,
     false,
     false},
    {"JPEG", IMG_FORMAT_JPEG, kJpeg, 24, 0, 65'500, 2, false, false},
    {"PNG", IMG_FORMAT_PNG, kPng, 24, 24, 0, 0, true, true},
};

class EveryFormat : public CodecTest, public testing::WithParamInterface<Format> {
 protected:
  EveryFormat() : CodecTest(GetParam().codec) {
    if (format.number != IMG_FORMAT_TGA) path = folder.path("picture");
  }

  // The file that a page is added to; none for other savers.
  Bytes begin() const {
    std::filesystem::remove(path);
    if (format.begin == nullptr) return {};
    EXPECT_TRUE(format.begin(path.c_str(), block_of(noise(20, 9, 1)).get()));
    return read_file(path);
  }
  Bytes saved(const Bytes& dib) {
    begin();
    return CodecTest::saved(dib);
  }
  int told(int code) const { return format.tells_status ? code : -1; }
  int loader_told(int code) const { return format.number == IMG_FORMAT_JPEG ? -1 : code; }

  const Format& format = GetParam();
  const int page = format.begin != nullptr ? 2 : 1;
};

// Through the library, which must not take any of them for files of another format.
TEST_P(EveryFormat, BringsPicturesBack) {
  for (const int depth : {1, 4, 8, 24})
    for (const int width : {1, 7, 8, 9, 17, 301})
      for (const int height : {1, 5, 21}) {
        if (depth > format.exact_bits) continue;
        const Bytes plain = noise(width, height, depth);
        for (const Bytes& dib : {plain, depth <= 8 ? with_gray_ramp(plain) : plain}) {
          SCOPED_TRACE(testing::Message() << depth << " bits, " << width << " x " << height);
          saved(dib);
          EXPECT_EQ(GetImageFormat(path.c_str()), format.number);
          const Bytes loaded = bytes_of(Block(LoadImageIntoDIB(path.c_str(), page, nullptr)).get());
          EXPECT_EQ(largest_difference(loaded, dib), 0);
          EXPECT_EQ(header_of(loaded).biBitCount, depth);
          EXPECT_EQ(header_of(loaded).biXPelsPerMeter, format.keeps_resolution ? 11811 : 0);
          EXPECT_EQ(header_of(loaded).biYPelsPerMeter, format.keeps_resolution ? 7874 : 0);
        }
      }
}

TEST_P(EveryFormat, RefusesFilesThatAreCutOff) {
  for (const int depth : {1, 4, 8, 24}) {
    if (format.surplus < 0) continue;
    const Bytes file = saved(noise(33, 20, depth));
    const size_t end = file.size() - static_cast<size_t>(format.surplus);
    for (size_t size = 0; size < end; size += size < 130 ? 1 : 1 + file.size() / 64)
      expect_refused(first_bytes(file, size), loader_told(IMG_E_FORMAT),
                     std::to_string(depth) + " bits, " + std::to_string(size), page);
  }
}

TEST_P(EveryFormat, SaysThatThereIsNoFile) {
  EXPECT_EQ(codec.load(nullptr, 1, nullptr), nullptr);
  EXPECT_EQ(load(), Bytes());
  EXPECT_EQ(status, loader_told(IMG_E_OPEN_FILE));
#ifndef _WIN32
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(load(), Bytes()) << "a pipe is not waited for";
  EXPECT_EQ(status, loader_told(IMG_E_OPEN_FILE));
#endif
}

TEST_P(EveryFormat, LeavesTheFileWhenItRefusesAPicture) {
  Bytes before = begin();
  if (before.empty()) write_file(path, before = {1, 2, 3});
  BITMAPINFOHEADER compressed = header_for(4, 4, 1);
  compressed.biCompression = BI_RLE8;
  std::vector<std::pair<BITMAPINFOHEADER, int>> refused = {{header_for(4, 4, 16), IMG_E_HEADER_BITS},
                                                           {compressed, IMG_E_COMPRESSED},
                                                           {header_for(0, 4, 1), IMG_E_DIB_SIZE},
                                                           {header_for(4, 0, 1), IMG_E_DIB_SIZE}};
  if (const int side = format.most_side; side != 0) {
    refused.emplace_back(header_for(side + 1, 1, 1), IMG_E_DIB_SIZE);
    refused.emplace_back(header_for(1, side + 1, 1), IMG_E_DIB_SIZE);
  }
  for (const auto& [header, code] : refused) {
    EXPECT_FALSE(save(with_header(header)));
    EXPECT_EQ(status, told(code)) << header.biWidth << " x " << header.biHeight;
  }
  for (const auto& [handle, code] : {std::pair{HGLOBAL{nullptr}, IMG_E_PARAMETER}, {dead_handle(), IMG_E_LOCK}}) {
    EXPECT_FALSE(codec.save(path.c_str(), handle, &status));
    EXPECT_EQ(status, told(code));
  }
  EXPECT_EQ(read_file(path), before);
}

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

TEST_P(EveryFormat, SeesThroughTheOrderOfRowsAndTheLengthOfTheTable) {
  for (const int depth : {1, 4, 8, 24}) {
    if (depth > format.most_bits) continue;
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

TEST_P(EveryFormat, LeavesNothingHalfWritten) {
  const Bytes dib = noise(400, 400, format.most_bits);
  const size_t whole = saved(dib).size();
  const Bytes before = begin();
  for (const size_t limit : {before.size(), before.size() + 1, (before.size() + whole) / 2, whole - 1}) {
    {
      const FileSizeLimit no_more(limit);
      EXPECT_FALSE(save(dib)) << limit;
    }
    EXPECT_EQ(status, told(IMG_E_FILE_IO));
    EXPECT_EQ(std::filesystem::exists(path), format.begin != nullptr) << limit;
    EXPECT_EQ(read_file(path), before) << limit;
  }
}

TEST(PcxAndTga, HeadersAreLookedAtBeforeTheWholeFile) {
  const TempFolder folder;
  const std::string path = folder.path("large");
  write_file(path, {});
  std::filesystem::resize_file(path, uint64_t{1} << 40);  // more than fits memory
  for (const Codec& codec : {kPcx, kTga}) {
    int status = -1;
    EXPECT_EQ(codec.load(path.c_str(), 1, &status), nullptr);
    EXPECT_EQ(status, IMG_E_FORMAT);
  }
}
#endif

INSTANTIATE_TEST_SUITE_P(All, EveryFormat, testing::ValuesIn(kFormats), [](const auto& row) {
  std::string name = row.param.name;
  std::erase(name, ' ');
  return name;
});

}  // namespace
