// What makes pictures of pictures, held against versions that go one pixel at a time: every operation over every kind of picture
// of its depth, copied and in place.
#include <functional>
#include <gtest/gtest.h>
#include <random>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_tone.h"

using namespace test;

namespace {

struct Operation {
  std::string name;
  int depth;
  bool works_in_place;
  std::function<HGLOBAL(HGLOBAL, bool copied)> run;
  std::function<Bytes(const Bytes&, bool copied)> plain;
  bool wants_grays = false;  // else most pictures would be refused
};

// Names of operations get a number, so that parameters need not be spelt out in them.
void add(std::vector<Operation>& all, Operation operation) {
  operation.name += "_" + std::to_string(all.size());
  all.push_back(std::move(operation));
}

Bytes as_file(const std::vector<int>& kernel, size_t size) {
  Bytes bytes;
  for (int value : kernel)
    for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
  return bytes;
}

std::vector<int> random_kernel(int size, int least, int greatest, int divisor) {
  std::minstd_rand random(static_cast<unsigned>(size));
  std::vector<int> kernel;
  for (int i = 0; i < size * size; ++i) kernel.push_back(least + static_cast<int>(random() >> 8) % (greatest - least + 1));
  kernel.push_back(divisor);
  return kernel;
}

std::vector<PlainFilter> filters() {
  std::vector<PlainFilter> all = {{3, 3}, {3, 5}, {3, 7}, {4, 3}, {4, 5}, {5, 3}, {5, 5}, {6, 3}, {6, 5}};
  for (int type : {1, 2}) {
    for (const std::vector<int>& kernel : {std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 45},
                                           {-1, 0, 1, -2, 0, 2, -1, 0, 1, 0},
                                           {-1, -2, -3, -4, -5, -6, -7, -8, -9, 4},
                                           {-1, -1, -1, -1, -1, -1, -1, -1, -1, 0},
                                           {0, 0, 0, 0, 127, 0, 0, 0, 0, 1},
                                           {-100, 3, 0, 0, 5, 0, 0, 1, 90, -7},
                                           {1, 1, 1, 1, 1, 1, 1, 1, 1, -1000}})
      all.push_back({type, 3, kernel});
    all.push_back({type, 5, random_kernel(5, -4, 5, -32)});
  }
  all.push_back({1, 7, random_kernel(7, -2, 3, 64)});
  all.push_back({1, 7, random_kernel(7, 0, 4, 97)});
  return all;
}

// Both filtering exports; their kernels differ in the size of numbers.
void add_filters(std::vector<Operation>& all, const TempFolder& folder) {
  for (const PlainFilter& filter : filters()) {
    const std::string ints = folder.path("i" + std::to_string(all.size())),
                      shorts = folder.path("s" + std::to_string(all.size()));
    write_file(ints, as_file(filter.kernel, 4));
    write_file(shorts, as_file(filter.kernel, 2));
    add(all, {"Convolve", 8, true,
              [=](HGLOBAL dib, bool copied) {
                return Convolve(dib, copied, filter.type, filter.size, filter.type == 2 ? ints.c_str() : nullptr,
                                filter.type == 1 ? filter.kernel.data() : nullptr, nullptr);
              },
              [=](const Bytes& dib, bool copied) { return plain_convolution(dib, copied, filter); }});
    for (int mode : {0, 1})
      add(all, {"ColorConvolution", 24, true,
                [=](HGLOBAL dib, bool copied) {
                  const std::vector<short> kernel(filter.kernel.begin(), filter.kernel.end());
                  return ColorConvolution(dib, copied, mode, static_cast<short>(filter.type), filter.size,
                                          filter.type == 2 ? shorts.c_str() : nullptr,
                                          filter.type == 1 ? kernel.data() : nullptr, nullptr);
                },
                [=](const Bytes& dib, bool copied) { return plain_color_convolution(dib, copied, mode, filter); }});
  }
}

void add_tones(std::vector<Operation>& all) {
  const Bytes table = plain_table({}, 90, -20);
  add(all,
      {"ApplyLUT", 8, true, [=](HGLOBAL dib, bool copied) { return ApplyLUT(dib, block_of(table).get(), copied, nullptr); },
       [=](const Bytes& dib, bool copied) { return plain_lookup(dib, table, copied); }});
  add(all, {"Convert8to24", 8, false, [](HGLOBAL dib, bool) { return Convert8to24(dib); },
            [](const Bytes& dib, bool) { return plain_24_bits(dib); }});
  for (int depth : {4, 8, 24})
    for (const auto& [brightness, contrast] :
         {std::pair<short, short>{0, 0}, {100, 0}, {0, 100}, {37, -100}, {-61, 33}, {-9, -77}})
      add(all, {"ColorBrightnessContrast", depth, false,
                [=](HGLOBAL dib, bool) { return ColorBrightnessContrast(dib, brightness, contrast); },
                [=](const Bytes& dib, bool) { return plain_brightness(dib, brightness, contrast); }});
}

void add_grays(std::vector<Operation>& all) {
  for (int depth : {4, 8, 24})
    for (bool weighted : {false, true})
      add(all, {"ConvColorDIBtoGrayscale", depth, false,
                [=](HGLOBAL dib, bool) { return ConvColorDIBtoGrayscale(dib, 9, weighted); },
                [=](const Bytes& dib, bool) { return plain_gray(dib, 0, weighted); }});
  for (int grade : {0, 1, 2}) {
    add(all, {"ConvColorDIBtoGrayscale", 1, false, [=](HGLOBAL dib, bool) { return ConvColorDIBtoGrayscale(dib, grade, 0); },
              [=](const Bytes& dib, bool) { return plain_gray(dib, grade, false); }});
    add(all, {"ConvMonoDIBtoGrayscale", 1, false, [=](HGLOBAL dib, bool) { return ConvMonoDIBtoGrayscale(dib, grade); },
              [=](const Bytes& dib, bool) { return plain_mono_gray(dib, grade); }});
  }
  for (int depth : {1, 8})
    for (int level : {20, 33, 50, 60, 87, 100})
      for (bool full : {false, true})
        add(all, {"CleanImage", depth, false, [=](HGLOBAL dib, bool) { return CleanImage(dib, level, full); },
                  [=](const Bytes& dib, bool) { return plain_cleaning(dib, level, full); }, true});
}

const std::vector<Operation>& operations() {
  static const TempFolder folder;
  static const std::vector<Operation> all = [] {
    std::vector<Operation> list;
    add_filters(list, folder);
    add_tones(list);
    add_grays(list);
    return list;
  }();
  return all;
}

// Grey tables of as many levels as there are entries, the first of them white or black.
Bytes with_grays(Bytes dib, bool white_first) {
  const int colors = 1 << header_of(dib).biBitCount;
  for (int k = 0; k < colors; ++k) {
    const int level = (white_first ? colors - 1 - k : k) * 255 / (colors - 1);
    std::fill_n(dib.begin() + 40 + 4 * k, 3, static_cast<uint8_t>(level));
  }
  return dib;
}

struct Named {
  std::string name;
  Bytes dib;
};

// Widths and heights that fill bytes and words exactly or not, edges that meet, tables shorter and longer than the depth implies,
// and images larger or smaller than they state.
std::vector<Named> pictures(const Operation& operation) {
  std::vector<Named> all;
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {3, 4}, {9, 5}, {5, 6}, {33, 17}, {64, 9}, {32, 3}}) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    const Bytes dib = noise(width, height, operation.depth);
    all.push_back({size, dib});
    if (operation.depth <= 8) {
      all.push_back({size + ", white first", with_grays(dib, true)});
      all.push_back({size + ", black first", with_grays(dib, false)});
    }
    if (operation.wants_grays) continue;
    const auto stated = [&](uint32_t bytes) {
      return with_header_changed(dib, [=](BITMAPINFOHEADER& header) { header.biSizeImage = bytes; });
    };
    all.push_back({size + ", 5 bytes stated", stated(5)});
    all.push_back({size + ", 5,000 bytes stated", stated(5000)});
    if (operation.depth == 4 || operation.depth == 8) all.push_back({size + ", 5 colours", with_colors(dib, 5)});
    if (operation.depth == 8) {
      const auto more = [](BITMAPINFOHEADER& header) { header.biClrUsed = 260; };
      all.push_back({size + ", 260 colours", with_header_changed(joined(dib, Bytes(16, 0x35)), more)});
    }
  }
  if (operation.name.starts_with("Convert8to24")) all.push_back({"rows of more than 65,535 bytes", noise(22'000, 3, 8)});
  return all;
}

// The block that an operation makes, of which the source must be the one or the other.
Bytes run(const Operation& operation, const Bytes& dib, bool copied) {
  const Block source = block_of(dib);
  HGLOBAL result = operation.run(source.get(), copied);
  if (!copied) {
    EXPECT_EQ(result, source.get());
    return bytes_of(result);
  }
  EXPECT_TRUE(bytes_of(source.get()) == dib) << "the source is only read";
  return bytes_of(Block(result).get());
}

class ToneOperation : public testing::TestWithParam<Operation> {};

TEST_P(ToneOperation, AgreesWithTheSameOnePixelAtATime) {
  const Operation& operation = GetParam();
  for (const Named& picture : pictures(operation)) {
    EXPECT_TRUE(run(operation, picture.dib, true) == operation.plain(picture.dib, true)) << picture.name;
    if (!operation.works_in_place) continue;
    EXPECT_TRUE(run(operation, picture.dib, false) == operation.plain(picture.dib, false)) << picture.name << ", in place";
  }
}

// Missing bytes are zero, and nothing is written where there is nothing.
TEST_P(ToneOperation, CompletesShortBlocks) {
  const Operation& operation = GetParam();
  Bytes whole = noise(33, 17, operation.depth);
  if (operation.wants_grays) whole = with_grays(whole, true);
  for (size_t there : {size_t{40}, size_t{47}, whole.size() - 33}) {
    const auto end = static_cast<std::ptrdiff_t>(there);
    const Bytes cut(whole.begin(), whole.begin() + end);
    Bytes completed = cut;
    completed.resize(whole.size());
    if (operation.wants_grays) {  // a copy of the block, as long as that
      const Bytes cleaned = run(operation, cut, true), expected = operation.plain(cut, true);
      EXPECT_TRUE(cleaned == expected) << there;
      continue;
    }
    EXPECT_TRUE(run(operation, cut, true) == operation.plain(completed, true)) << there;
    if (!operation.works_in_place) continue;
    const Bytes changed = operation.plain(completed, false);
    EXPECT_TRUE(run(operation, cut, false) == Bytes(changed.begin(), changed.begin() + end)) << there;
  }
}

INSTANTIATE_TEST_SUITE_P(All, ToneOperation, testing::ValuesIn(operations()),
                         [](const auto& test) { return test.param.name; });

TEST(Tone, GivesTheSameBytesOnEveryBuild) {
  uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
  for (const Operation& operation : operations())
    for (const Named& picture : pictures(operation))
      for (uint8_t byte : run(operation, picture.dib, true)) hash = (hash ^ byte) * 0x100000001B3;
  EXPECT_EQ(hash, 15387314504600711419u);
}

}  // namespace
