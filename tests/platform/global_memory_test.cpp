// The contracts of global memory. On Windows these tests look at the system's own functions, which is what keeps the Linux
// ones honest.
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "support/dib.h"
#include "support/random.h"

using namespace test;

namespace {

TEST(GlobalMemory, KeepsContentWhenABlockGrowsAndShrinks) {
  Block block = block_of({1, 2, 3, 4});
  ASSERT_EQ(GlobalReAlloc(block.get(), 4000, GMEM_ZEROINIT), block.get());
  Bytes bytes = bytes_of(block.get());
  ASSERT_EQ(bytes.size(), 4000u);
  Bytes expected(4000);
  for (uint8_t i = 0; i < 4; ++i) expected[i] = static_cast<uint8_t>(i + 1);
  EXPECT_EQ(bytes, expected);
  ASSERT_EQ(GlobalReAlloc(block.get(), 2, 0), block.get());
  EXPECT_EQ(bytes_of(block.get()), (Bytes{1, 2}));
}

TEST(GlobalMemory, SizesAreExact) {
  for (size_t size : {1u, 7u, 44u, 1000u, 65'537u}) EXPECT_EQ(GlobalSize(Block(GlobalAlloc(GHND, size)).get()), size);
}

// Pages in the process's address space; 0 where the system does not report them.
long mapped_pages() {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages;
}

// Freed memory is kept for blocks of about the same size, up to a limit.
TEST(GlobalMemory, LargeBlocksAreWholeZeroedAndGivenBack) {
  constexpr size_t kMiB = size_t{1} << 20;
  Random random(3);
  const auto fill = [](HGLOBAL block, uint8_t value) {
    std::memset(GlobalLock(block), value, GlobalSize(block));
    GlobalUnlock(block);
  };
  const auto is_filled = [](HGLOBAL block, uint8_t value) {
    const auto* bytes = static_cast<const uint8_t*>(GlobalLock(block));
    const size_t size = GlobalSize(block);
    const bool is_same = bytes[0] == value && std::memcmp(bytes, bytes + 1, size - 1) == 0;
    GlobalUnlock(block);
    return is_same;
  };
  const auto random_size = [&] { return 4 * kMiB + static_cast<size_t>(random.between(0, 3 << 20)); };
  for (int round = 0; round < 3; ++round) {
    std::vector<Block> blocks;
    for (uint8_t i = 0; i < 12; ++i) {
      blocks.emplace_back(GlobalAlloc(GHND, random_size()));
      ASSERT_TRUE(is_filled(blocks.back().get(), 0));
      fill(blocks.back().get(), i);
    }
    for (uint8_t i = 0; i < 12; ++i) {
      ASSERT_TRUE(is_filled(blocks[i].get(), i));
      ASSERT_EQ(GlobalReAlloc(blocks[i].get(), random_size(), 0), blocks[i].get());
      EXPECT_EQ(static_cast<const uint8_t*>(GlobalLock(blocks[i].get()))[4 * kMiB - 1], i);
      GlobalUnlock(blocks[i].get());
    }
  }
  const long before = mapped_pages();
  for (int round = 0; round < 4; ++round) {
    std::vector<Block> blocks;
    for (size_t i = 0; i < 12; ++i) blocks.emplace_back(GlobalAlloc(GHND, (40 + i) * kMiB));
  }
  constexpr long kPage = 4096, kMostKept = 320 * long{kMiB} / kPage;
  EXPECT_LT(mapped_pages() - before, kMostKept);
}

TEST(GlobalMemory, CountsLocks) {
  Block block = block_of({7});
  void* first = GlobalLock(block.get());
  EXPECT_EQ(GlobalLock(block.get()), first);
  EXPECT_TRUE(GlobalUnlock(block.get()));
  EXPECT_FALSE(GlobalUnlock(block.get()));
  EXPECT_FALSE(GlobalUnlock(block.get())) << "not locked any more";
  EXPECT_NE(GlobalReAlloc(block.get(), 100'000, 0), nullptr) << "an unlocked block may move";
  const void* fixed = GlobalLock(block.get());
  EXPECT_EQ(GlobalReAlloc(block.get(), 500'000'000, 0), nullptr) << "a locked one may not";
  EXPECT_EQ(GlobalSize(block.get()), 100'000u);
  EXPECT_EQ(GlobalLock(block.get()), fixed);
}

TEST(GlobalMemory, AFixedBlockIsItsAddress) {
  Block block(GlobalAlloc(GPTR, 16));
  EXPECT_EQ(GlobalLock(block.get()), block.get());
  EXPECT_TRUE(GlobalUnlock(block.get()));
  EXPECT_EQ(bytes_of(block.get()), Bytes(16));
}

TEST(GlobalMemory, ABlockOfNothingCannotBeLockedUntilItHasASize) {
  Block block(GlobalAlloc(GMEM_MOVEABLE, 0));
  ASSERT_TRUE(block);
  EXPECT_EQ(GlobalLock(block.get()), nullptr);
  EXPECT_EQ(GlobalSize(block.get()), 0u);
  ASSERT_NE(GlobalReAlloc(block.get(), 8, GMEM_ZEROINIT), nullptr);
  EXPECT_EQ(bytes_of(block.get()), Bytes(8));
}

TEST(GlobalMemory, FixedBlocksMoveOrBecomeMovableOnRequest) {
  HGLOBAL block = GlobalAlloc(GPTR, 16);
  std::memset(block, 7, 16);
  EXPECT_EQ(GlobalReAlloc(block, 500'000'000, 0), nullptr) << "it may not move";
  block = GlobalReAlloc(block, 100'000, GMEM_MOVEABLE | GMEM_ZEROINIT);
  ASSERT_NE(block, nullptr);
  ASSERT_GE(GlobalSize(block), 100'000u);
  EXPECT_EQ(static_cast<uint8_t*>(block)[15], 7);
  EXPECT_EQ(static_cast<uint8_t*>(block)[99'999], 0);
  const Block movable(GlobalReAlloc(block, 0, GMEM_MODIFY | GMEM_MOVEABLE));
  ASSERT_TRUE(movable);
  EXPECT_EQ(bytes_of(movable.get())[15], 7);
}

TEST(GlobalMemory, BadHandlesFailWithoutHarm) {
  char on_the_stack[16] = {};
  (void)on_the_stack;
  for (HGLOBAL handle : {HGLOBAL{nullptr}, dead_handle()}) {
    EXPECT_EQ(GlobalLock(handle), nullptr);
    EXPECT_FALSE(GlobalUnlock(handle));
    EXPECT_EQ(GlobalSize(handle), 0u);
    EXPECT_EQ(GlobalReAlloc(handle, 10, GMEM_ZEROINIT), nullptr);
    EXPECT_EQ(GlobalFree(handle), handle);
  }
#ifndef _WIN32
  EXPECT_EQ(GlobalLock(on_the_stack), nullptr);
  EXPECT_EQ(GlobalFree(on_the_stack), on_the_stack);
#endif
}

#ifndef _WIN32  // the system uses handles again
TEST(GlobalMemory, ANewBlockNeverAnswersToAnOldHandle) {
  HGLOBAL old = GlobalAlloc(GHND, 8);
  GlobalFree(old);
  std::vector<Block> blocks;
  for (int i = 0; i < 100; ++i) blocks.emplace_back(GlobalAlloc(GHND, 8));
  EXPECT_EQ(GlobalLock(old), nullptr);
}
#endif

TEST(GlobalMemory, ServesThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 2000; ++i) {
        const Block block = block_of(Bytes(static_cast<size_t>(1 + i % 50), static_cast<uint8_t>(t)));
        ASSERT_EQ(bytes_of(block.get()).back(), t);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
