// What the exports of tone and colour refuse, in which order, and how each tells.
#include <climits>
#include <functional>
#include <gtest/gtest.h>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

constexpr int kUntouched = 77;

// An export with good parameters and with one that is refused after everything that can be wrong with the DIB.
struct Export {
  const char* name;
  bool tells_thread;  // else its own variable
  int depth;
  std::function<HGLOBAL(HGLOBAL dib, bool good, int* error)> call;
  int bad_parameter;
  std::vector<std::pair<int, int>> other_depths;  // and their codes; not listed are those that it takes
};

const std::vector<std::pair<int, int>> kOnly8 = {{0, 13}, {1, 13}, {2, 13}, {4, 13}, {16, 13}, {24, 13}, {32, 13}};

const Export kExports[] = {
    {"ComputeHistogram", false, 8,
     [](HGLOBAL dib, bool good, int* error) {
       const Block histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));
       const int origin[] = {1000, 1000};
       return ComputeHistogram(dib, IMG_COMPUTE, good ? histogram.get() : dead_handle(), origin, error);
     },
     17, kOnly8},
    {"ApplyLUT", false, 8,
     [](HGLOBAL dib, bool good, int* error) {
       return ApplyLUT(dib, good ? block_of(Bytes(256)).get() : dead_handle(), 0, error);
     },
     17, kOnly8},
    {"ColorBrightnessContrast",
     true,
     24,
     [](HGLOBAL dib, bool good, int*) { return ColorBrightnessContrast(dib, good ? 100 : 101, -100); },
     8,
     {{0, 13}, {1, 13}, {2, 13}, {16, 13}, {32, 13}}},
    {"Convert8to24",
     true,
     8,
     [](HGLOBAL dib, bool, int*) { return Convert8to24(dib); },
     0,
     {{0, 13}, {1, 13}, {2, 13}, {4, 13}, {16, 13}, {24, 31}, {32, 13}}},
    {"Convolve", false, 8,
     [](HGLOBAL dib, bool good, int* error) { return Convolve(dib, 0, good ? 3 : 0, 3, nullptr, nullptr, error); }, 8,
     kOnly8},
    {"ColorConvolution",
     false,
     24,
     [](HGLOBAL dib, bool good, int* error) {
       return ColorConvolution(dib, 0, 0, 3, good ? 3 : 2, nullptr, nullptr, error);
     },
     8,
     {{0, 13}, {1, 13}, {2, 13}, {4, 13}, {8, 13}, {16, 13}, {32, 13}}},
    {"ConvColorDIBtoGrayscale",
     true,
     1,
     [](HGLOBAL dib, bool good, int*) { return ConvColorDIBtoGrayscale(dib, good ? 2 : 3, 0); },
     8,
     {{0, 13}, {2, 13}, {16, 13}, {32, 13}}},
    {"ConvMonoDIBtoGrayscale",
     true,
     1,
     [](HGLOBAL dib, bool good, int*) { return ConvMonoDIBtoGrayscale(dib, good ? 2 : -1); },
     8,
     {{0, 18}, {2, 18}, {4, 18}, {8, 18}, {16, 18}, {24, 18}, {32, 18}}},
};

// Calls and looks where the code is told, and that it is not told elsewhere.
void expect(const Export& e, HGLOBAL dib, bool good, int code, const std::string& what) {
  SetImgError(7);
  int error = kUntouched;
  HGLOBAL result = e.call(dib, good, &error);
  EXPECT_EQ(e.tells_thread ? ImgError() : error, code) << e.name << ", " << what;
  EXPECT_EQ(e.tells_thread ? error : ImgError(), e.tells_thread ? kUntouched : 7) << e.name << ", " << what;
  EXPECT_EQ(result != nullptr, code == 0) << e.name << ", " << what;
  if (e.tells_thread) GlobalFree(result);
  SetImgError(7);
  HGLOBAL untold = e.call(dib, good, nullptr);
  EXPECT_EQ(untold != nullptr, code == 0) << e.name << ", " << what;
  if (e.tells_thread) GlobalFree(untold);
}

Bytes picture(int width, int height, int depth) { return with_header(header_for(width, height, depth), Bytes(3000, 0xAB)); }

TEST(ToneExports, CheckTheDibFromItsHeaderToItsSizeAndThenTheRest) {
  for (const Export& e : kExports) {
    expect(e, nullptr, false, 8, "null");
    expect(e, dead_handle(), false, 17, "dead");
    expect(e, block_of(Bytes(39, 40)).get(), false, 8, "header cut");
    BITMAPINFOHEADER header = header_for(0, 9, 2);
    header.biSize = 64;
    header.biCompression = 1;
    const auto next = [&](int code, const char* what) {
      expect(e, block_of(with_header(header, Bytes(3000, 0xAB))).get(), false, code, what);
    };
    next(8, "another header");
    header.biSize = 40;
    next(18, "compressed");
    header.biCompression = 0;
    // Of the greys one calls another depth compressed, and the other looks at the size first.
    next(e.depth != 1 ? 13 : e.other_depths[1].second == 18 ? 18 : 19, "2 bits");
    header.biBitCount = static_cast<uint16_t>(e.depth);
    next(19, "no width");
    header.biWidth = 9;
    header.biHeight = 0;
    next(19, "no height");
    header.biHeight = 9;
    next(e.bad_parameter, "parameter");
    expect(e, block_of(with_header(header, Bytes(3000, 0xAB))).get(), true, 0, "good");
  }
}

TEST(ToneExports, RefuseOtherDepths) {
  for (const Export& e : kExports)
    for (int depth : {0, 1, 2, 4, 8, 16, 24, 32}) {
      int code = 0;
      for (const auto& [other, told] : e.other_depths)
        if (other == depth) code = told;
      expect(e, block_of(picture(9, 9, depth)).get(), true, code, std::to_string(depth) + " bits");
    }
  Bytes planes = with_header_changed(picture(9, 9, 1), [](BITMAPINFOHEADER& header) { header.biPlanes = 2; });
  expect(kExports[7], block_of(planes).get(), true, 18, "two planes");
}

// Some look at 16 bits of a size. Negative ones give no pixels where the picture itself is changed, and no copy.
TEST(ToneExports, RefuseSizesThatMeanNothing) {
  struct Size {
    int width, height;
    int low_words, low_width, in_place, gray;  // codes by what is looked at and made
  };
  for (const Size& size : {Size{65'536, 1, 19, 19, 0, 0},
                           {1, 65'536, 19, 0, 0, 0},
                           {-9, 9, 1, 0, 0, 1},
                           {9, -9, 1, 0, 0, 1},
                           {INT_MAX, INT_MAX, 1, 1, 1, 1},
                           {65'537, 65'537, 1, 1, 1, 1},
                           {INT_MIN, INT_MIN, 19, 19, 0, 1}})
    for (const Export& e : kExports) {
      const std::string name = e.name;
      const int code = name == "ColorBrightnessContrast" || name == "Convert8to24" ? size.low_words
                       : name == "ColorConvolution"                                ? size.low_width
                       : e.tells_thread                                            ? size.gray
                                                                                   : size.in_place;
      expect(e, block_of(picture(size.width, size.height, e.depth)).get(), true, code,
             std::to_string(size.width) + " x " + std::to_string(size.height));
    }
  for (const Export& e : kExports)
    for (uint32_t colors : {1u << 30, 0xFFFFFFFFu}) {
      const auto claim = [=](BITMAPINFOHEADER& header) { header.biClrUsed = colors; };
      expect(e, block_of(with_header_changed(picture(9, 9, e.depth), claim)).get(), true, 1, "a table of 4 GB");
    }
}

TEST(ToneExports, DoNothingForOtherOperations) {
  int error = kUntouched;
  EXPECT_EQ(ComputeHistogram(nullptr, 33, nullptr, nullptr, &error), nullptr);
  EXPECT_EQ(error, 0);
  error = kUntouched;
  EXPECT_EQ(ComputeLUT(nullptr, 29, dead_handle(), 0, 0, &error), nullptr);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(ComputeLUT(nullptr, IMG_COMPUTE, nullptr, 0, 0, &error), nullptr);
  EXPECT_EQ(error, 8);
  const Block dib = block_of(picture(9, 9, 8)), histogram = block_of(Bytes(512));
  EXPECT_EQ(ComputeHistogram(dib.get(), IMG_COMPUTE, histogram.get(), nullptr, &error), nullptr);
  EXPECT_EQ(error, 8);
  const int origin[] = {0, 0};
  for (HGLOBAL first : {HGLOBAL{nullptr}, dead_handle()}) {
    EXPECT_EQ(ComputeHistogram(first, IMG_COMPUTE, nullptr, origin, &error), nullptr);
    EXPECT_EQ(error, 8);
  }
  EXPECT_EQ(ApplyLUT(dead_handle(), nullptr, 0, &error), nullptr);
  EXPECT_EQ(error, 8) << "both handles are looked at before either is locked";
}

// Types, sizes and kernels, which both filtering exports judge alike.
TEST(Filters, RefuseKernelsAndLeaveThePictureAlone) {
  const TempFolder folder;
  const std::string ints = folder.path("ints"), shorts = folder.path("shorts"), missing = folder.path("missing");
  const std::vector<int> sobel = {-1, 0, 1, -2, 0, 2, -1, 0, 1, 0};
  struct Case {
    const char* what;
    int type, size;
    std::vector<int> kernel;
    size_t bytes_missing = 0;
    bool is_good = false;
  };
  const std::vector<int> seven(50, 1), five(26, 1);
  const Case cases[] = {
      {"type 0", 0, 3, {}},
      {"type 7", 7, 3, {}},
      {"type -1", -1, 3, {}},
      {"size 2", 3, 2, {}},
      {"size 4", 3, 4, {}},
      {"size 6", 3, 6, {}},
      {"size 8", 3, 8, {}},
      {"weighted 7", 4, 7, {}},
      {"sharpen 7", 5, 7, {}},
      {"sharpen 4", 6, 4, {}},
      {"box 7", 3, 7, {}, 0, true},
      {"sobel", 1, 3, sobel, 0, true},
      {"seven", 1, 7, seven, 0, true},
      {"four", 1, 4, seven},
      {"six", 1, 6, seven},
      {"no kernel", 1, 3, {}},
      {"128", 1, 3, {0, 0, 0, 0, 128, 0, 0, 0, 0, 1}},
      {"-128", 1, 3, {0, 0, 0, 0, -128, 0, 0, 0, 0, 1}},
      {"2 x 64", 1, 3, {64, 0, 0, 0, 64, 0, 0, 0, 0, 1}},
      {"2 x -64", 1, 3, {-64, 0, 0, 0, -64, 0, 0, 0, 0, 1}},
      {"127 and -127", 1, 3, {-127, 0, 0, 0, 127, 0, 0, 0, 0, 1}, 0, true},
      {"SHRT_MIN", 1, 3, {SHRT_MIN, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
      {"file", 2, 3, sobel, 0, true},
      {"file of 5", 2, 5, five, 0, true},
      {"file of 7", 2, 7, seven},
      {"file of 4", 2, 4, seven},
      {"file of 128", 2, 3, {0, 0, 0, 0, 128, 0, 0, 0, 0, 1}},
      {"file too short", 2, 3, sobel, 1},
      {"empty file", 2, 3, {}},
      {"no file", 2, -3, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Bytes whole_ints, whole_shorts;
    for (int value : c.kernel)
      for (size_t i = 0; i < 4; ++i) {
        whole_ints.push_back(static_cast<uint8_t>(value >> 8 * i));
        if (i < 2) whole_shorts.push_back(static_cast<uint8_t>(value >> 8 * i));
      }
    whole_ints.resize(whole_ints.size() - c.bytes_missing);
    whole_shorts.resize(whole_shorts.size() - c.bytes_missing);
    write_file(ints, whole_ints);
    write_file(shorts, whole_shorts);
    const std::vector<short> short_kernel(c.kernel.begin(), c.kernel.end());
    const bool has_file = c.size > 0;
    for (bool colored : {false, true}) {
      const Bytes dib = noise(9, 9, colored ? 24 : 8);
      const Block block = block_of(dib);
      int error = kUntouched;
      const int size = std::abs(c.size);
      const char* file = c.type != 2 ? nullptr : has_file ? (colored ? shorts : ints).c_str() : missing.c_str();
      HGLOBAL result =
          colored ? ColorConvolution(block.get(), 0, 0, static_cast<short>(c.type), size, file,
                                     c.kernel.empty() ? nullptr : short_kernel.data(), &error)
                  : Convolve(block.get(), 0, c.type, size, file, c.kernel.empty() ? nullptr : c.kernel.data(), &error);
      EXPECT_EQ(result, c.is_good ? block.get() : nullptr) << colored;
      EXPECT_EQ(error, c.is_good ? 0 : 8) << colored;
      EXPECT_EQ(bytes_of(block.get()) == dib, !c.is_good) << colored;
    }
  }
  EXPECT_EQ(Convolve(block_of(noise(9, 9, 8)).get(), 0, 2, 3, nullptr, nullptr, nullptr), nullptr) << "no name";
}

TEST(CleanImage, GivesNothingAndNoCodeForWhatItDoesNotClean) {
  const Bytes black_first = {0, 0, 0, 0, 255, 255, 255, 0}, red = {0, 0, 0, 0, 0, 0, 255, 0};
  const Bytes bits = with_header(header_for(9, 9, 1), joined(black_first, Bytes(36)));
  const Bytes bytes = with_header(header_for(9, 9, 8), Bytes(1024 + 108));
  const auto cleaned = [](const Bytes& dib, int level) {
    SetImgError(7);
    const bool is_cleaned(Block(CleanImage(block_of(dib).get(), level, 1)));
    EXPECT_EQ(ImgError(), 7);
    return is_cleaned;
  };
  for (const Bytes& dib : {bits, bytes}) {
    for (int level : {20, 100}) EXPECT_TRUE(cleaned(dib, level));
    for (int level : {19, 101, 0, INT_MIN, INT_MAX}) EXPECT_FALSE(cleaned(dib, level));
  }
  EXPECT_FALSE(cleaned(with_header(header_for(9, 9, 1), joined(red, Bytes(36))), 50));
  Bytes last_is_red = bytes;
  last_is_red[40 + 255 * 4 + 2] = 1;
  EXPECT_FALSE(cleaned(last_is_red, 50));
  EXPECT_FALSE(cleaned(with_header_changed(bytes, [](BITMAPINFOHEADER& header) { header.biPlanes = 2; }), 50));
  for (int depth : {0, 4, 16, 24, 32}) EXPECT_FALSE(cleaned(picture(9, 9, depth), 50)) << depth;
  EXPECT_EQ(CleanImage(nullptr, 50, 1), nullptr);
  EXPECT_EQ(CleanImage(dead_handle(), 50, 1), nullptr);
  EXPECT_FALSE(cleaned(Bytes(39, 40), 50));
}

// Sizes that lie are no worse: the copy is as long as the block, and so is what is looked at.
TEST(CleanImage, StaysInsideTheBlock) {
  for (int depth : {1, 8})
    for (const auto& [width, height] : {std::pair{INT_MAX, INT_MAX},
                                        {-9, 9},
                                        {9, -9},
                                        {32, INT_MAX},
                                        {INT_MAX, 3},
                                        {INT_MIN, INT_MIN},
                                        {0, 9},
                                        {9, 0},
                                        {64, 20}}) {
      const Bytes dib = with_header(header_for(width, height, depth), Bytes((size_t{4} << depth) + 70));
      const Block result(CleanImage(block_of(dib).get(), 50, 1));
      EXPECT_EQ(GlobalSize(result.get()), result ? dib.size() : 0);
    }
}

}  // namespace
