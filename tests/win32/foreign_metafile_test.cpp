// Metafiles that another library wrote are loaded, and some are written for other programs to read.
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/module.h"
#include "win32/support/device_formats.h"

using namespace test;

namespace {

std::string in_folder(const std::string& name) {
  return (program_folder().parent_path() / "foreign_metafiles" / name).string();
}

TEST(ForeignMetafile, LoadsWithItsSizeAndColors) {
  const ActiveWindow window;
  for (const char* name : {"red.wmf", "red.emf"}) {
    int status = 0;
    const Bytes dib = bytes_of(Block(LoadImageIntoDIB(in_folder(name).c_str(), 1, &status)).get());
    EXPECT_EQ(std::pair(header_of(dib).biWidth, header_of(dib).biHeight), std::pair(192L, 96L)) << name;
    EXPECT_EQ(quarters_of(dib), "FF0000 0000FF FF0000 0000FF") << name;
  }
}

TEST(ForeignMetafile, AreWrittenForOthers) {
  for (const int depth : {1, 4, 8, 24}) {
    const Bytes picture = noise(48, 24, depth);
    const Block dib = block_of(picture);
    const std::string name = in_folder("picture" + std::to_string(depth));
    write_file(name + ".bmp",
               file_of(picture, static_cast<uint32_t>(14 + 40 + PaletteSize(const_cast<uint8_t*>(picture.data())))));
    EXPECT_TRUE(SaveDIBIntoMetaFile((name + ".wmf").c_str(), dib.get()));
    EXPECT_TRUE(SaveDIBIntoEnhMetaFile((name + ".emf").c_str(), dib.get()));
  }
}

}  // namespace
