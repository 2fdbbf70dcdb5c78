// How loading and saving by format fail. What they call is looked at where modules are looked for, and done with modules that are
// built by their own tests.
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

}  // namespace
