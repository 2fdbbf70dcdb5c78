// Tone, filters, greys, cleaning, dithering.
#include "examples.h"

static int histogram_of(HGLOBAL dib) {
  //! [ComputeHistogram]
  int origin[] = {0, 0}, error = 0;  // the square's upper left corner
  HGLOBAL histogram = ComputeHistogram(NULL, IMG_ALLOCATE, NULL, NULL, &error);
  if (histogram == NULL) return fail_with("ComputeHistogram", error);
  if (ComputeHistogram(dib, IMG_COMPUTE, histogram, origin, &error) == NULL) return fail_with("ComputeHistogram", error);
  WORD* counts = GlobalLock(histogram);  // 256 counters
  int dark = 0;
  for (int level = 0; level < 128; ++level) dark += counts[level];
  GlobalUnlock(histogram);
  ComputeHistogram(NULL, IMG_FREE, histogram, NULL, &error);
  printf("%d dark pixels\n", dark);
  //! [ComputeHistogram]
  EXPECT(dark == kWidth * kHeight / 2);
  return 0;
}

static int table_of(HGLOBAL dib) {
  (void)dib;
  //! [ComputeLUT]
  int error = 0;
  HGLOBAL table = ComputeLUT(NULL, IMG_ALLOCATE, NULL, 0, 0, &error);
  if (table == NULL) return fail_with("ComputeLUT", error);
  // More contrast about the middle level, and 20 levels brighter.
  if (ComputeLUT(NULL, IMG_COMPUTE, table, 50, 20, &error) == NULL) return fail_with("ComputeLUT", error);
  unsigned char* levels = GlobalLock(table);  // 256 levels
  printf("40 becomes %d, 220 becomes %d\n", levels[40], levels[220]);
  //! [ComputeLUT]
  const int dark = levels[40], bright = levels[220];
  GlobalUnlock(table);
  EXPECT(dark == 42 && bright == 255);
  ComputeLUT(NULL, IMG_FREE, table, 0, 0, &error);
  return 0;
}

static int apply_table(HGLOBAL dib) {
  //! [ApplyLUT]
  HGLOBAL table = GlobalAlloc(GHND, 256);
  unsigned char* levels = GlobalLock(table);
  for (int i = 0; i < 256; ++i) levels[i] = (unsigned char)(255 - i);  // a negative
  GlobalUnlock(table);
  int error = 0;
  HGLOBAL negative = ApplyLUT(dib, table, 1, &error);  // 1: in a copy
  GlobalFree(table);
  if (negative == NULL) return fail_with("ApplyLUT", error);
  if (!SaveDIB("negative.bmp", negative)) return fail("SaveDIB");
  GlobalFree(negative);
  //! [ApplyLUT]
  EXPECT(color_in("negative.bmp", 0, 0) == (kGray1 ^ 0xFFFFFF) && color_at(dib, 0, 0) == kGray1);
  return 0;
}

static int brighter(HGLOBAL dib) {
  //! [ColorBrightnessContrast]
  HGLOBAL brighter = ColorBrightnessContrast(dib, 20, -10);  // percent
  if (brighter == NULL) return fail("ColorBrightnessContrast");
  if (!SaveDIB("brighter.bmp", brighter)) return fail("SaveDIB");
  GlobalFree(brighter);
  //! [ColorBrightnessContrast]
  const int red = color_in("brighter.bmp", 0, 0), green_of_red = red >> 8 & 0xFF;
  EXPECT(red >> 16 > 200 && green_of_red > 20 && green_of_red < 100);
  return 0;
}

static int to_24_bits(HGLOBAL dib) {
  //! [Convert8to24]
  HGLOBAL deep = Convert8to24(dib);
  if (deep == NULL) return fail("Convert8to24");
  if (!SaveDIB("deep.bmp", deep)) return fail("SaveDIB");
  GlobalFree(deep);
  //! [Convert8to24]
  EXPECT(depth_in("deep.bmp") == 24 && color_in("deep.bmp", kWidth - 1, 0) == kGray2);
  return 0;
}

static int sharpen(HGLOBAL dib) {
  //! [Convolve]
  int error = 0;
  HGLOBAL sharp = Convolve(dib, 1, 5, 3, NULL, NULL, &error);  // a copy, sharpened by four neighbours
  if (sharp == NULL) return fail_with("Convolve", error);
  if (!SaveDIB("sharp.bmp", sharp)) return fail("SaveDIB");
  GlobalFree(sharp);
  //! [Convolve]
  EXPECT(color_in("sharp.bmp", 5, 5) == kGray1);
  EXPECT(color_in("sharp.bmp", kWidth / 2 - 1, 5) < kGray1 && color_in("sharp.bmp", kWidth / 2, 5) > kGray2);
  return 0;
}

static int soften(HGLOBAL dib) {
  //! [ColorConvolution]
  const short mean_of_nine[] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 9};  // row by row, then the divisor
  int error = 0;
  HGLOBAL soft = ColorConvolution(dib, 1, 1, 1, 3, NULL, mean_of_nine, &error);
  if (soft == NULL) return fail_with("ColorConvolution", error);
  if (!SaveDIB("soft.bmp", soft)) return fail("SaveDIB");
  GlobalFree(soft);
  //! [ColorConvolution]
  EXPECT(color_in("soft.bmp", 5, 5) == kRed && color_in("soft.bmp", kWidth / 2 - 1, 5) != kRed);
  return 0;
}

static int to_gray(HGLOBAL dib) {
  //! [ConvColorDIBtoGrayscale]
  HGLOBAL gray = ConvColorDIBtoGrayscale(dib, 0, 1);  // weighted: green counts most
  if (gray == NULL) return fail("ConvColorDIBtoGrayscale");
  if (!SaveDIB("gray.bmp", gray)) return fail("SaveDIB");
  GlobalFree(gray);
  //! [ConvColorDIBtoGrayscale]
  EXPECT(depth_in("gray.bmp") == 8 && color_in("gray.bmp", 0, 0) == 8 * 255 / 26 * 0x010101);
  return 0;
}

static int mono_to_gray(HGLOBAL dib) {
  //! [ConvMonoDIBtoGrayscale]
  HGLOBAL gray = ConvMonoDIBtoGrayscale(dib, 1);  // smoothed, so that scaled text stays legible
  if (gray == NULL) return fail("ConvMonoDIBtoGrayscale");
  if (!SaveDIB("gray.bmp", gray)) return fail("SaveDIB");
  GlobalFree(gray);
  //! [ConvMonoDIBtoGrayscale]
  EXPECT(color_in("gray.bmp", 10, 10) == kBlack && color_in("gray.bmp", 60, 10) == kWhite);
  EXPECT(color_in("gray.bmp", kSpeckX, kSpeckY) != kBlack);
  return 0;
}

static int clean(HGLOBAL dib) {
  //! [CleanImage]
  HGLOBAL cleaned = CleanImage(dib, 60, 1);  // medium strength, all pixels
  if (cleaned == NULL) return fail("CleanImage");
  if (!SaveDIB("cleaned.bmp", cleaned)) return fail("SaveDIB");
  GlobalFree(cleaned);
  //! [CleanImage]
  EXPECT(color_at(dib, kSpeckX, kSpeckY) == kBlack && color_in("cleaned.bmp", kSpeckX, kSpeckY) == kWhite);
  EXPECT(color_in("cleaned.bmp", 10, 10) == kBlack);
  return 0;
}

// The darker a quarter, the fewer white pixels.
static int is_dithered(const char* path) {
  const int whites[] = {whites_in(path, 0, 0), whites_in(path, kWidth / 2, 0), whites_in(path, 0, kHeight / 2),
                        whites_in(path, kWidth / 2, kHeight / 2)};
  return depth_in(path) == 1 && whites[0] < whites[1] && whites[1] < whites[2] && whites[2] < whites[3];
}

static int floyd_steinberg(HGLOBAL dib) {
  //! [DitherFS4]
  HGLOBAL dithered = DitherFS4(dib, 1);
  if (dithered == NULL) return fail("DitherFS4");
  if (!SaveDIB("dithered.bmp", dithered)) return fail("SaveDIB");
  GlobalFree(dithered);
  //! [DitherFS4]
  EXPECT(is_dithered("dithered.bmp"));
  return 0;
}

static int jarvis(HGLOBAL dib) {
  //! [DitherJJN]
  HGLOBAL dithered = DitherJJN(dib, 1);  // no stripes in even areas
  if (dithered == NULL) return fail("DitherJJN");
  if (!SaveDIB("dithered.bmp", dithered)) return fail("SaveDIB");
  GlobalFree(dithered);
  //! [DitherJJN]
  EXPECT(is_dithered("dithered.bmp"));
  return 0;
}

static int smooth(HGLOBAL dib) {
  //! [DitherSmooth]
  HGLOBAL dithered = DitherSmooth(dib, 4);  // eight colours, for a display of 16
  if (dithered == NULL) return fail("DitherSmooth");
  if (!SaveDIB("dithered.bmp", dithered)) return fail("SaveDIB");
  GlobalFree(dithered);
  //! [DitherSmooth]
  EXPECT(depth_in("dithered.bmp") == 4 && color_in("dithered.bmp", 10, 10) == kRed);
  EXPECT(color_in("dithered.bmp", kWidth - 10, 10) == kGreen);
  return 0;
}

static int sharp(HGLOBAL dib) {
  //! [DitherSharp]
  HGLOBAL dithered = DitherSharp(dib, 1);
  if (dithered == NULL) return fail("DitherSharp");
  if (!SaveDIB("dithered.bmp", dithered)) return fail("SaveDIB");
  GlobalFree(dithered);
  //! [DitherSharp]
  EXPECT(is_dithered("dithered.bmp"));
  return 0;
}

static int halftone(HGLOBAL dib) {
  //! [Halftone]
  WORD error = 0;
  HGLOBAL dots = Halftone(dib, 2, 10, &error);  // ordered, a little brighter; convert colours to grey first
  if (dots == NULL) return fail_with("Halftone", error);
  if (!SaveDIB("dots.bmp", dots)) return fail("SaveDIB");
  GlobalFree(dots);
  //! [Halftone]
  EXPECT(is_dithered("dots.bmp"));
  return 0;
}

const Example kToneExamples[] = {
    {"ComputeHistogram", 8, histogram_of},
    {"ComputeLUT", 8, table_of},
    {"ApplyLUT", 8, apply_table},
    {"ColorBrightnessContrast", 24, brighter},
    {"Convert8to24", 8, to_24_bits},
    {"Convolve", 8, sharpen},
    {"ColorConvolution", 24, soften},
    {"ConvColorDIBtoGrayscale", 24, to_gray},
    {"ConvMonoDIBtoGrayscale", 1, mono_to_gray},
    {"CleanImage", 1, clean},
    {"DitherFS4", 8, floyd_steinberg},
    {"DitherJJN", 8, jarvis},
    {"DitherSmooth", 24, smooth},
    {"DitherSharp", 8, sharp},
    {"Halftone", 8, halftone},
    {NULL, 0, NULL},
};
