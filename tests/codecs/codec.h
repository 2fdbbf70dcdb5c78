// The codec modules' entry points, and a file that a test saves and loads through two of them.
#pragma once

#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

#include "support/dib.h"
#include "support/module.h"

namespace test {

struct Modules {
  Module merv32{"MERV32"}, odal32{"ODAL32"}, sune32{"SUNE32"}, brix32{"BRIX32"}, kalo32{"KALO32"}, wert32{"WERT32"};
  ImgLoadPage load_tiff = merv32.entry<ImgLoadPage>("LoadTiffIntoDIB");
  ImgCountPages count_tiff = merv32.entry<ImgCountPages>("GetNumberOfImagesInTiffFile");
  ImgTiffCompression tiff_compression = merv32.entry<ImgTiffCompression>("GetTiffCompression");
  ImgLoadPicture load_cals = merv32.entry<ImgLoadPicture>("LoadCALSIntoDIB");
  ImgLoadPicture load_pcx = odal32.entry<ImgLoadPicture>("LoadPCXIntoDIB");
  ImgLoadPage load_dcx = odal32.entry<ImgLoadPage>("LoadDCXIntoDIB");
  ImgCountPages count_dcx = odal32.entry<ImgCountPages>("GetNumberOfImagesInDCXFile");
  ImgLoadPage load_gif = sune32.entry<ImgLoadPage>("LoadGIFIntoDIB");
  ImgCountPages count_gif = sune32.entry<ImgCountPages>("GetNumberOfImagesInGIFFile");
  ImgLoadPicture load_tga = brix32.entry<ImgLoadPicture>("LoadTGAIntoDIB");
  ImgLoadFile load_jpeg = kalo32.entry<ImgLoadFile>("LoadJPEGIntoDIB");
  ImgLoadPicture load_png = wert32.entry<ImgLoadPicture>("LoadPNGIntoDIB");

  Module merv{"MERV"}, odal{"ODAL"}, sune{"SUNE"}, brix{"BRIX"}, kalo{"KALO"}, wert{"WERT"};
  ImgSaveTiff save_tiff = merv.entry<ImgSaveTiff>("SaveDIBInTiffFormat");
  ImgSaveCals save_cals = merv.entry<ImgSaveCals>("SAVEDIBINCALSFORMAT");
  ImgSavePicture save_pcx = odal.entry<ImgSavePicture>("SaveDIBInPCXFormat");
  ImgMakeFile make_dcx = odal.entry<ImgMakeFile>("MakeDCXFile");
  ImgSavePicture save_dcx = odal.entry<ImgSavePicture>("SaveDIBInDCXFormat");
  ImgSaveGif save_gif = sune.entry<ImgSaveGif>("SaveDIBInGIFFormat");
  ImgSaveTga save_tga = brix.entry<ImgSaveTga>("SaveDIBInTGAFormat");
  ImgSaveJpeg save_jpeg = kalo.entry<ImgSaveJpeg>("SaveDIBInJPEGFile");
  ImgSavePicture save_png = wert.entry<ImgSavePicture>("SaveDIBInPNGFormat");
};

inline const Modules& modules() {
  static const Modules all;
  return all;
}

// A loader and a saver under one signature, with their usual options. Those without a status leave it alone.
struct Codec {
  HGLOBAL (*load)(const char* path, int page, int* status);
  BOOL (*save)(const char* path, HGLOBAL dib, int* status);
};

inline constexpr Codec kTiff = {[](const char* path, int page, int* s) { return modules().load_tiff(path, page, s); },
                                [](const char* path, HGLOBAL dib, int*) { return modules().save_tiff(path, dib, 0, 1); }};
inline constexpr Codec kCals = {[](const char* path, int, int* s) { return modules().load_cals(path, s); },
                                [](const char* path, HGLOBAL dib, int*) { return modules().save_cals(path, dib, 0, 0, 0); }};
inline constexpr Codec kPcx = {[](const char* path, int, int* s) { return modules().load_pcx(path, s); },
                               [](const char* path, HGLOBAL dib, int* s) { return modules().save_pcx(path, dib, s); }};
inline constexpr Codec kDcx = {[](const char* path, int page, int* s) { return modules().load_dcx(path, page, s); },
                               [](const char* path, HGLOBAL dib, int* s) { return modules().save_dcx(path, dib, s); }};
inline constexpr Codec kGif = {[](const char* path, int page, int* s) { return modules().load_gif(path, page, s); },
                               [](const char* path, HGLOBAL dib, int* s) { return modules().save_gif(path, dib, 0, s); }};
inline constexpr Codec kTga = {[](const char* path, int, int* s) { return modules().load_tga(path, s); },
                               [](const char* path, HGLOBAL dib, int*) { return modules().save_tga(path, dib, 0, 1); }};
inline constexpr Codec kJpeg = {[](const char* path, int, int*) { return modules().load_jpeg(path); },
                                [](const char* path, HGLOBAL dib, int*) { return modules().save_jpeg(path, dib, 100); }};
inline constexpr Codec kPng = {[](const char* path, int, int* s) { return modules().load_png(path, s); },
                               [](const char* path, HGLOBAL dib, int* s) { return modules().save_png(path, dib, s); }};

class CodecTest : public testing::Test {
 protected:
  explicit CodecTest(const Codec& of) : codec(of) {}

  Bytes load(int page = 1) {
    status = -1;
    return bytes_of(Block(codec.load(path.c_str(), page, &status)).get());
  }
  Bytes load_file(const Bytes& file, int page = 1) {
    write_file(path, file);
    return load(page);
  }
  bool save(const Bytes& dib) {
    status = -1;
    const Block block = block_of(dib);
    const bool is_saved = codec.save(path.c_str(), block.get(), &status) != FALSE;
    EXPECT_EQ(take_locks_back(block.get()), 0);
    return is_saved;
  }
  Bytes saved(const Bytes& dib) {
    EXPECT_TRUE(save(dib)) << status;
    return read_file(path);
  }
  void expect_refused(const Bytes& file, int code, const std::string& what, int page = 1) {
    EXPECT_EQ(load_file(file, page), Bytes()) << what;
    EXPECT_EQ(status, code) << what;
  }

  const Codec& codec;
  TempFolder folder;
  std::string path = folder.path("picture.tga");  // the one format that goes by its name
  int status = -1;
};

inline Bytes with_table(Bytes dib, const Bytes& table) {
  std::copy(table.begin(), table.end(), dib.begin() + sizeof(BITMAPINFOHEADER));
  return dib;
}

inline Bytes with_gray_ramp(const Bytes& dib) {
  const int last = (1 << header_of(dib).biBitCount) - 1;
  Bytes table;
  for (int i = 0; i <= last; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / last);
    table.insert(table.end(), {level, level, level, 0});
  }
  return with_table(dib, table);
}

inline Bytes first_bytes(const Bytes& file, size_t length) {
  return {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)};
}

}  // namespace test
