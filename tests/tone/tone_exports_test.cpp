// What the exports of tone and colour refuse, in which order, and how each reports it.
#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <set>

#include <vorel32.h>

#include "support/dib.h"
#include "support/plain_tone.h"

using namespace test;

namespace {

constexpr int kUntouched = 77;

// Each with good parameters, and with a bad one that is checked after the DIB.

HGLOBAL histogram_of(HGLOBAL dib, bool good, int* error) {
  static const Block histogram = block_of(Bytes(512));
  Block(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));  // forgets the square of the last call
  const int origin[] = {1000, 1000};
  return ComputeHistogram(dib, IMG_COMPUTE, good ? histogram.get() : dead_handle(), origin, error);
}
HGLOBAL looked_up(HGLOBAL dib, bool good, int* error) {
  return ApplyLUT(dib, good ? block_of(Bytes(256)).get() : dead_handle(), 0, error);
}
HGLOBAL convolved(HGLOBAL dib, bool good, int* error) { return Convolve(dib, 0, good ? 3 : 0, 3, nullptr, nullptr, error); }
HGLOBAL color_convolved(HGLOBAL dib, bool good, int* error) {
  return ColorConvolution(dib, 0, 0, 3, good ? 3 : 2, nullptr, nullptr, error);
}
HGLOBAL brightened(HGLOBAL dib, bool good, int*) { return ColorBrightnessContrast(dib, good ? 100 : 101, -100); }
HGLOBAL deepened(HGLOBAL dib, bool, int*) { return Convert8to24(dib); }
HGLOBAL gray(HGLOBAL dib, bool good, int*) { return ConvColorDIBtoGrayscale(dib, good ? 2 : 3, 0); }
HGLOBAL gray_of_bits(HGLOBAL dib, bool good, int*) { return ConvMonoDIBtoGrayscale(dib, good ? 2 : -1); }

struct Export {
  const char* name;
  HGLOBAL (*call)(HGLOBAL dib, bool good, int* error);
  bool tells_thread;  // else its own variable
  std::set<int> depths;
  int other_depth, bad_parameter;  // codes
};

const Export kExports[] = {{"ComputeHistogram", histogram_of, false, {8}, 13, 17},
                           {"ApplyLUT", looked_up, false, {8}, 13, 17},
                           {"Convolve", convolved, false, {8}, 13, 8},
                           {"ColorConvolution", color_convolved, false, {24}, 13, 8},
                           {"ColorBrightnessContrast", brightened, true, {4, 8, 24}, 13, 8},
                           {"Convert8to24", deepened, true, {8}, 13, 0},
                           {"ConvColorDIBtoGrayscale", gray, true, {1, 4, 8, 24}, 13, 8},
                           {"ConvMonoDIBtoGrayscale", gray_of_bits, true, {1}, 18, 8}};

// Calls, and checks that the code is reported in the right place alone.
void expect(const Export& e, HGLOBAL dib, bool good, int code, const std::string& what) {
  SetImgError(7);
  int error = kUntouched;
  for (int* variable : {&error, static_cast<int*>(nullptr)}) {
    HGLOBAL result = e.call(dib, good, variable);
    EXPECT_EQ(result != nullptr, code == 0) << e.name << ", " << what;
    if (e.tells_thread) GlobalFree(result);
  }
  EXPECT_EQ(e.tells_thread ? ImgError() : error, code) << e.name << ", " << what;
  EXPECT_EQ(e.tells_thread ? error : ImgError(), e.tells_thread ? kUntouched : 7) << e.name << ", " << what;
}

Block picture(const BITMAPINFOHEADER& header) { return block_of(with_header(header, Bytes(3000, 0xAB))); }

TEST(ToneExports, CheckTheDibFromItsHeaderToItsSizeAndThenTheRest) {
  for (const Export& e : kExports) {
    expect(e, nullptr, false, 8, "null");
    expect(e, dead_handle(), false, 17, "dead");
    expect(e, block_of(Bytes(39, 40)).get(), false, 8, "header cut");
    BITMAPINFOHEADER header = header_for(0, 9, 2);
    header.biSize = 64;
    header.biCompression = 1;
    expect(e, picture(header).get(), false, 8, "another header");
    header.biSize = 40;
    expect(e, picture(header).get(), false, 18, "compressed");
    header.biCompression = 0;
    expect(e, picture(header).get(), false, e.depths.size() < 4 ? e.other_depth : 19, "2 bits");
    header.biBitCount = static_cast<uint16_t>(*e.depths.begin());
    expect(e, picture(header).get(), false, 19, "no width");
    header.biWidth = 9;
    header.biHeight = 0;
    expect(e, picture(header).get(), false, 19, "no height");
    header.biHeight = 9;
    expect(e, picture(header).get(), false, e.bad_parameter, "parameter");
    for (int depth : {0, 1, 2, 4, 8, 16, 24, 32}) {
      header.biBitCount = static_cast<uint16_t>(depth);
      int code = e.depths.contains(depth) ? 0 : e.other_depth;
      if (depth == 24 && std::string(e.name) == "Convert8to24") code = 31;
      expect(e, picture(header).get(), true, code, std::to_string(depth) + " bits");
    }
  }
  BITMAPINFOHEADER planes = header_for(9, 9, 1);
  planes.biPlanes = 2;
  expect(kExports[7], picture(planes).get(), true, 18, "two planes");
}

// Some check only 16 bits of a size. Negative sizes change no pixel in place, and make copies fail.
TEST(ToneExports, RefuseSizesThatMeanNothing) {
  const struct {
    int width, height;
    uint32_t colors;
    int codes[4];  // in place; for colour filters; where low words count; for greys
  } sizes[] = {{65'536, 1, 1, {0, 19, 19, 0}},    {1, 65'536, 1, {0, 0, 19, 0}},         {-9, 9, 1, {0, 0, 1, 1}},
               {9, -9, 1, {0, 0, 1, 1}},          {INT_MIN, INT_MIN, 1, {0, 19, 19, 1}}, {INT_MAX, INT_MAX, 1, {1, 1, 1, 1}},
               {65'537, 65'537, 1, {1, 1, 1, 1}}, {9, 9, 1u << 30, {1, 1, 1, 1}},        {9, 9, UINT_MAX, {1, 1, 1, 1}}};
  const size_t kinds[std::size(kExports)] = {0, 0, 0, 1, 2, 2, 3, 3};
  for (const auto& size : sizes)
    for (size_t i = 0; i < std::size(kExports); ++i) {
      BITMAPINFOHEADER header = header_for(size.width, size.height, *kExports[i].depths.begin());
      header.biClrUsed = size.colors;
      expect(kExports[i], picture(header).get(), true, size.codes[kinds[i]],
             std::to_string(size.width) + " x " + std::to_string(size.height));
    }
}

TEST(ToneExports, LookAtTheirOtherArgumentsFirst) {
  int error = kUntouched;
  const auto told = [&](HGLOBAL result) { return result == nullptr ? std::exchange(error, kUntouched) : -1; };
  const Block dib = picture(header_for(9, 9, 8)), block = block_of(Bytes(512));
  const int origin[] = {0, 0};
  EXPECT_EQ(told(ComputeHistogram(nullptr, 33, nullptr, nullptr, &error)), 0) << "no such operation";
  EXPECT_EQ(told(ComputeLUT(nullptr, 29, block.get(), 0, 0, &error)), 0);
  EXPECT_EQ(told(ComputeLUT(nullptr, IMG_COMPUTE, nullptr, 0, 0, &error)), 8);
  EXPECT_EQ(told(ComputeHistogram(dib.get(), IMG_COMPUTE, block.get(), nullptr, &error)), 8);
  EXPECT_EQ(told(ComputeHistogram(dead_handle(), IMG_COMPUTE, nullptr, origin, &error)), 8);
  EXPECT_EQ(told(ApplyLUT(dead_handle(), nullptr, 0, &error)), 8);
  const Block bits = picture(header_for(9, 9, 1));
  for (const int grade : {-1, 3}) EXPECT_EQ(ConvMonoDIBtoGrayscale(bits.get(), grade), nullptr) << grade;
}

// Both filters check kernels alike; a refused picture does not change. Files exist unless they would be empty.
void expect_filter(const PlainFilter& filter, bool is_good, size_t bytes_missing = 0) {
  static const TempFolder folder;
  static int files = 0;
  for (bool colored : {false, true}) {
    Bytes file = kernel_file(filter.kernel, colored ? 2 : 4);
    file.resize(file.size() - bytes_missing);
    const std::string path = folder.path(std::to_string(++files));
    if (filter.type == 2 && !file.empty()) write_file(path, file);
    const std::vector<short> shorts(filter.kernel.begin(), filter.kernel.end());  // null if there are no numbers
    const Bytes dib = noise(9, 9, colored ? 24 : 8);
    const Block block = block_of(dib);
    int error = kUntouched;
    HGLOBAL result = colored
                         ? ColorConvolution(block.get(), 0, 0, static_cast<short>(filter.type), filter.size, path.c_str(),
                                            shorts.data(), &error)
                         : Convolve(block.get(), 0, filter.type, filter.size, path.c_str(), filter.kernel.data(), &error);
    SCOPED_TRACE(testing::Message() << "type " << filter.type << ", size " << filter.size << ", "
                                    << testing::PrintToString(filter.kernel) << (colored ? ", colour" : ", grey"));
    EXPECT_EQ(result, is_good ? block.get() : nullptr);
    EXPECT_EQ(error, is_good ? 0 : 8);
    EXPECT_EQ(bytes_of(block.get()) == dib, !is_good);
  }
}

TEST(Filters, RefuseTypesSizesAndKernels) {
  const std::vector<int> ones(50, 1), sobel = {-1, 0, 1, -2, 0, 2, -1, 0, 1, 0};
  for (int type : {-1, 0, 1, 2, 3, 4, 5, 6, 7})
    for (int size = 0; size < 9; ++size)
      expect_filter({type, size, ones},
                    type >= 1 && type <= 6 && (size == 3 || size == 5 || (size == 7 && (type == 1 || type == 3))));
  const auto pair = [](int first, int second) { return std::vector<int>{first, 0, 0, 0, second, 0, 0, 0, 0, 1}; };
  for (int type : {1, 2}) {
    expect_filter({type, 3, {}}, false);
    for (const auto& [first, second] : {std::pair{-127, 127}, {127, 0}, {64, 63}})
      expect_filter({type, 3, pair(first, second)}, true);
    for (const auto& [first, second] : {std::pair{128, 0}, {-128, 0}, {64, 64}, {-64, -64}, {SHRT_MIN, 0}})
      expect_filter({type, 3, pair(first, second)}, false);
  }
  expect_filter({2, 3, sobel}, true);
  expect_filter({2, 3, sobel}, false, 1);
  EXPECT_EQ(Convolve(block_of(noise(9, 9, 8)).get(), 0, 2, 3, nullptr, nullptr, nullptr), nullptr) << "no name";
}

// Zero pixels behind the end of a block are worked on once and copied; a block that has them shows each of them worked on.
TEST(ToneExports, CountShortBlocksAsCompletedWithZeros) {
  std::vector<int> weights(50);
  std::iota(weights.begin(), weights.end(), -11);
  const std::vector<short> short_weights(weights.begin(), weights.end());
  Bytes table = noise(64, 4, 8);
  table.erase(table.begin(), table.end() - 256);
  const Block levels = block_of(table);
  const struct {
    const char* name;
    int depth;
    std::function<HGLOBAL(HGLOBAL)> call;
  } calls[] = {{"levels", 8, [&](HGLOBAL dib) { return ApplyLUT(dib, levels.get(), 1, nullptr); }},
               {"levels in place", 8, [&](HGLOBAL dib) { return ApplyLUT(dib, levels.get(), 0, nullptr); }},
               {"components", 24, [](HGLOBAL dib) { return ColorBrightnessContrast(dib, 30, 40); }},
               {"colors", 8, [](HGLOBAL dib) { return Convert8to24(dib); }},
               {"grays", 24, [](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 0, 1); }},
               {"grays of bits", 1, [](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 2, 0); }},
               {"inverted", 1, [](HGLOBAL dib) { return ConvMonoDIBtoGrayscale(dib, 1); }},
               {"by 3", 8, [&](HGLOBAL dib) { return Convolve(dib, 1, 1, 3, nullptr, weights.data(), nullptr); }},
               {"by 7 in place", 8, [](HGLOBAL dib) { return Convolve(dib, 0, 3, 7, nullptr, nullptr, nullptr); }},
               {"by 5", 8, [](HGLOBAL dib) { return Convolve(dib, 1, 6, 5, nullptr, nullptr, nullptr); }},
               {"colors by 5", 24, [](HGLOBAL dib) { return ColorConvolution(dib, 1, 1, 6, 5, nullptr, nullptr, nullptr); }},
               {"thresholds", 8, [](HGLOBAL dib) { return Halftone(dib, 2, 60, nullptr); }},
               {"thresholds", 24, [](HGLOBAL dib) { return Halftone(dib, 2, 60, nullptr); }},
               {"one threshold", 4, [](HGLOBAL dib) { return Halftone(dib, 0, 60, nullptr); }}};
  for (const auto& [name, depth, call] : calls)
    for (const auto& [width, height] : {std::pair{30, 50}, {500, 2}, {700, 1}, {3, 90}, {1, 1}}) {
      const Bytes whole = noise(width, height, depth);
      const size_t head = whole.size() - stride_of(width, depth) * static_cast<size_t>(height);
      for (size_t there : {size_t{40}, head, head + 1, head + stride_of(width, depth) + 2, whole.size() - 3}) {
        Bytes bytes = whole;
        bytes.resize(there);
        const Block cut_off = block_of(bytes);
        bytes.resize(whole.size());
        const Block completed = block_of(bytes);
        HGLOBAL result = call(cut_off.get()), expected = call(completed.get());
        ASSERT_NE(expected, nullptr) << name;
        Bytes compared = bytes_of(expected);
        if (expected == completed.get()) compared.resize(there);
        EXPECT_TRUE(bytes_of(result) == compared) << name << ", " << width << " x " << height << ", " << there << " bytes";
        if (result != cut_off.get()) GlobalFree(result);
        if (expected != completed.get()) GlobalFree(expected);
      }
    }
}

// No result and no code. Wrong sizes do no harm: nothing outside the block is read.
TEST(CleanImage, RefusesInSilence) {
  const auto cleaned = [](const Bytes& dib, int level) {
    SetImgError(7);
    const Block result(CleanImage(block_of(dib).get(), level, 1));
    EXPECT_EQ(ImgError(), 7);
    EXPECT_EQ(GlobalSize(result.get()), result ? dib.size() : 0);
    return static_cast<bool>(result);
  };
  const auto all_black = [](int width, int height, int depth) {
    return with_header(header_for(width, height, depth), Bytes(1100));
  };
  for (int depth : {1, 8}) {
    for (int level : {20, 100}) EXPECT_TRUE(cleaned(all_black(9, 9, depth), level));
    for (int level : {19, 101, 0, INT_MIN, INT_MAX}) EXPECT_FALSE(cleaned(all_black(9, 9, depth), level));
    Bytes colored = all_black(9, 9, depth);
    colored[40 + (size_t{4} << depth) - 2] = 1;
    EXPECT_FALSE(cleaned(colored, 50));
    for (const auto& [width, height] : {std::pair{-9, 9}, {9, -9}, {INT_MIN, INT_MIN}, {0, 9}, {9, 0}, {64, 900}})
      EXPECT_TRUE(cleaned(all_black(width, height, depth), 50)) << width;
    for (const auto& [width, height] : {std::pair{INT_MAX, INT_MAX}, {32, INT_MAX}})
      EXPECT_FALSE(cleaned(all_black(width, height, depth), 50));
  }
  EXPECT_FALSE(cleaned(with_header_changed(all_black(9, 9, 8), [](BITMAPINFOHEADER& header) { header.biPlanes = 2; }), 50));
  for (int depth : {0, 4, 16, 24, 32}) EXPECT_FALSE(cleaned(all_black(9, 9, depth), 50)) << depth;
  EXPECT_FALSE(cleaned(Bytes(39, 40), 50));
  for (HGLOBAL none : {HGLOBAL{nullptr}, dead_handle()}) EXPECT_EQ(CleanImage(none, 50, 1), nullptr);
}

}  // namespace
