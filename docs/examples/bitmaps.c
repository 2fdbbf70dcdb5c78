// Palettes and device bitmaps. Windows only.
#include "examples.h"

static int is_palette_display(void) {
  HDC screen = GetDC(NULL);
  const int is = (GetDeviceCaps(screen, RASTERCAPS) & RC_PALETTE) != 0;
  ReleaseDC(NULL, screen);
  return is;
}

static int create_palette(HGLOBAL dib) {
  //! [CreateDIBPalette]
  HDC dc = GetDC(NULL);
  HPALETTE palette = CreateDIBPalette(dib);
  if (palette == NULL) return fail("CreateDIBPalette");  // NULL without a code: the DIB has no colour table
  HPALETTE before = SelectPalette(dc, palette, FALSE);
  RealizePalette(dc);
  // ... draw the DIB ...
  SelectPalette(dc, before, FALSE);
  ReleaseDC(NULL, dc);
  //! [CreateDIBPalette]
  PALETTEENTRY level = {0, 0, 0, 0};
  GetPaletteEntries(palette, 100, 1, &level);
  DeleteObject(palette);
  EXPECT(level.peRed == 100 && level.peBlue == 100);
  return 0;
}

static int current_palette(HGLOBAL dib) {
  (void)dib;
  //! [GetCurrentPalette]
  HPALETTE palette = GetCurrentPalette();
  if (palette == NULL && ImgError() != IMG_E_CREATE_PALETTE) return fail("GetCurrentPalette");
  if (palette == NULL) puts("a true-colour display");  // needs no palette
  // ... draw with it ...
  DeleteObject(palette);
  //! [GetCurrentPalette]
  EXPECT((palette != NULL) == is_palette_display());
  return 0;
}

static int system_palette(HGLOBAL dib) {
  (void)dib;
  //! [GetSystemPalette]
  RGBQUAD colors[256];  // as many as SIZEPALETTE
  BOOL has_palette = GetSystemPalette(colors);
  if (has_palette) printf("colour 1: red %d, green %d, blue %d\n", colors[1].rgbRed, colors[1].rgbGreen, colors[1].rgbBlue);
  //! [GetSystemPalette]
  EXPECT(has_palette == is_palette_display());
  EXPECT(!has_palette || (colors[255].rgbRed == 255 && colors[255].rgbBlue == 255));
  return 0;
}

static int bitmap_to_dib(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [ConvertBitmapToDIB]
  HGLOBAL copy = ConvertBitmapToDIB(bitmap, NULL);  // a palette is needed for displays with one
  if (copy == NULL) return fail("ConvertBitmapToDIB");
  if (!SaveDIB("copy.bmp", copy)) return fail("SaveDIB");
  GlobalFree(copy);
  //! [ConvertBitmapToDIB]
  DeleteObject(bitmap);
  EXPECT(color_in("copy.bmp", 0, 0) == kRed && color_in("copy.bmp", kWidth - 1, 0) == kGreen);
  return 0;
}

static int dib_to_bitmap(HGLOBAL dib) {
  //! [ConvertDIBToBitmap]
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  if (bitmap == NULL) return fail("ConvertDIBToBitmap");
  HDC memory = CreateCompatibleDC(NULL);
  HGDIOBJ before = SelectObject(memory, bitmap);
  TextOutA(memory, 2, kHeight / 2, "draft", 5);  // anything that GDI can draw
  SelectObject(memory, before);
  DeleteDC(memory);
  //! [ConvertDIBToBitmap]
  const int first = color_of(bitmap, 0, 0), last = color_of(bitmap, kWidth - 1, 0);
  DeleteObject(bitmap);
  EXPECT(first == kRed && last == kGreen);
  return 0;
}

static int to_mono(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [ConvertToMonochromeBitmap]
  HBITMAP mono = ConvertToMonochromeBitmap(bitmap);
  if (mono == NULL) return fail("ConvertToMonochromeBitmap");
  BITMAP description;
  GetObject(mono, sizeof description, &description);
  printf("%d bit\n", description.bmBitsPixel);
  //! [ConvertToMonochromeBitmap]
  const int red = color_of(mono, 0, 0), white = color_of(mono, kWidth - 1, kHeight - 1);
  DeleteObject(mono);
  DeleteObject(bitmap);
  EXPECT(description.bmBitsPixel == 1 && red == kBlack && white == kWhite);
  return 0;
}

static int duplicate(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [DuplicateBitmap]
  HBITMAP undo = DuplicateBitmap(bitmap);  // before the bitmap is drawn on
  if (undo == NULL) return fail("DuplicateBitmap");
  DeleteObject(bitmap);
  bitmap = undo;  // the drawing is undone
  //! [DuplicateBitmap]
  const int color = color_of(bitmap, 0, 0);
  DeleteObject(bitmap);
  EXPECT(color == kRed);
  return 0;
}

static int load_bitmap(HGLOBAL dib) {
  SaveDIB("logo.bmp", dib);
  //! [LoadBitmapFromFile]
  HBITMAP logo = LoadBitmapFromFile("logo.bmp");
  if (logo == NULL) return fail("LoadBitmapFromFile");
  //! [LoadBitmapFromFile]
  const int color = color_of(logo, kWidth - 1, 0);
  DeleteObject(logo);
  EXPECT(color == kGreen);
  return 0;
}

static int save_bitmap(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [SaveBitmap]
  if (!SaveBitmap("drawing.bmp", bitmap, NULL)) return fail("SaveBitmap");
  //! [SaveBitmap]
  DeleteObject(bitmap);
  EXPECT(color_in("drawing.bmp", 0, 0) == kRed);
  return 0;
}

// ---- Turning. These handle monochrome bitmaps and those of displays of up to 24 bits.

static int rotate_bitmap_90(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [RotateBitmap90]
  HBITMAP turned = RotateBitmap90(bitmap);  // counter-clockwise
  if (turned == NULL) return fail("RotateBitmap90");
  DeleteObject(bitmap);
  //! [RotateBitmap90]
  const int upper = color_of(turned, 0, 0), lower = color_of(turned, 5, kWidth - 1);
  DeleteObject(turned);
  EXPECT(upper == kWhite && lower == kBlack);
  return 0;
}

static int rotate_bitmap_180(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [RotateBitmap180]
  if (!RotateBitmap180(bitmap)) return fail("RotateBitmap180");  // in place
  //! [RotateBitmap180]
  const int first = color_of(bitmap, 0, 0), last = color_of(bitmap, kWidth - 1, kHeight - 1);
  DeleteObject(bitmap);
  EXPECT(first == kWhite && last == kBlack);
  return 0;
}

static int rotate_bitmap_270(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [RotateBitmap270]
  HBITMAP turned = RotateBitmap270(bitmap);  // clockwise; the bottom row of a monochrome bitmap is lost
  if (turned == NULL) return fail("RotateBitmap270");
  DeleteObject(bitmap);
  //! [RotateBitmap270]
  const int left = color_of(turned, 5, 0), right = color_of(turned, kHeight - 1, 0);
  DeleteObject(turned);
  EXPECT(left == kWhite && right == kBlack);
  return 0;
}

static int flip_bitmap_vertical(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [FlipBitmapVertical]
  if (!FlipBitmapVertical(bitmap)) return fail("FlipBitmapVertical");  // in place
  //! [FlipBitmapVertical]
  const int upper = color_of(bitmap, 0, 0), lower = color_of(bitmap, 0, kHeight - 1);
  DeleteObject(bitmap);
  EXPECT(upper == kWhite && lower == kBlack);
  return 0;
}

static int flip_bitmap_horizontal(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [FlipBitmapHorizontal]
  if (!FlipBitmapHorizontal(bitmap)) return fail("FlipBitmapHorizontal");  // in place
  //! [FlipBitmapHorizontal]
  const int left = color_of(bitmap, 0, 0), right = color_of(bitmap, kWidth - 1, 0);
  DeleteObject(bitmap);
  EXPECT(left == kWhite && right == kBlack);
  return 0;
}

static int invert_bitmap(HGLOBAL dib) {
  HWND window = open_window(DefWindowProcA, 50, 50);  // the function needs an active window
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [InvertBitmap]
  if (!InvertBitmap(bitmap)) puts("This thread has no active window.");
  //! [InvertBitmap]
  const int first = color_of(bitmap, 0, 0), last = color_of(bitmap, kWidth - 1, kHeight - 1);
  DeleteObject(bitmap);
  close_window(window);
  EXPECT(first == kWhite && last == kBlack);
  return 0;
}

// ---- Combining

static int combine_bitmaps(HGLOBAL dib) {
  HBITMAP page = ConvertDIBToBitmap(dib), stamp = ConvertDIBToBitmap(dib);
  //! [CombineBMP]
  // The stamp covers the page from (40, 30) on, opaque.
  if (!CombineBMP(40, 30, &page, stamp, NULL, 0)) return fail_with("CombineBMP", ImgError());
  DeleteObject(stamp);
  //! [CombineBMP]
  const int beside = color_of(page, 39, 29), covered = color_of(page, 45, 35);
  DeleteObject(page);
  EXPECT(beside == kWhite && covered == kRed);
  return 0;
}

static int combine_dibs(HGLOBAL dib) {
  HGLOBAL stamp = picture(24);
  //! [CombineDIB]
  // The page is changed in place; its colours become those of the display.
  if (!CombineDIB(40, 30, &dib, stamp, NULL, 0)) return fail_with("CombineDIB", ImgError());
  GlobalFree(stamp);
  //! [CombineDIB]
  EXPECT(color_at(dib, 39, 29) == kWhite && color_at(dib, 45, 35) == kRed);
  return 0;
}

const Example kBitmapExamples[] = {
    {"CreateDIBPalette", 8, create_palette},
    {"GetCurrentPalette", 1, current_palette},
    {"GetSystemPalette", 1, system_palette},
    {"ConvertBitmapToDIB", 24, bitmap_to_dib},
    {"ConvertDIBToBitmap", 24, dib_to_bitmap},
    {"ConvertToMonochromeBitmap", 24, to_mono},
    {"DuplicateBitmap", 24, duplicate},
    {"LoadBitmapFromFile", 24, load_bitmap},
    {"SaveBitmap", 24, save_bitmap},
    {"RotateBitmap90", 1, rotate_bitmap_90},
    {"RotateBitmap180", 1, rotate_bitmap_180},
    {"RotateBitmap270", 1, rotate_bitmap_270},
    {"FlipBitmapVertical", 1, flip_bitmap_vertical},
    {"FlipBitmapHorizontal", 1, flip_bitmap_horizontal},
    {"InvertBitmap", 1, invert_bitmap},
    {"CombineBMP", 24, combine_bitmaps},
    {"CombineDIB", 24, combine_dibs},
    {NULL, 0, NULL},
};
