// Quarter turns, mirrors, turning by any angle, skewing, scaling, cutting.
#include "examples.h"

static int rotate_90(HGLOBAL dib) {
  //! [RotateDIB90]
  HGLOBAL upright = RotateDIB90(dib);  // clockwise
  if (upright == NULL) return fail("RotateDIB90");
  if (!SaveDIB("upright.bmp", upright)) return fail("SaveDIB");
  GlobalFree(upright);
  //! [RotateDIB90]
  EXPECT(width_in("upright.bmp") == kHeight && color_in("upright.bmp", 0, 0) == kBlue);
  return 0;
}

static int rotate_180(HGLOBAL dib) {
  //! [RotateDIB180]
  HGLOBAL upright = RotateDIB180(dib);
  if (upright == NULL) return fail("RotateDIB180");
  if (!SaveDIB("upright.bmp", upright)) return fail("SaveDIB");
  GlobalFree(upright);
  //! [RotateDIB180]
  EXPECT(width_in("upright.bmp") == kWidth && color_in("upright.bmp", 0, 0) == kWhite);
  return 0;
}

static int rotate_270(HGLOBAL dib) {
  //! [RotateDIB270]
  HGLOBAL shifted = RotateDIB270(dib);                                // counter-clockwise, and one column to the right
  HGLOBAL quarter = RotateDIB90(dib), exact = RotateDIB180(quarter);  // without the shift
  if (shifted == NULL || exact == NULL) return fail("RotateDIB270");
  if (!SaveDIB("shifted.bmp", shifted) || !SaveDIB("exact.bmp", exact)) return fail("SaveDIB");
  GlobalFree(shifted);
  GlobalFree(quarter);
  GlobalFree(exact);
  //! [RotateDIB270]
  EXPECT(color_in("exact.bmp", 0, 0) == kGreen);
  EXPECT(color_in("shifted.bmp", 0, 0) == kWhite && color_in("shifted.bmp", 1, 0) == kGreen);  // the bottom row comes first
  return 0;
}

static int flip_vertical(HGLOBAL dib) {
  //! [FlipDIBVertical]
  HGLOBAL mirrored = FlipDIBVertical(dib);
  if (mirrored == NULL) return fail("FlipDIBVertical");
  if (!SaveDIB("mirrored.bmp", mirrored)) return fail("SaveDIB");
  GlobalFree(mirrored);
  //! [FlipDIBVertical]
  EXPECT(color_in("mirrored.bmp", 0, 0) == kBlue && color_in("mirrored.bmp", kWidth - 1, 0) == kWhite);
  return 0;
}

static int flip_horizontal(HGLOBAL dib) {
  //! [FlipDIBHorizontal]
  HGLOBAL mirrored = FlipDIBHorizontal(dib);  // a film scanned from its back
  if (mirrored == NULL) return fail("FlipDIBHorizontal");
  if (!SaveDIB("mirrored.bmp", mirrored)) return fail("SaveDIB");
  GlobalFree(mirrored);
  //! [FlipDIBHorizontal]
  EXPECT(color_in("mirrored.bmp", 0, 0) == kGreen && color_in("mirrored.bmp", 0, kHeight - 1) == kWhite);
  return 0;
}

static int rotate(HGLOBAL dib) {
  //! [RotateDIB]
  int status = 0;
  HGLOBAL turned = RotateDIB(dib, -30, 0, &status, NULL);  // 30 degrees clockwise; 0: exact positions
  if (turned == NULL) return fail_with("RotateDIB", status);
  if (!SaveDIB("turned.bmp", turned)) return fail("SaveDIB");
  GlobalFree(turned);
  //! [RotateDIB]
  const int middle = width_in("turned.bmp") / 2;
  EXPECT(width_in("turned.bmp") == 80);  // 64 cos 30 + 48 sin 30
  EXPECT(color_in("turned.bmp", 0, 0) == kBlack && color_in("turned.bmp", middle, 25) == kRed);
  return 0;
}

static int skew(HGLOBAL dib) {
  //! [SkewDIB]
  int error = 0, corners[8];
  HGLOBAL sheared = SkewDIB(dib, 1, 10, &error, corners);  // the top row moves 10 pixels to the right
  if (sheared == NULL) return fail_with("SkewDIB", error);
  printf("The upper left corner is at (%d, %d).\n", corners[0], corners[1]);
  if (!SaveDIB("sheared.bmp", sheared)) return fail("SaveDIB");
  GlobalFree(sheared);
  //! [SkewDIB]
  EXPECT(corners[0] == 10 && width_in("sheared.bmp") == kWidth + 10);
  EXPECT(color_in("sheared.bmp", 9, 0) == kBlack && color_in("sheared.bmp", 10, 0) == kRed);
  EXPECT(color_in("sheared.bmp", 0, kHeight - 1) == kBlue);
  return 0;
}

static int scale(HGLOBAL dib) {
  //! [ScaleDIB]
  HGLOBAL small = ScaleDIB(dib, 0, 32, 24);  // linear
  if (small == NULL) return fail("ScaleDIB");
  if (!SaveDIB("small.bmp", small)) return fail("SaveDIB");
  GlobalFree(small);
  //! [ScaleDIB]
  EXPECT(width_in("small.bmp") == 32);
  EXPECT(color_in("small.bmp", 2, 2) == kRed && color_in("small.bmp", 29, 21) == kWhite);
  return 0;
}

static int scale_gray(HGLOBAL dib) {
  //! [ScaleGrayDIB]
  // The lower left 40 x 30 pixels, three times as wide and twice as high.
  HGLOBAL detail = ScaleGrayDIB(dib, 40, 30, 3, 2, 0);
  if (detail == NULL) return fail("ScaleGrayDIB");
  if (!SaveDIB("detail.bmp", detail)) return fail("SaveDIB");
  GlobalFree(detail);
  //! [ScaleGrayDIB]
  EXPECT(width_in("detail.bmp") == 120);
  EXPECT(color_in("detail.bmp", 10, 50) == kGray3 && color_in("detail.bmp", 110, 50) == kGray4);
  EXPECT(color_in("detail.bmp", 10, 2) == kGray1);
  return 0;
}

static int cut(HGLOBAL dib) {
  //! [CutDIB]
  HGLOBAL lower = NULL, upper = NULL;
  if (!CutDIB(dib, 10, &lower, &upper)) return fail("CutDIB");  // below the tenth row
  if (!SaveDIB("upper.bmp", upper) || !SaveDIB("lower.bmp", lower)) return fail("SaveDIB");
  GlobalFree(lower);
  GlobalFree(upper);
  //! [CutDIB]
  EXPECT(bytes_in("upper.bmp") - 54 == 10 * 3 * kWidth && color_in("upper.bmp", 0, 9) == kRed);
  EXPECT(color_in("lower.bmp", 0, kHeight - 11) == kBlue);
  return 0;
}

const Example kTurningExamples[] = {
    {"RotateDIB90", 24, rotate_90},
    {"RotateDIB180", 24, rotate_180},
    {"RotateDIB270", 24, rotate_270},
    {"FlipDIBVertical", 24, flip_vertical},
    {"FlipDIBHorizontal", 24, flip_horizontal},
    {"RotateDIB", 24, rotate},
    {"SkewDIB", 24, skew},
    {"ScaleDIB", 24, scale},
    {"ScaleGrayDIB", 8, scale_gray},
    {"CutDIB", 24, cut},
    {NULL, 0, NULL},
};
