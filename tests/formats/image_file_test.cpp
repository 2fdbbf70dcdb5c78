// Loading and saving by format, through the modules that are built.
#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

class ImageFile : public testing::Test {
 protected:
  TempFolder folder_;
};

TEST_F(ImageFile, EveryFormatComesBack) {
  const struct {
    int format, depth, value;
    const char* name;
    int tolerance = 0;
  } rows[] = {{IMG_FORMAT_TIFF, 8, 5, "a"}, {IMG_FORMAT_PCX, 24, 0, "a"},     {IMG_FORMAT_DCX, 4, 0, "a"},
              {IMG_FORMAT_GIF, 8, 0, "a"},  {IMG_FORMAT_TGA, 24, 1, "a.tga"}, {IMG_FORMAT_BITMAP, 24, 0, "a"},
              {IMG_FORMAT_CALS, 1, 0, "a"}, {IMG_FORMAT_JPEG, 24, 0, "a", 60}};
  for (const auto& row : rows) {
    Bytes picture = row.format == IMG_FORMAT_CALS ? with_header(header_for(33, 20, 1), {0, 0, 0, 0, 255, 255, 255, 0})
                                                  : noise(33, 20, row.depth);
    // Noise at every pixel is what JPEG is worst at.
    if (row.format == IMG_FORMAT_JPEG) std::fill(picture.begin() + 40, picture.end(), uint8_t{90});
    if (row.format == IMG_FORMAT_CALS) picture.resize(40 + 8 + 8 * 20, 0x5A);
    const Block dib = block_of(picture);
    const std::string path = folder_.path(row.name);
    std::filesystem::remove(path);
    ASSERT_TRUE(SaveDIBInImageFormat(path.c_str(), dib.get(), row.format, 0, row.value)) << row.format;
    EXPECT_EQ(GetImageFormat(path.c_str()), row.format);
    int status = 0;
    const Block loaded(LoadImageIntoDIB(path.c_str(), 1, &status));
    ASSERT_TRUE(loaded) << row.format;
    EXPECT_LE(largest_difference(bytes_of(loaded.get()), picture), row.tolerance) << row.format;
  }
}

TEST_F(ImageFile, WhatIsNoPictureSaysSo) {
  const std::string path = folder_.path("text.txt");
  write_file(path, {'o', 'n', 'e', '\r', '\n'});
  for (const std::string& name : {path, folder_.path("missing")}) {
    int status = 0;
    SetImgError(0);
    EXPECT_EQ(LoadImageIntoDIB(name.c_str(), 1, &status), nullptr);
    EXPECT_EQ(status, IMG_E_FORMAT);
    EXPECT_EQ(ImgError(), IMG_E_FORMAT);
    EXPECT_EQ(LoadImageIntoDIB(name.c_str(), 1, nullptr), nullptr);
  }
  EXPECT_EQ(LoadImageIntoDIB(nullptr, 1, nullptr), nullptr);
}

TEST_F(ImageFile, BitmapFilesKeepTheirCodes) {
  const std::string path = folder_.path("cut.bmp");
  write_file(path, {'B', 'M', 0});
  int status = 77;
  EXPECT_EQ(LoadImageIntoDIB(path.c_str(), 1, &status), nullptr);
  EXPECT_EQ(ImgError(), IMG_E_FILE_IO);
  EXPECT_EQ(status, 77);
  EXPECT_FALSE(SaveDIBInImageFormat(path.c_str(), nullptr, IMG_FORMAT_BITMAP, 0, 0));
  EXPECT_EQ(ImgError(), IMG_E_PARAMETER);
}

TEST_F(ImageFile, ADcxFileGainsPages) {
  const std::string path = folder_.path("pages.dcx");
  for (int width : {5, 6, 7}) {
    const Block dib = block_of(noise(width, 4, 8));
    ASSERT_TRUE(SaveDIBInImageFormat(path.c_str(), dib.get(), IMG_FORMAT_DCX, 0, 0));
  }
  int status = 0;
  for (int page : {3, 1, 2}) {
    EXPECT_EQ(header_of(bytes_of(Block(LoadImageIntoDIB(path.c_str(), page, &status)).get())).biWidth, page + 4);
  }
  EXPECT_EQ(LoadImageIntoDIB(path.c_str(), 4, &status), nullptr);
  EXPECT_EQ(status, IMG_E_PARAMETER);
}

}  // namespace
