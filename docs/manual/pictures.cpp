// Makes the manual's pictures of what functions do, by calling them. Run in a folder with the drawn pictures as bitmap files; prints a
// line "FUNCTION|FILE|CAPTION" for each picture, in the order of the manual.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <vorel32.h>

namespace {

// Some functions leave the image size of their source; 0 leaves it to the reader.
HGLOBAL without_image_size(HGLOBAL dib) {
  if (auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))) header->biSizeImage = 0;
  GlobalUnlock(dib);
  return dib;
}

// Saves and frees a result.
bool show(const char* function, const std::string& file, const char* caption, HGLOBAL result) {
  if (result == nullptr || !SaveDIB(file.c_str(), without_image_size(result))) {
    char why[IMG_MESSAGE_BYTES];
    std::fprintf(stderr, "%s: no picture (%s)\n", function, ImgErrorString(why, ImgError()));
    return false;
  }
  GlobalFree(result);
  std::printf("%s|%s|%s\n", function, file.c_str(), caption);
  return true;
}

struct Call {
  const char* caption;
  std::function<HGLOBAL(HGLOBAL)> run;  // makes a new DIB, or returns the one that it changed
};

struct Row {
  const char* function;
  const char* source;
  const char* caption;
  std::vector<Call> calls;
};

bool run(const Row& row) {
  const bool has_source = *row.source != '\0';
  if (has_source) std::printf("%s|%s|%s\n", row.function, row.source, row.caption);
  bool good = true;
  int number = 0;
  for (const Call& call : row.calls) {
    HGLOBAL source = has_source ? LoadDIBFromFile(row.source) : nullptr;
    HGLOBAL result = call.run(source);
    if (has_source && result != source) GlobalFree(source);
    good &= show(row.function, row.function + ("-" + std::to_string(++number)) + ".bmp", call.caption, result);
  }
  return good;
}

#ifdef _WIN32

// A DIB by way of a device bitmap, which `change` may replace.
HGLOBAL by_way_of_bitmap(HGLOBAL dib, const std::function<HBITMAP(HBITMAP)>& change) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib), changed = change(bitmap);
  HGLOBAL result = ConvertBitmapToDIB(changed, nullptr);
  DeleteObject(bitmap);
  if (changed != bitmap) DeleteObject(changed);
  return result;
}

Call by_bitmap(const char* caption, HBITMAP(VORELCALL* turn)(HBITMAP)) {
  return {caption, [=](HGLOBAL dib) { return by_way_of_bitmap(dib, turn); }};
}

Call in_place(const char* caption, BOOL(VORELCALL* turn)(HBITMAP)) {
  return {caption, [=](HGLOBAL dib) {
            return by_way_of_bitmap(dib, [=](HBITMAP bitmap) { return turn(bitmap) ? bitmap : nullptr; });
          }};
}

// InvertBitmap needs an active window.
HGLOBAL inverted(HGLOBAL dib) {
  HWND window =
      CreateWindowA("STATIC", "", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
  SetActiveWindow(window);
  HGLOBAL result = by_way_of_bitmap(dib, [](HBITMAP bitmap) { return InvertBitmap(bitmap) ? bitmap : nullptr; });
  DestroyWindow(window);
  return result;
}

HBITMAP with_stamp(HBITMAP target) {
  HBITMAP stamp = LoadBitmapFromFile("stamp.bmp"), mask = LoadBitmapFromFile("mask.bmp");
  const BOOL painted = CombineBMP(40, 30, &target, stamp, mask, 0);
  DeleteObject(stamp);
  DeleteObject(mask);
  return painted ? target : nullptr;
}

HGLOBAL with_stamp(HGLOBAL target, int flag) {
  HGLOBAL stamp = LoadDIBFromFile("stamp.bmp"), mask = LoadDIBFromFile("mask.bmp");
  const BOOL painted = CombineDIB(40, 30, &target, stamp, mask, flag);
  GlobalFree(stamp);
  GlobalFree(mask);
  return painted ? target : nullptr;
}

HGLOBAL drawn_text(HGLOBAL) {
  const char kText[] = "The crane on the north quay\r\nwill be moved in May.\r\n";
  HGLOBAL text = GlobalAlloc(GHND, sizeof kText);
  std::copy(std::begin(kText), std::end(kText), static_cast<char*>(GlobalLock(text)));
  GlobalUnlock(text);
  HBITMAP bitmap = LoadASCIIIntoBitmap(text);
  HGLOBAL result = ConvertBitmapToDIB(bitmap, nullptr);
  DeleteObject(bitmap);
  GlobalFree(text);
  return result;
}

const std::vector<Row> kRows = {
    {"ConvertToMonochromeBitmap", "photo.bmp", "Before", {by_bitmap("After", ConvertToMonochromeBitmap)}},
    {"RotateBitmap90", "page.bmp", "Before: 1 bit", {by_bitmap("After", RotateBitmap90)}},
    {"RotateBitmap270", "page.bmp", "Before: 1 bit", {by_bitmap("After; the first column is empty", RotateBitmap270)}},
    {"RotateBitmap180", "page.bmp", "Before: 1 bit", {in_place("After", RotateBitmap180)}},
    {"FlipBitmapVertical", "page.bmp", "Before: 1 bit", {in_place("After", FlipBitmapVertical)}},
    {"FlipBitmapHorizontal", "page.bmp", "Before: 1 bit", {in_place("After", FlipBitmapHorizontal)}},
    {"InvertBitmap", "photo.bmp", "Before", {{"After", inverted}}},
    {"CombineBMP",
     "photo.bmp",
     "The target",
     {{"A stamp and a mask of its outline, flag 0",
       [](HGLOBAL dib) { return by_way_of_bitmap(dib, [](HBITMAP bitmap) { return with_stamp(bitmap); }); }}}},
    {"CombineDIB",
     "photo.bmp",
     "The target",
     {{"A stamp and a mask of its outline, flag 0", [](HGLOBAL dib) { return with_stamp(dib, 0); }},
      {"Flag 1", [](HGLOBAL dib) { return with_stamp(dib, 1); }}}},
    {"LoadASCIIIntoBitmap", "", "", {{"A text of two lines", drawn_text}}},
};

#else

HGLOBAL part_of(HGLOBAL dib, int line, bool upper) {
  HGLOBAL first = nullptr, second = nullptr;
  if (!CutDIB(dib, line, &first, &second)) return nullptr;
  GlobalFree(upper ? first : second);
  return upper ? second : first;
}

HGLOBAL with_table(HGLOBAL dib, int contrast, int brightness) {
  int error = 0;
  HGLOBAL table = ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error);
  ComputeLUT(nullptr, IMG_COMPUTE, table, contrast, brightness, &error);
  HGLOBAL result = ApplyLUT(dib, table, 1, &error);
  ComputeLUT(nullptr, IMG_FREE, table, 0, 0, &error);
  return result;
}

const int kEdges[] = {-1, -1, -1, -1, 8, -1, -1, -1, -1, 1};
const int kTwice[] = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
const short kRelief[] = {-2, -1, 0, -1, 1, 1, 0, 1, 2, 1};

Call by_filter(const char* caption, int type, int size, const int* kernel = nullptr) {
  return {caption, [=](HGLOBAL dib) { return Convolve(dib, 1, type, size, nullptr, kernel, nullptr); }};
}

Call by_color_filter(const char* caption, short type, int size, const short* kernel = nullptr) {
  return {caption, [=](HGLOBAL dib) { return ColorConvolution(dib, 1, 0, type, size, nullptr, kernel, nullptr); }};
}

Call by_dithering(const char* caption, HGLOBAL(VORELCALL* dither)(HGLOBAL, int), int bits) {
  return {caption, [=](HGLOBAL dib) { return dither(dib, bits); }};
}

Call by_halftone(const char* caption, WORD method) {
  return {caption, [=](HGLOBAL dib) { return Halftone(dib, method, 0, nullptr); }};
}

Call by(const char* caption, HGLOBAL(VORELCALL* turn)(HGLOBAL)) { return {caption, turn}; }

const std::vector<Row> kRows = {
    {"InvertDIBPalette",
     "web.bmp",
     "Before: 8 bits",
     {{"After", [](HGLOBAL dib) { return InvertDIBPalette(dib) ? dib : nullptr; }}}},
    {"RotateDIB90", "photo.bmp", "Before", {by("After", RotateDIB90)}},
    {"RotateDIB180", "photo.bmp", "Before", {by("After", RotateDIB180)}},
    {"RotateDIB270", "photo.bmp", "Before", {by("After; the first column is empty", RotateDIB270)}},
    {"FlipDIBVertical", "photo.bmp", "Before", {by("After", FlipDIBVertical)}},
    {"FlipDIBHorizontal", "photo.bmp", "Before", {by("After", FlipDIBHorizontal)}},
    {"RotateDIB",
     "photo.bmp",
     "Before",
     {{"By 12 degrees, method 0", [](HGLOBAL dib) { return RotateDIB(dib, 12, 0, nullptr, nullptr); }},
      {"By -45 degrees", [](HGLOBAL dib) { return RotateDIB(dib, -45, 0, nullptr, nullptr); }}}},
    {"SkewDIB",
     "photo.bmp",
     "Before",
     {{"Rows moved, offset 80", [](HGLOBAL dib) { return SkewDIB(dib, 1, 80, nullptr, nullptr); }},
      {"Columns moved, offset -60", [](HGLOBAL dib) { return SkewDIB(dib, 0, -60, nullptr, nullptr); }}}},
    {"ScaleDIB",
     "detail.bmp",
     "Before",
     {{"Linear, to 360 x 240", [](HGLOBAL dib) { return ScaleDIB(dib, 0, 360, 240); }},
      {"Cubic", [](HGLOBAL dib) { return ScaleDIB(dib, 1, 360, 240); }}}},
    {"ScaleGrayDIB",
     "grey.bmp",
     "Before",
     {{"The lower left 140 x 70 pixels, three times as large",
       [](HGLOBAL dib) { return ScaleGrayDIB(dib, 140, 70, 3, 3, 0); }}}},
    {"CutDIB",
     "photo.bmp",
     "Before",
     {{"Upper part, line 180", [](HGLOBAL dib) { return part_of(dib, 180, true); }},
      {"Lower part", [](HGLOBAL dib) { return part_of(dib, 180, false); }}}},
    {"ComputeLUT",
     "grey.bmp",
     "Before",
     {{"A table of contrast 160", [](HGLOBAL dib) { return with_table(dib, 160, 0); }},
      {"Contrast -160, brightness 20", [](HGLOBAL dib) { return with_table(dib, -160, 20); }}}},
    {"ApplyLUT",
     "web.bmp",
     "Before: 8 bits in colour",
     {{"A table of contrast 120", [](HGLOBAL dib) { return with_table(dib, 120, 0); }}}},
    {"ColorBrightnessContrast",
     "photo.bmp",
     "Before",
     {{"Brightness 25", [](HGLOBAL dib) { return ColorBrightnessContrast(dib, 25, 0); }},
      {"Contrast 50", [](HGLOBAL dib) { return ColorBrightnessContrast(dib, 0, 50); }}}},
    {"Convolve",
     "grey.bmp",
     "Before",
     {by_filter("Type 3, size 7: box blur", 3, 7), by_filter("Type 5, size 3: sharpen", 5, 3),
      by_filter("Type 1: a kernel that finds edges", 1, 3, kEdges)}},
    {"ColorConvolution",
     "photo.bmp",
     "Before",
     {by_color_filter("Type 3, size 7: box blur", 3, 7), by_color_filter("Type 5, size 3: sharpen", 5, 3),
      by_color_filter("Type 1: a kernel that makes a relief", 1, 3, kRelief)}},
    {"ConvColorDIBtoGrayscale",
     "photo.bmp",
     "Before",
     {{"Weighted", [](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 0, 1); }},
      {"The mean of blue, green and red", [](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 0, 0); }}}},
    {"ConvMonoDIBtoGrayscale",
     "specks.bmp",
     "Before",
     {{"Grade 1", [](HGLOBAL dib) { return ConvMonoDIBtoGrayscale(dib, 1); }},
      {"Grade 2", [](HGLOBAL dib) { return ConvMonoDIBtoGrayscale(dib, 2); }}}},
    {"CleanImage",
     "specks.bmp",
     "Before",
     {{"Level 60, all pixels", [](HGLOBAL dib) { return CleanImage(dib, 60, 1); }},
      {"Level 80", [](HGLOBAL dib) { return CleanImage(dib, 80, 1); }}}},
    {"DitherFS4",
     "photo.bmp",
     "Before",
     {by_dithering("1 bit", DitherFS4, 1), by_dithering("4 bits", DitherFS4, 4), by_dithering("8 bits", DitherFS4, 8)}},
    {"DitherJJN",
     "photo.bmp",
     "Before",
     {by_dithering("1 bit", DitherJJN, 1), by_dithering("4 bits", DitherJJN, 4), by_dithering("8 bits", DitherJJN, 8)}},
    {"DitherSmooth",
     "photo.bmp",
     "Before",
     {by_dithering("1 bit", DitherSmooth, 1), by_dithering("4 bits", DitherSmooth, 4)}},
    {"DitherSharp", "photo.bmp", "Before", {by_dithering("1 bit", DitherSharp, 1), by_dithering("4 bits", DitherSharp, 4)}},
    {"Halftone",
     "grey.bmp",
     "Before",
     {by_halftone("Method 0: threshold", 0), by_halftone("Method 1: error diffusion", 1),
      by_halftone("Method 2: ordered", 2)}},
    // Oddities.
    {"oddity-shift",
     "even.bmp",
     "",
     {by("", RotateDIB270),
      {"",
       [](HGLOBAL dib) {
         HGLOBAL quarter = RotateDIB90(dib), exact = RotateDIB180(quarter);
         GlobalFree(quarter);
         return exact;
       }}}},
    {"oddity-zero", "odd.bmp", "", {{"", [](HGLOBAL dib) { return RotateDIB(dib, 0, 0, nullptr, nullptr); }}}},
    {"oddity-fill", "red.bmp", "", {{"", [](HGLOBAL dib) { return SkewDIB(dib, 0, 6, nullptr, nullptr); }}}},
    {"oddity-quarter",
     "even.bmp",
     "",
     {by("", RotateDIB90), {"", [](HGLOBAL dib) { return RotateDIB(dib, -90, 0, nullptr, nullptr); }}}},
    {"oddity-edges", "dotted.bmp", "", {{"", [](HGLOBAL dib) { return CleanImage(dib, 60, 1); }}}},
    {"oddity-half", "letter.bmp", "", {{"", [](HGLOBAL dib) { return ScaleDIB(dib, 0, 22 * 6, 16 * 6); }}}},
    {"oddity-cubic", "flat.bmp", "", {{"", [](HGLOBAL dib) { return ScaleDIB(dib, 1, 22 * 6, 16 * 6); }}}},
    {"oddity-black", "red.bmp", "", {{"", [](HGLOBAL dib) { return ScaleDIB(dib, 0, 22 * 6, 16 * 6); }}}},
    {"oddity-fifth", "hundred.bmp", "", {by_filter("", 4, 5)}},
    {"oddity-low-bits", "grey.bmp", "", {by_filter("", 1, 3, kTwice)}},
    {"oddity-set-bits",
     "page.bmp",
     "",
     {{"",
       [](HGLOBAL dib) {
         InvertMonoDIB(dib);
         return ConvColorDIBtoGrayscale(dib, 0, 0);
       }}}},
    {"oddity-smoothed", "letter.bmp", "", {{"", [](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 2, 0); }}}},
    {"oddity-dithering", "ramp.bmp", "", {by_dithering("", DitherFS4, 1), by_dithering("", DitherSmooth, 1)}},
    {"oddity-rows", "photo.bmp", "", {by_halftone("", 0), by_halftone("", 2)}},
};

#endif

}  // namespace

int main() {
  bool good = true;
  for (const Row& row : kRows) good &= run(row);
  return good ? 0 : 1;
}
