// Modules come and go with every picture: the process has as much of everything after as before.
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include <vorel32.h>

#include "support/dib.h"
#include "support/heap.h"
#include "support/module.h"

using namespace test;

namespace {

// How many thread-local-storage indexes the process can still have.
size_t free_indexes() {
  std::vector<DWORD> taken;
  for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) taken.push_back(index);
  for (const DWORD index : taken) TlsFree(index);
  return taken.size();
}

template <class Action>
void expect_nothing_left(int times, Action action) {
  action();  // whatever the system caches on first use
  const size_t indexes = free_indexes(), blocks = heap_blocks();
  for (int i = 0; i < times; ++i) action();
  EXPECT_EQ(free_indexes(), indexes);
  EXPECT_LT(heap_blocks(), blocks + 10);
}

TEST(CodecModules, LeaveNothingBehindInTwelveHundredPictures) {
  const TempFolder folder;
  for (const auto& [format, name] : {std::pair(IMG_FORMAT_TIFF, "a.tif"),
                                     {IMG_FORMAT_PCX, "a.pcx"},
                                     {IMG_FORMAT_DCX, "a.dcx"},
                                     {IMG_FORMAT_GIF, "a.gif"},
                                     {IMG_FORMAT_TGA, "a.tga"},
                                     {IMG_FORMAT_JPEG, "a.jpg"}}) {
    SCOPED_TRACE(name);
    const std::string path = folder.path(name);
    ASSERT_TRUE(SaveDIBInImageFormat(path.c_str(), block_of(noise(20, 20, 24)).get(), format, 0, 0));
    expect_nothing_left(200, [&] { EXPECT_TRUE(Block(LoadImageIntoDIB(path.c_str(), 1, nullptr))); });
  }
}

TEST(Library, LeavesNothingBehind) {
  const TempFolder folder;
  const std::filesystem::path copy = folder.path("COPY.DLL");
  std::filesystem::copy_file(program_folder() / "VOREL32.DLL", copy);
  expect_nothing_left(20, [&] { EXPECT_EQ(Module(Module::Path{copy}).entry<int(VORELCALL*)()>("ImgError")(), IMG_OK); });
}

}  // namespace
