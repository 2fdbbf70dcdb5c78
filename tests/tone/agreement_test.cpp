// Every operation that returns a picture, over every kind of picture of its depth, copied and in place, against the same done one
// pixel at a time.
#include <algorithm>
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
};

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

void add_filters(std::vector<Operation>& all, const TempFolder& folder) {
  for (const PlainFilter& filter : filters()) {
    const std::string number = std::to_string(all.size()), ints = folder.path("i" + number),
                      shorts = folder.path("s" + number);
    write_file(ints, kernel_file(filter.kernel, 4));
    write_file(shorts, kernel_file(filter.kernel, 2));
    const auto file = [=](const std::string& path) { return filter.type == 2 ? path.c_str() : nullptr; };
    all.push_back({"Convolve " + number, 8, true,
                   [=](HGLOBAL dib, bool copied) {
                     return Convolve(dib, copied, filter.type, filter.size, file(ints), filter.kernel.data(), nullptr);
                   },
                   [=](const Bytes& dib, bool copied) { return plain_convolution(dib, copied, filter); }});
    for (int mode : {0, 1})
      all.push_back({"ColorConvolution " + number, 24, true,
                     [=](HGLOBAL dib, bool copied) {
                       const std::vector<short> kernel(filter.kernel.begin(), filter.kernel.end());
                       return ColorConvolution(dib, copied, mode, static_cast<short>(filter.type), filter.size, file(shorts),
                                               kernel.data(), nullptr);
                     },
                     [=](const Bytes& dib, bool copied) { return plain_color_convolution(dib, copied, mode, filter); }});
  }
}

void add_tones(std::vector<Operation>& all) {
  const Bytes table = plain_table({}, 90, -20);
  all.push_back({"ApplyLUT", 8, true,
                 [=](HGLOBAL dib, bool copied) { return ApplyLUT(dib, block_of(table).get(), copied, nullptr); },
                 [=](const Bytes& dib, bool copied) { return plain_lookup(dib, table, copied); }});
  all.push_back({"Convert8to24", 8, false, [](HGLOBAL dib, bool) { return Convert8to24(dib); },
                 [](const Bytes& dib, bool) { return plain_24_bits(dib); }});
  for (int depth : {4, 8, 24})
    for (const auto& [brightness, contrast] :
         {std::pair<short, short>{0, 0}, {100, 0}, {0, 100}, {37, -100}, {-61, 33}, {-9, -77}})
      all.push_back({"ColorBrightnessContrast", depth, false,
                     [=](HGLOBAL dib, bool) { return ColorBrightnessContrast(dib, brightness, contrast); },
                     [=](const Bytes& dib, bool) { return plain_brightness(dib, brightness, contrast); }});
}

void add_grays(std::vector<Operation>& all) {
  for (int depth : {1, 4, 8, 24})
    for (int grade : {0, 1, 2})
      all.push_back({"ConvColorDIBtoGrayscale", depth, false,
                     [=](HGLOBAL dib, bool) { return ConvColorDIBtoGrayscale(dib, grade, grade); },
                     [=](const Bytes& dib, bool) { return plain_gray(dib, grade, grade != 0); }});
  for (int grade : {0, 1, 2})
    all.push_back({"ConvMonoDIBtoGrayscale", 1, false, [=](HGLOBAL dib, bool) { return ConvMonoDIBtoGrayscale(dib, grade); },
                   [=](const Bytes& dib, bool) { return plain_mono_gray(dib, grade); }});
  for (int depth : {1, 8})
    for (int level : {20, 33, 50, 60, 87, 100})
      for (bool full : {false, true})
        all.push_back({"CleanImage", depth, false, [=](HGLOBAL dib, bool) { return CleanImage(dib, level, full); },
                       [=](const Bytes& dib, bool) { return plain_cleaning(dib, level, full); }});
}

struct Named {
  std::string name;
  Bytes dib;
};

// Widths and heights that do and do not fill bytes and words, pictures of one or two pixels, grey tables, tables shorter and longer
// than the depth implies, stated sizes that are too small or too large, and blocks that end early.
std::vector<Named> pictures(int depth) {
  std::vector<Named> all;
  for (const auto& [width, height] :
       {std::pair{1, 1}, {2, 2}, {3, 4}, {9, 5}, {5, 6}, {33, 17}, {64, depth == 1 ? 150 : 9}, {32, 3}}) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    const auto add = [&](const char* what, const Bytes& dib) { all.push_back({size + what, dib}); };
    const Bytes dib = noise(width, height, depth);
    const auto changed = [&](const Bytes& bytes, auto field, uint32_t value) {
      return with_header_changed(bytes, [=](BITMAPINFOHEADER& header) { header.*field = value; });
    };
    add("", dib);
    add(", 5 bytes stated", changed(dib, &BITMAPINFOHEADER::biSizeImage, 5));
    add(", 5,000 bytes stated", changed(dib, &BITMAPINFOHEADER::biSizeImage, 5000));
    for (size_t there : {size_t{40}, size_t{43}, std::max<size_t>(dib.size(), 73) - 33})
      add(", cut", Bytes(dib.begin(), dib.begin() + static_cast<std::ptrdiff_t>(there)));
    if (depth == 4 || depth == 8) add(", 5 colours", with_colors(dib, 5));
    if (depth == 8) add(", 260 colours", changed(joined(dib, Bytes(16, 0x35)), &BITMAPINFOHEADER::biClrUsed, 260));
    for (bool white_first : {false, true}) {
      Bytes gray = dib;
      for (int k = 0, colors = 1 << depth; depth <= 8 && k < colors; ++k)
        std::fill_n(gray.begin() + 40 + 4 * k, 3,
                    static_cast<uint8_t>((white_first ? colors - 1 - k : k) * 255 / (colors - 1)));
      add(white_first ? ", white first" : ", black first", gray);
      add(", cut", Bytes(gray.begin(), gray.end() - 3));
      add(", more behind", joined(gray, Bytes(9, 0xFF)));
    }
  }
  if (depth == 8) all.push_back({"rows of more than 65,535 bytes at 24 bits", noise(22'000, 3, 8)});
  return all;
}

// The block that an operation returns: its source, changed, or a new one.
Bytes run(const Operation& operation, const Bytes& dib, bool copied) {
  const Block source = block_of(dib);
  HGLOBAL result = operation.run(source.get(), copied);
  EXPECT_EQ(result == source.get(), !copied);
  if (!copied) return bytes_of(result);
  EXPECT_TRUE(bytes_of(source.get()) == dib) << "the source is only read";
  return bytes_of(Block(result).get());
}

// Says where results begin to differ; they are too long to print.
void expect_same(const Bytes& result, const Bytes& expected, const char* how) {
  EXPECT_EQ(result.size(), expected.size()) << how;
  const auto [at, other] = std::ranges::mismatch(result, expected);
  if (at == result.end() || other == expected.end()) return;
  ADD_FAILURE() << how << ": byte " << at - result.begin() << " is " << int{*at} << " instead of " << int{*other};
}

TEST(Tone, AgreesWithTheSameOnePixelAtATimeOnEveryBuild) {
  const TempFolder folder;
  std::vector<Operation> operations;
  add_filters(operations, folder);
  add_tones(operations);
  add_grays(operations);
  Digest digest;
  for (const Operation& operation : operations)
    for (const auto& [name, dib] : pictures(operation.depth)) {
      const Bytes result = run(operation, dib, true);
      SCOPED_TRACE(operation.name + ", " + std::to_string(operation.depth) + " bits, " + name);
      expect_same(result, operation.plain(dib, true), "copied");
      if (operation.works_in_place) expect_same(run(operation, dib, false), operation.plain(dib, false), "in place");
      digest.add(result);
    }
  EXPECT_EQ(digest.value, 14203820896009046385u) << "agrees with the plain versions, but not with other builds";
}

}  // namespace
