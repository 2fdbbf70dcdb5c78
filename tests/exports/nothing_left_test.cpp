// Every export that needs no windowing system, on good and on bad input: no block, lock or open file is left behind.
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>

#include <vorel32.h>

#include "support/dib.h"
#include "support/heap.h"

using namespace test;

namespace {

// Files that this process has open, as far as the system shows them.
size_t open_files() {
#ifdef __linux__
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
#else
  DWORD handles = 0;
  GetProcessHandleCount(GetCurrentProcess(), &handles);
  return handles;
#endif
}

struct Export {
  const char* name;
  std::function<void(HGLOBAL dib, const std::string& path)> call;
};

// For exports that leave a lock on some of what they refuse, but nothing else.
void run_and_unlock(HGLOBAL result, HGLOBAL dib) {
  if (result == nullptr) take_locks_back(dib);
  GlobalFree(result);
}

const Export kExports[] = {
    {"LoadDIBFromFile", [](HGLOBAL, auto& path) { Block(LoadDIBFromFile(path.c_str())); }},
    {"SaveDIB", [](HGLOBAL dib, auto& path) { SaveDIB((path + ".saved").c_str(), dib); }},
    {"GetImageFormat", [](HGLOBAL, auto& path) { GetImageFormat(path.c_str()); }},
    {"CompressDIB", [](HGLOBAL dib, auto&) { Block(CompressDIB(dib)); }},
    {"ExpandCompressedDIB", [](HGLOBAL dib, auto&) { Block(ExpandCompressedDIB(Block(CompressDIB(dib)).get())); }},
    {"ComputeHistogram",
     [](HGLOBAL dib, auto&) {
       const Block histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));
       const int origin[] = {5, 5};
       ComputeHistogram(dib, IMG_COMPUTE, histogram.get(), origin, nullptr);
     }},
    {"ApplyLUT",
     [](HGLOBAL dib, auto&) {
       const Block table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, nullptr));
       Block(ApplyLUT(dib, table.get(), 1, nullptr));
     }},
    {"ColorBrightnessContrast", [](HGLOBAL dib, auto&) { Block(ColorBrightnessContrast(dib, 9, 9)); }},
    {"Convert8to24", [](HGLOBAL dib, auto&) { Block(Convert8to24(dib)); }},
    {"Convolve",
     [](HGLOBAL dib, auto& path) {
       Block(Convolve(dib, 1, 3, 3, nullptr, nullptr, nullptr));
       Block(Convolve(dib, 1, 2, 3, path.c_str(), nullptr, nullptr));
     }},
    {"ColorConvolution",
     [](HGLOBAL dib, auto&) {
       Block(ColorConvolution(Block(Convert8to24(dib)).get(), 1, 1, 3, 3, nullptr, nullptr, nullptr));
     }},
    {"ConvColorDIBtoGrayscale", [](HGLOBAL dib, auto&) { Block(ConvColorDIBtoGrayscale(dib, 2, 1)); }},
    {"ConvMonoDIBtoGrayscale", [](HGLOBAL dib, auto&) { Block(ConvMonoDIBtoGrayscale(dib, 1)); }},
    {"CleanImage", [](HGLOBAL dib, auto&) { Block(CleanImage(Block(ConvColorDIBtoGrayscale(dib, 0, 1)).get(), 50, 1)); }},
    {"DitherFS4", [](HGLOBAL dib, auto&) { run_and_unlock(DitherFS4(dib, 4), dib); }},
    {"DitherJJN", [](HGLOBAL dib, auto&) { run_and_unlock(DitherJJN(dib, 1), dib); }},
    {"DitherSmooth", [](HGLOBAL dib, auto&) { run_and_unlock(DitherSmooth(dib, 4), dib); }},
    {"DitherSharp", [](HGLOBAL dib, auto&) { run_and_unlock(DitherSharp(dib, 1), dib); }},
    {"Halftone",
     [](HGLOBAL dib, auto&) {
       for (const WORD method : {WORD{0}, WORD{1}, WORD{2}}) run_and_unlock(Halftone(dib, method, 5, nullptr), dib);
     }},
    {"InvertDIBPalette", [](HGLOBAL dib, auto&) { InvertDIBPalette(dib); }},
    {"InvertMonoDIB", [](HGLOBAL dib, auto&) { InvertMonoDIB(dib); }},
    {"RotateDIB90", [](HGLOBAL dib, auto&) { Block(RotateDIB90(dib)); }},
    {"RotateDIB180", [](HGLOBAL dib, auto&) { Block(RotateDIB180(dib)); }},
    {"RotateDIB270", [](HGLOBAL dib, auto&) { Block(RotateDIB270(dib)); }},
    {"FlipDIBVertical", [](HGLOBAL dib, auto&) { Block(FlipDIBVertical(dib)); }},
    {"FlipDIBHorizontal", [](HGLOBAL dib, auto&) { Block(FlipDIBHorizontal(dib)); }},
    {"RotateDIB", [](HGLOBAL dib, auto&) { Block(RotateDIB(dib, 17, 1, nullptr, nullptr)); }},
    {"SkewDIB", [](HGLOBAL dib, auto&) { Block(SkewDIB(dib, 1, 5, nullptr, nullptr)); }},
    {"ScaleDIB", [](HGLOBAL dib, auto&) { Block(ScaleDIB(dib, 1, 20, 30)); }},
    {"ScaleGrayDIB", [](HGLOBAL dib, auto&) { Block(ScaleGrayDIB(dib, 20, 10, 2, 2, 0)); }},
    {"CutDIB",
     [](HGLOBAL dib, auto&) {
       HGLOBAL first = nullptr, second = nullptr;
       if (!CutDIB(dib, 7, &first, &second)) return;
       Block{first};
       Block{second};
     }},
};

std::string beside(const std::string& path, const char* name) {
  return std::filesystem::path(path).replace_filename(name).string();
}

// A page set of two planes beside a path; the second may be missing.
void write_set(const std::string& path, const char* second_plane) {
  write_file(beside(path, "plane.bmp"), file_of(noise(30, 20, 1)));
  const std::string text =
      "[ColorFax]\nTotalPages=1\nPlanes=2\nFiles=2\nBitsPixel=1\n[Page1]\nPlane0=" + beside(path, "plane.bmp") +
      "\nPlane1=" + beside(path, second_plane);
  write_file(path, {text.begin(), text.end()});
}

// A TIFF file and page sets are what these go by; DIBs go through the modules' own tests.
const Export kFileExports[] = {
    {"SaveDIBInImageFormat, TIFF",
     [](HGLOBAL dib, auto& path) {
       EXPECT_TRUE(SaveDIBInImageFormat(beside(path, "a.tif").c_str(), dib, IMG_FORMAT_TIFF, 0, 0));
     }},
    {"LoadImageIntoDIB, TIFF",
     [](HGLOBAL, auto& path) { EXPECT_TRUE(Block(LoadImageIntoDIB(beside(path, "a.tif").c_str(), 1, nullptr))); }},
    {"GetNumberOfImagesInFaxFile",
     [](HGLOBAL, auto& path) { EXPECT_EQ(GetNumberOfImagesInFaxFile(beside(path, "good.fax").c_str()), 1); }},
    {"LoadColorFaxPage",
     [](HGLOBAL, auto& path) { EXPECT_TRUE(Block(LoadColorFaxPage(beside(path, "good.fax").c_str(), 1, nullptr))); }},
    {"LoadColorFaxPage, second plane missing",
     [](HGLOBAL, auto& path) { EXPECT_FALSE(Block(LoadColorFaxPage(beside(path, "broken.fax").c_str(), 1, nullptr))); }},
};

void expect_nothing_left(const Export& e, HGLOBAL dib, const std::string& path, const char* what) {
  for (int i = 0; i < 20; ++i) e.call(dib, path);  // whatever is kept for the next time
  const size_t blocks = heap_blocks(), files = open_files();
  for (int i = 0; i < 300; ++i) e.call(dib, path);
  EXPECT_LT(heap_blocks(), blocks + 200) << e.name << ", " << what;
  EXPECT_EQ(open_files(), files) << e.name << ", " << what;
  EXPECT_EQ(take_locks_back(dib), 0) << e.name << ", " << what;
}

TEST(NothingIsLeft, OfGoodAndBadInput) {
  BITMAPINFOHEADER too_large = header_for(65'536, 65'536, 8);
  too_large.biClrUsed = 1;
  BITMAPINFOHEADER other_size = header_for(4, 4, 8);
  other_size.biSize = 64;
  const std::pair<const char*, Bytes> inputs[] = {{"good", noise(30, 20, 8)},
                                                  {"1 bit", noise(30, 20, 1)},
                                                  {"table cut", with_header(header_for(30, 20, 8))},
                                                  {"too large", with_header(too_large)},
                                                  {"other header", with_header(other_size)},
                                                  {"header cut", Bytes(39, 40)}};
  const TempFolder folder;
  for (const auto& [what, bytes] : inputs) {
    const std::string path = folder.path("input.bmp");
    write_file(path, bytes);
    const Block dib = block_of(bytes);
    for (const Export& e : kExports) expect_nothing_left(e, dib.get(), path, what);
    EXPECT_TRUE(std::filesystem::remove(path)) << "what is open cannot be removed on Windows";
  }
}

TEST(NothingIsLeft, OfModulesAndPageSets) {
  const TempFolder folder;
  write_set(folder.path("good.fax"), "plane.bmp");
  write_set(folder.path("broken.fax"), "missing.bmp");
  const Block dib = block_of(noise(30, 20, 8));
  for (const Export& e : kFileExports) expect_nothing_left(e, dib.get(), folder.path(""), "good");
  for (const char* name : {"a.tif", "good.fax", "broken.fax", "plane.bmp"}) {
    EXPECT_TRUE(std::filesystem::remove(folder.path(name))) << name;
  }
}

}  // namespace
