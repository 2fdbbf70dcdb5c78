// Histograms that follow a square, and lookup tables computed from them.
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <thread>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_tone.h"

using namespace test;

namespace {

struct Origin {
  int x, y;
};

Block new_histogram() { return Block(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr)); }

Bytes counted(const Block& dib, const Block& histogram, Origin origin) {
  int error = 77;
  EXPECT_EQ(ComputeHistogram(dib.get(), IMG_COMPUTE, histogram.get(), &origin.x, &error), histogram.get());
  EXPECT_EQ(error, 0);
  return bytes_of(histogram.get());
}

Bytes table_of(HGLOBAL histogram, int contrast, int brightness) {
  const Block table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, nullptr));
  EXPECT_EQ(ComputeLUT(histogram, IMG_COMPUTE, table.get(), contrast, brightness, nullptr), table.get());
  return bytes_of(table.get());
}

TEST(ComputeHistogram, CountsTheSquareAlongRandomDrags) {
  std::minstd_rand random(5);
  for (const auto& [width, height] : {std::pair{1, 1}, {33, 17}, {257, 300}, {256, 700}, {700, 40}, {600, 513}}) {
    const Bytes dib = noise(width, height, 8);
    const Block picture = block_of(dib), histogram = new_histogram();
    for (int i = 0, x = 0, y = 0; i < 40; ++i) {
      x = std::min(std::max(x + static_cast<int>(random() % 301) - 150, -50), width);
      y = std::min(std::max(y + static_cast<int>(random() % 301) - 150, -50), height);
      ASSERT_TRUE(counted(picture, histogram, {x, y}) == plain_histogram(dib, x, y))
          << width << " x " << height << ", move " << i << " to " << x << ", " << y;
    }
  }
}

// Counters that were cleared in between are right again only after a full count.
TEST(ComputeHistogram, CountsAnewFrom129PixelsOn) {
  const Bytes dib = noise(600, 600, 8);
  const Block picture = block_of(dib), histogram = new_histogram();
  const std::pair<Origin, bool> moves[] = {{{150, 150}, true}, {{150, 150}, false}, {{278, 22}, false}, {{150, 150}, false},
                                           {{279, 150}, true}, {{279, 279}, true},  {{279, 150}, true}, {{150, 150}, true}};
  for (const auto& [to, is_recounted] : moves) {
    std::memset(GlobalLock(histogram.get()), 0, 512);
    GlobalUnlock(histogram.get());
    EXPECT_EQ(counted(picture, histogram, to) == plain_histogram(dib, to.x, to.y), is_recounted) << to.x << ", " << to.y;
  }
}

TEST(ComputeHistogram, MovesTheSquareInsideAndRemembersItForAllPicturesAndBlocks) {
  const Bytes dib = noise(300, 400, 8);
  const Block picture = block_of(dib), other = block_of(noise(256, 400, 8)), nines = block_of(Bytes(512, 9));
  EXPECT_TRUE(counted(picture, new_histogram(), {-5, 10'000}) == plain_histogram(dib, 0, 144));
  for (Origin same : {Origin{0, 144}, {INT_MIN, INT_MAX}}) EXPECT_EQ(counted(picture, nines, same), Bytes(512, 9));
  EXPECT_EQ(counted(other, nines, {0, 144}), Bytes(512, 9));
  EXPECT_EQ(ComputeHistogram(nullptr, IMG_FREE, GlobalAlloc(GHND, 512), nullptr, nullptr), nullptr);
  EXPECT_EQ(counted(picture, nines, {0, 144}), Bytes(512, 9)) << "freeing forgets nothing";
  const int same[] = {0, 144};
  HGLOBAL dead = dead_handle();
  EXPECT_EQ(ComputeHistogram(picture.get(), IMG_COMPUTE, dead, same, nullptr), dead) << "not even looked at";
  const Block flat = block_of(with_header(header_for(256, 256, 8), Bytes(1024 + 65'536, 3)));
  EXPECT_EQ(counted(flat, new_histogram(), {0, 0}), Bytes(512)) << "65,536 wraps to 0";
}

// Such a thread assumes that the square at (0, 0) is counted, clears nothing before it counts, and writes no table entries.
TEST(ComputeHistogram, OnAThreadThatNeverAllocatedOne) {
  const Bytes dib = noise(600, 300, 8);
  const Block picture = block_of(dib), histogram = block_of(Bytes(512)), table = block_of(Bytes(256, 5));
  std::thread([&] {
    EXPECT_EQ(counted(picture, histogram, {0, 0}), Bytes(512));
    EXPECT_TRUE(counted(picture, histogram, {300, 0}) == plain_histogram(dib, 300, 0));
    EXPECT_TRUE(counted(picture, histogram, {100, 0}) != plain_histogram(dib, 100, 0));
    ComputeLUT(nullptr, IMG_COMPUTE, table.get(), 9, 9, nullptr);
    EXPECT_EQ(bytes_of(table.get()), Bytes(256, 5));
  }).join();
}

// The square that is remembered may lie outside the next picture; blocks may be short.
TEST(ComputeHistogram, StaysInsideItsBlocks) {
  const Block large = block_of(noise(900, 900, 8)), cut = block_of(Bytes(7)), histogram = new_histogram();
  for (const auto& [width, height] : {std::pair{800, 790}, {20, 800}, {800, 20}}) {
    const Block next = block_of(noise(width, height, 8));
    for (Origin origin : {Origin{644, 644}, {644, 10}, {10, 644}, {0, 0}})
      for (const Block* picture : {&large, &next}) counted(*picture, histogram, origin);
  }
  const Bytes counts = plain_histogram(bytes_of(large.get()), 300, 300);
  new_histogram();
  EXPECT_EQ(counted(large, cut, {300, 300}), Bytes(counts.begin(), counts.begin() + 7));
  counted(large, cut, {301, 301});
  Bytes short_picture = noise(400, 300, 8);
  short_picture.resize(1500);
  EXPECT_TRUE(counted(block_of(short_picture), new_histogram(), {90, 40}) == plain_histogram(short_picture, 90, 40));
}

TEST(ComputeLUT, AgreesWithThePlainTable) {
  for (const auto& [width, height] : {std::pair{1, 1}, {33, 17}, {257, 300}}) {
    const Block histogram = new_histogram();
    const Bytes counts = counted(block_of(noise(width, height, 8)), histogram, {0, 0});
    for (int contrast : {0, 1, -1, 37, 300, -100, -255, -400, 100'000, INT_MAX, INT_MIN})
      for (int brightness : {0, 1, -1, 100, -77, 300, -300, INT_MAX, INT_MIN}) {
        EXPECT_EQ(table_of(histogram.get(), contrast, brightness), plain_table(counts, contrast, brightness));
        EXPECT_EQ(table_of(nullptr, contrast, brightness), plain_table({}, contrast, brightness));
      }
  }
  for (const Bytes& counts : {Bytes(512), Bytes(1)})
    EXPECT_EQ(table_of(block_of(counts).get(), 99, 3), plain_table({}, 99, 3)) << "turns about 128";
}

TEST(ComputeLUT, KeepsBrightensFlattensAndSteepens) {
  const Bytes identity = table_of(nullptr, 0, 0), steep = table_of(nullptr, 255, 0);
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(identity[i], i);
    EXPECT_EQ(steep[i], i < 64 ? 0 : i < 192 ? 2 * i - 128 : 255);
  }
  EXPECT_EQ(table_of(nullptr, 0, 300), Bytes(256, 255));
  EXPECT_EQ(table_of(nullptr, 0, -300), Bytes(256, 0));
  EXPECT_EQ(table_of(nullptr, -255, 30), Bytes(256, 158));
}

TEST(ComputeLUT, StaysInsideItsBlock) {
  const Block cut = block_of(Bytes(3, 9));
  ComputeLUT(dead_handle(), IMG_COMPUTE, cut.get(), 0, 5, nullptr);
  EXPECT_EQ(bytes_of(cut.get()), (Bytes{5, 6, 7}));
  EXPECT_EQ(bytes_of(Block(ApplyLUT(block_of(noise(9, 1, 8)).get(), cut.get(), 1, nullptr)).get()),
            plain_lookup(noise(9, 1, 8), joined({5, 6, 7}, Bytes(253)), true));
  HGLOBAL table = GlobalAlloc(GHND, 256);
  EXPECT_EQ(ComputeLUT(nullptr, IMG_FREE, table, 0, 0, nullptr), table) << "the number of what was a block";
  EXPECT_TRUE(bytes_of(table).empty());
}

}  // namespace
