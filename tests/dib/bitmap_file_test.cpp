// Bitmap files: every kind that loads, and everything that does not.
#ifdef __linux__
#include <sys/stat.h>
#endif

#include <cstring>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "platform/file.h"
#include "support/dib.h"

using namespace test;

namespace {

class BitmapFile : public testing::Test {
 protected:
  Block load(const Bytes& file) {
    write_file(path_, file);
    SetImgError(0);
    return Block(LoadDIBFromFile(path_.c_str()));
  }

  Bytes loaded(const Bytes& file) { return bytes_of(load(file).get()); }
  void expect_refused(const Bytes& file, int code) {
    EXPECT_FALSE(load(file));
    EXPECT_EQ(ImgError(), code);
  }

  TempFolder folder_;
  std::string path_ = folder_.path("picture.bmp");
};

// What loading fills in.
Bytes loaded_form(Bytes dib) {
  BITMAPINFOHEADER header = header_of(dib);
  header.biSizeImage =
      static_cast<uint32_t>(stride_of(header.biWidth, header.biBitCount)) * static_cast<uint32_t>(header.biHeight);
  if (header.biBitCount <= 8) header.biClrUsed = 1u << header.biBitCount;
  std::memcpy(dib.data(), &header, sizeof header);
  return dib;
}

TEST_F(BitmapFile, SavingAndLoadingGivesTheSameDibBack) {
  for (int depth : {1, 4, 8, 16, 24, 32}) {
    const Bytes dib = loaded_form(noise(13, 5, depth));
    const Block block = block_of(dib);
    ASSERT_TRUE(SaveDIB(path_.c_str(), block.get()));
    const Bytes file = read_file(path_);
    EXPECT_EQ(file, file_of(dib, static_cast<uint32_t>(14 + 40 + header_of(dib).biClrUsed * 4)));
    EXPECT_EQ(loaded(file), dib) << depth;
  }
}

TEST_F(BitmapFile, RowsBeginWhereTheFileHeaderSays) {
  const Bytes dib = noise(9, 4, 8), expected = loaded_form(dib);
  EXPECT_EQ(loaded(dib), expected);
  EXPECT_EQ(loaded(file_of(dib)), expected);
  EXPECT_EQ(loaded(file_of(dib, 0xFFFFFFF0)), expected) << "no file reaches 2 GB: the rows follow the table";
  Bytes with_gap = file_of(dib, 14 + 40 + 1024 + 7);
  with_gap.insert(with_gap.begin() + 14 + 40 + 1024, 7, 0xEE);
  EXPECT_EQ(loaded(with_gap), expected);
  const Bytes in_front = loaded(file_of(dib, 2));
  ASSERT_EQ(in_front.size(), dib.size());
  EXPECT_EQ(in_front[40 + 1024], file_of(dib, 2)[2]) << "of the table";
  Bytes empty = expected;
  std::fill(empty.begin() + 40 + 1024, empty.end(), uint8_t{0});
  for (uint32_t past_the_end : {100'000u, 0x7FFFFFFFu}) EXPECT_EQ(loaded(file_of(dib, past_the_end)), empty);
}

Bytes core_file(int depth, const Bytes& rest) {
  return joined({12, 0, 0, 0, 3, 0, 2, 0, 1, 0, static_cast<uint8_t>(depth), 0}, rest);
}

TEST_F(BitmapFile, ACoreHeaderBecomesAFullOneWithQuads) {
  const Bytes rest{1, 2, 3, 4, 5, 6, 0xA0, 0, 0, 0, 0x40, 0, 0, 0};
  Bytes padded = rest;
  padded.resize(40);  // the reader asks for 40 bytes before it looks at them
  BITMAPINFOHEADER header = header_for(3, 2, 1);
  header.biSizeImage = 8;
  header.biClrUsed = 2;
  const Bytes expected = with_header(header, {1, 2, 3, 0, 4, 5, 6, 0, 0xA0, 0, 0, 0, 0x40, 0, 0, 0});
  EXPECT_EQ(loaded(core_file(1, padded)), expected);
  EXPECT_EQ(loaded(file_of(core_file(1, padded), 14 + 12 + 6)), expected);

  const Bytes large = loaded(core_file(8, Bytes(256 * 3 + 8, 7)));
  EXPECT_EQ(large.size(), 40u + 1024 + 8);
  EXPECT_EQ(large[40 + 255 * 4 + 2], 7);
  EXPECT_EQ(large[40 + 255 * 4 + 3], 0);
}

TEST_F(BitmapFile, CompressedTopDownAndEmptyPicturesStayAsTheyAre) {
  BITMAPINFOHEADER header = header_for(4, -2, 8);
  header.biSizeImage = 8;
  header.biClrUsed = 1;
  const Bytes top_down = with_header(header, {9, 9, 9, 0, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(loaded(top_down), top_down);
  header.biHeight = 2;
  header.biCompression = BI_RLE8;
  const Bytes compressed = with_header(header, {9, 9, 9, 0, 4, 1, 0, 0, 4, 2, 0, 1});
  EXPECT_EQ(loaded(compressed), compressed);
  header = header_for(0, 0, 8);
  header.biClrUsed = 257;
  const Bytes empty = with_header(header, Bytes(257 * 4, 5));
  EXPECT_EQ(loaded(empty), empty);
}

TEST_F(BitmapFile, AFileCutAnywhereIsRefusedInItsHeadersAndCompletedBehindThem) {
  for (const Bytes& whole : {noise(9, 4, 24), core_file(1, Bytes(40))})
    for (int size = 0; size < 40; ++size) expect_refused(Bytes(whole.begin(), whole.begin() + size), IMG_E_FILE_IO);
  const Bytes whole = file_of(loaded_form(noise(9, 4, 4)), 14 + 40 + 64);
  for (size_t size = 0; size < whole.size(); ++size) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    if (size < 14 + 40) {
      expect_refused(cut, IMG_E_FILE_IO);
    } else {
      Bytes expected(whole.begin() + 14, whole.begin() + static_cast<std::ptrdiff_t>(size));
      expected.resize(whole.size() - 14);
      EXPECT_EQ(loaded(cut), expected) << size;
    }
  }
}

TEST_F(BitmapFile, OtherHeaderSizesAreNoBitmap) {
  for (uint32_t size : {0u, 11u, 64u, 108u, 124u, 0xFFFFFFFFu}) {
    BITMAPINFOHEADER header = header_for(1, 1, 8);
    header.biSize = size;
    expect_refused(with_header(header, Bytes(200)), IMG_E_FORMAT);
  }
  expect_refused(Bytes(100, 'x'), IMG_E_FORMAT);
}

TEST_F(BitmapFile, SizesThatNoBlockHasFailWithoutACode) {
  const struct {
    int width, height, depth;
    uint32_t image_bytes, colors;
  } lies[] = {
      {1 << 30, 1 << 30, 24, 0, 0},  // 2^62 bytes and more
      {65'536, 65'536, 8, 0, 0},     // wraps to 0 in 32 bits
      {INT32_MAX, INT32_MAX, 65'535, 0, 0},
      {4, 4, 8, 0, 1u << 30},  // a table of 2^32 bytes
      {4, 4, 8, 0xFFFFFFFF, 0},
      {4, 4, 8, 0x80000000, 0},
      {4, -4, 8, 0, 0},  // top-down without a stated size
      {-4, 4, 8, 0, 0},
  };
  for (const auto& lie : lies) {
    BITMAPINFOHEADER header = header_for(lie.width, lie.height, lie.depth);
    header.biSizeImage = lie.image_bytes;
    header.biClrUsed = lie.colors;
    expect_refused(file_of(with_header(header, Bytes(100))), 0);
  }
}

TEST_F(BitmapFile, WhatCannotBeOpenedSaysSo) {
  const auto told = [](auto&& result) {
    EXPECT_FALSE(result);
    return SetImgError(0);
  };
  const Block dib = block_of(noise(1, 1, 8));
  SetImgError(0);
  for (const std::string& path :
       {folder_.path("missing.bmp"), folder_.path("missing/a.bmp"), folder_.path(""), std::string()})
    EXPECT_EQ(told(Block(LoadDIBFromFile(path.c_str()))), IMG_E_OPEN_FILE) << path;
  for (const std::string& path : {folder_.path("missing/a.bmp"), folder_.path("")})
    EXPECT_EQ(told(SaveDIB(path.c_str(), dib.get())), IMG_E_OPEN_FILE) << path;
  EXPECT_EQ(told(SaveDIB(nullptr, dib.get())), IMG_E_OPEN_FILE);
  EXPECT_EQ(told(Block(LoadDIBFromFile(nullptr))), IMG_E_OPEN_FILE);
#ifdef __linux__
  EXPECT_EQ(told(SaveDIB("/proc/picture.bmp", dib.get())), IMG_E_OPEN_FILE) << "nobody may write there";
  EXPECT_TRUE(SaveDIB("/dev/full", dib.get())) << "only a write that moves nothing is a failure";
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(told(Block(LoadDIBFromFile(path_.c_str()))), IMG_E_OPEN_FILE) << "a pipe is not waited for";
#endif
}

TEST_F(BitmapFile, SavingWhatIsNoDibLeavesTheFileThatIsThere) {
  write_file(path_, {1, 2, 3});
  for (const auto& [handle, code] : {std::pair{HGLOBAL{nullptr}, IMG_E_PARAMETER}, {dead_handle(), IMG_E_LOCK}}) {
    EXPECT_FALSE(SaveDIB(path_.c_str(), handle));
    EXPECT_EQ(ImgError(), code);
    EXPECT_EQ(read_file(path_), (Bytes{1, 2, 3}));
  }
}

TEST_F(BitmapFile, SavesWhateverTheBlockHolds) {
  BITMAPINFOHEADER header = header_for(-5, 7, 99);
  header.biSize = 64;
  const Bytes odd = with_header(header, {1, 2, 3});
  ASSERT_TRUE(SaveDIB(path_.c_str(), block_of(odd).get()));
  EXPECT_EQ(read_file(path_), file_of(odd, 14 + 64));

  // A 12-byte header, two colours and a row are fewer than 40 bytes.
  const Bytes small = {12, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 255, 255, 255, 0x80, 0, 0, 0};
  ASSERT_TRUE(SaveDIB(path_.c_str(), block_of(small).get()));
  EXPECT_EQ(read_file(path_), file_of(small, 14 + 18));
}

TEST(ReadDIBInfo, LeavesTheFileAtTheRows) {
  TempFolder folder;
  const std::string path = folder.path("headed.bmp");
  Bytes file = {'x', 'y', 'z'};
  const Bytes dib = noise(3, 3, 4);
  const Bytes bitmap = file_of(dib, 14 + 40 + 64 + 5);
  file.insert(file.end(), bitmap.begin(), bitmap.end());
  write_file(path, file);
  const auto open = vorel::OwnedFile::open_for_reading(path.c_str());
  ASSERT_TRUE(open);
  open->seek(3, vorel::SeekFrom::kStart);
  const Block info(ReadDIBInfo(open->handle()));
  EXPECT_EQ(open->position(), 3 + 14 + 40 + 64 + 5) << "counted from where the bitmap begins";
  Bytes expected = loaded_form(dib);
  expected.resize(40 + 64);
  EXPECT_EQ(bytes_of(info.get()), expected);
  EXPECT_EQ(open->size(), static_cast<int64_t>(file.size()));
  EXPECT_EQ(open->position(), 3 + 14 + 40 + 64 + 5);

  // The same without a file header, which the reader only finds out by reading on.
  write_file(path, with_header(header_for(1, 1, 24), with_header(header_for(7, 7, 24))));
  const auto second = vorel::OwnedFile::open_for_reading(path.c_str());
  second->seek(40, vorel::SeekFrom::kStart);
  EXPECT_EQ(header_of(bytes_of(Block(ReadDIBInfo(second->handle())).get())).biWidth, 7);
  EXPECT_EQ(second->position(), 80);

  EXPECT_EQ(ReadDIBInfo(HFILE_ERROR), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_PARAMETER);
}

TEST(File, LargerThan2GBIsMeasured) {
  TempFolder folder;
  const std::string path = folder.path("sparse");
  write_file(path, {1});
  constexpr int64_t kSize = 3'500'000'000;
  std::filesystem::resize_file(path, kSize);
  const auto file = vorel::OwnedFile::open_for_reading(path.c_str());
  EXPECT_EQ(file->seek(3'000'000'000, vorel::SeekFrom::kStart), 3'000'000'000);
  EXPECT_EQ(file->size(), kSize);
  EXPECT_EQ(file->position(), 3'000'000'000);
}

}  // namespace
