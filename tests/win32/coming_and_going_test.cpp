// Modules are loaded and released with every picture: afterwards the process has as many indexes and blocks as before.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <vorel32.h>

#include "core/file_formats.h"
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

bool save(const std::string& path, const vorel::FileFormat& format) {
  const Block picture = block_of(noise(20, 20, 1));
  if (format.saver == vorel::Saver::kLibrary)
    return SaveDIBInImageFormat(path.c_str(), picture.get(), static_cast<int>(format.code), 0, 0) != FALSE;
  return Module(format.save.module).entry<ImgSavePicture>(format.save.name)(path.c_str(), picture.get(), nullptr) != FALSE;
}

TEST(CodecModules, LeaveNothingBehindInTwoHundredPicturesOfEachFormat) {
  const TempFolder folder;
  for (const vorel::FileFormat& format : vorel::file_formats()) {
    if (!format.load) continue;
    SCOPED_TRACE(format.name);
    const std::string path = folder.path(std::string("a.") + format.endings[0]);
    ASSERT_TRUE(save(path, format));
    expect_nothing_left(40, [&] { EXPECT_TRUE(Block(LoadImageIntoDIB(path.c_str(), 1, nullptr))); });
  }
}

TEST(Library, LeavesNothingBehind) {
  const TempFolder folder;
  const std::filesystem::path copy = folder.path("COPY.DLL");
  std::filesystem::copy_file(program_folder() / VOREL_FILE_NAME, copy);
  expect_nothing_left(20, [&] { EXPECT_EQ(Module(Module::Path{copy}).entry<int(VORELCALL*)()>("ImgError")(), IMG_OK); });
}

}  // namespace
