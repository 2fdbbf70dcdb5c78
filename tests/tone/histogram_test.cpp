// Histograms that follow a square, and the tables made of them.
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

HGLOBAL compute(const Block& dib, const Block& histogram, Origin origin) {
  int error = 77;
  HGLOBAL result = ComputeHistogram(dib.get(), IMG_COMPUTE, histogram.get(), &origin.x, &error);
  EXPECT_EQ(error, 0);
  return result;
}

Block new_histogram() { return Block(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr)); }

Bytes table_of(HGLOBAL histogram, int contrast, int brightness) {
  const Block table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, nullptr));
  EXPECT_EQ(ComputeLUT(histogram, IMG_COMPUTE, table.get(), contrast, brightness, nullptr), table.get());
  return bytes_of(table.get());
}

void write(const Block& block, uint8_t value) {
  std::memset(GlobalLock(block.get()), value, GlobalSize(block.get()));
  GlobalUnlock(block.get());
}

TEST(ComputeHistogram, CountsTheSquareAlongRandomDrags) {
  std::minstd_rand random(5);
  for (const auto& [width, height] : {std::pair{1, 1}, {33, 17}, {257, 300}, {256, 700}, {700, 40}, {600, 513}}) {
    const Bytes dib = noise(width, height, 8);
    const Block picture = block_of(dib), histogram = new_histogram();
    for (int i = 0, x = 0, y = 0; i < 40; ++i) {
      x += static_cast<int>(random() % 301) - 150;
      y += static_cast<int>(random() % 301) - 150;
      ASSERT_EQ(compute(picture, histogram, {x, y}), histogram.get());
      ASSERT_TRUE(bytes_of(histogram.get()) == plain_histogram(dib, x, y))
          << width << " x " << height << ", move " << i << " to " << x << ", " << y;
      x = std::min(std::max(x, -50), width);
      y = std::min(std::max(y, -50), height);
    }
  }
}

// Counters that were spoilt stay so where they are only moved on, by up to 128 pixels each way, and are put right where they are
// counted anew.
TEST(ComputeHistogram, CountsAnewFrom129PixelsOn) {
  const Bytes dib = noise(600, 600, 8);
  const Block picture = block_of(dib), histogram = new_histogram();
  struct Move {
    Origin to;
    bool counts;
  };
  for (const Move& move : {Move{{150, 150}, true},
                           {{150, 150}, false},
                           {{278, 22}, false},
                           {{150, 150}, false},
                           {{279, 150}, true},
                           {{279, 279}, true},
                           {{279, 150}, true},
                           {{150, 150}, true}}) {
    write(histogram, 0);
    compute(picture, histogram, move.to);
    EXPECT_EQ(bytes_of(histogram.get()) == plain_histogram(dib, move.to.x, move.to.y), move.counts)
        << move.to.x << ", " << move.to.y;
  }
}

TEST(ComputeHistogram, MovesTheSquareInsideAndRemembersIt) {
  const Bytes dib = noise(300, 400, 8);
  const Block picture = block_of(dib), histogram = new_histogram();
  compute(picture, histogram, {-5, 10'000});
  EXPECT_TRUE(bytes_of(histogram.get()) == plain_histogram(dib, 0, 144));
  write(histogram, 9);
  for (Origin same : {Origin{0, 144}, {INT_MIN, INT_MAX}}) compute(picture, histogram, same);
  EXPECT_EQ(bytes_of(histogram.get()), Bytes(512, 9)) << "the square did not move";

  const Block other = block_of(noise(256, 400, 8));
  EXPECT_EQ(compute(other, histogram, {0, 144}), histogram.get());
  EXPECT_EQ(bytes_of(histogram.get()), Bytes(512, 9)) << "one square for all pictures and blocks";
  EXPECT_EQ(ComputeHistogram(nullptr, IMG_FREE, GlobalAlloc(GHND, 512), nullptr, nullptr), nullptr);
  compute(picture, histogram, {0, 144});
  EXPECT_EQ(bytes_of(histogram.get()), Bytes(512, 9)) << "freeing forgets nothing";
}

TEST(ComputeHistogram, WrapsAtAWholeSquareOfOneValue) {
  const Block histogram = new_histogram();
  compute(block_of(with_header(header_for(256, 256, 8), Bytes(1024 + 65'536, 3))), histogram, {0, 0});
  EXPECT_EQ(bytes_of(histogram.get()), Bytes(512));
}

// Such a thread takes square (0, 0) for counted, and has nothing to clear when it counts.
TEST(ComputeHistogram, OnAThreadThatNeverAllocatedOne) {
  const Bytes dib = noise(600, 300, 8);
  const Block picture = block_of(dib), histogram = block_of(Bytes(512)), table = block_of(Bytes(256, 5));
  std::thread([&] {
    compute(picture, histogram, {0, 0});
    EXPECT_EQ(bytes_of(histogram.get()), Bytes(512));
    compute(picture, histogram, {300, 0});
    EXPECT_TRUE(bytes_of(histogram.get()) == plain_histogram(dib, 300, 0));
    compute(picture, histogram, {0, 0});
    const Bytes first = plain_histogram(dib, 0, 0), second = plain_histogram(dib, 300, 0);
    const auto counter = [](const Bytes& block, size_t i) { return block[2 * i] + block[2 * i + 1] * 256; };
    const Bytes both = bytes_of(histogram.get());
    for (size_t i = 0; i < 256; ++i) EXPECT_EQ(counter(both, i), counter(first, i) + counter(second, i)) << i;
    EXPECT_EQ(ComputeLUT(nullptr, IMG_COMPUTE, table.get(), 9, 9, nullptr), table.get());
    EXPECT_EQ(bytes_of(table.get()), Bytes(256, 5)) << "and makes tables of no entries";
  }).join();
}

// What was remembered of one picture reaches past the edges of the next, and blocks are as short as they like.
TEST(ComputeHistogram, StaysInsideItsBlocks) {
  const Block large = block_of(noise(900, 900, 8)), small = block_of(noise(800, 790, 8)), cut = block_of(Bytes(7));
  const Block narrow = block_of(noise(20, 800, 8)), low = block_of(noise(800, 20, 8));
  const Bytes whole = noise(400, 300, 8);
  const Block short_picture = block_of(Bytes(whole.begin(), whole.begin() + 1500));
  Block histogram = new_histogram();
  for (const Block* next : {&small, &narrow, &low, &short_picture})
    for (Origin origin : {Origin{644, 644}, {644, 10}, {10, 644}, {100, 100}, {0, 0}})
      for (const Block* first : {next, &large}) compute(*first, histogram, origin);
  histogram = new_histogram();
  compute(large, cut, {300, 300});
  const Bytes counts = plain_histogram(bytes_of(large.get()), 300, 300);
  EXPECT_EQ(bytes_of(cut.get()), Bytes(counts.begin(), counts.begin() + 7));
  compute(large, cut, {301, 301});

  Bytes completed(whole.begin(), whole.begin() + 1500);
  completed.resize(whole.size());
  histogram = new_histogram();
  compute(short_picture, histogram, {90, 40});
  EXPECT_TRUE(bytes_of(histogram.get()) == plain_histogram(completed, 90, 40));
}

TEST(ComputeLUT, AgreesWithThePlainTable) {
  for (const auto& [width, height] : {std::pair{1, 1}, {33, 17}, {257, 300}}) {
    const Block picture = block_of(noise(width, height, 8)), histogram = new_histogram();
    compute(picture, histogram, {0, 0});
    for (int contrast : {0, 1, -1, 37, 300, -100, -255, -400, 100'000, INT_MAX, INT_MIN})
      for (int brightness : {0, 1, -1, 100, -77, 300, -300, INT_MAX, INT_MIN}) {
        EXPECT_TRUE(table_of(histogram.get(), contrast, brightness) ==
                    plain_table(bytes_of(histogram.get()), contrast, brightness))
            << contrast << ", " << brightness;
        EXPECT_TRUE(table_of(nullptr, contrast, brightness) == plain_table({}, contrast, brightness));
      }
  }
}

TEST(ComputeLUT, KeepsBrightensFlattensAndSteepens) {
  const Bytes identity = table_of(nullptr, 0, 0);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(identity[i], i);
  EXPECT_EQ(table_of(nullptr, 0, 300), Bytes(256, 255));
  EXPECT_EQ(table_of(nullptr, 0, -300), Bytes(256, 0));
  EXPECT_EQ(table_of(nullptr, -255, 30), Bytes(256, 158));
  const Bytes steep = table_of(nullptr, 255, 0);
  EXPECT_EQ(steep[63], 0) << "-2";
  EXPECT_EQ(steep[100], 72);
  EXPECT_EQ(steep[128], 128);
  EXPECT_EQ(steep[192], 255) << "256";
}

TEST(ComputeLUT, TurnsAbout128WithoutCountsAndStaysInsideItsBlocks) {
  for (const Bytes& counts : {Bytes(512), Bytes{}, Bytes(1)})
    EXPECT_TRUE(table_of(block_of(counts).get(), 99, 3) == plain_table({}, 99, 3));
  EXPECT_TRUE(table_of(dead_handle(), 99, 3) == plain_table({}, 99, 3));
  const Block cut = block_of(Bytes(7, 9));
  ComputeLUT(nullptr, IMG_COMPUTE, cut.get(), 0, 5, nullptr);
  EXPECT_EQ(bytes_of(cut.get()), (Bytes{5, 6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(bytes_of(Block(ApplyLUT(block_of(noise(9, 1, 8)).get(), cut.get(), 1, nullptr)).get()),
            plain_lookup(noise(9, 1, 8), joined({5, 6, 7, 8, 9, 10, 11}, Bytes(249)), true));
  HGLOBAL table = GlobalAlloc(GHND, 256);
  EXPECT_EQ(ComputeLUT(nullptr, IMG_FREE, table, 0, 0, nullptr), table) << "the number of what was a block";
  EXPECT_TRUE(bytes_of(table).empty());
}

}  // namespace
