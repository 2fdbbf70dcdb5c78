// Metafiles, text files and clipboard files. Windows only.
#include "examples.h"

static int draw_metafile(HGLOBAL dib) {
  (void)dib;
  //! [DrawMetaFileIntoBitmap]
  HDC drawing = CreateMetaFileA(NULL);
  SetMapMode(drawing, MM_ANISOTROPIC);
  SetWindowExtEx(drawing, 100, 100, NULL);  // the metafile's own units
  Rectangle(drawing, 20, 20, 80, 80);
  HMETAFILE metafile = CloseMetaFile(drawing);
  HBITMAP bitmap = DrawMetaFileIntoBitmap(metafile, 200, 100, FALSE);  // on white
  DeleteMetaFile(metafile);
  if (bitmap == NULL) return fail("DrawMetaFileIntoBitmap");
  //! [DrawMetaFileIntoBitmap]
  const int outside = color_of(bitmap, 10, 50), edge = color_of(bitmap, 40, 50);
  DeleteObject(bitmap);
  EXPECT(outside == kWhite && edge == kBlack);
  return 0;
}

static int load_metafile(HGLOBAL dib) {
  SaveDIBIntoMetaFile("drawing.wmf", dib);
  //! [LoadMetaFileIntoBitmap]
  HBITMAP bitmap = LoadMetaFileIntoBitmap("drawing.wmf");
  if (bitmap == NULL) return fail("LoadMetaFileIntoBitmap");
  BITMAP size;
  GetObject(bitmap, sizeof size, &size);
  printf("%d x %d pixels on this screen\n", (int)size.bmWidth, (int)size.bmHeight);
  //! [LoadMetaFileIntoBitmap]
  const int color = color_of(bitmap, 2, 2);
  DeleteObject(bitmap);
  EXPECT(color == kRed && size.bmWidth > 0);
  return 0;
}

static int color_in_metafile(const char* path, int x, int y) {
  HBITMAP bitmap = LoadMetaFileIntoBitmap(path);
  const int color = color_of(bitmap, x, y);
  DeleteObject(bitmap);
  return color;
}

static int dib_to_metafile(HGLOBAL dib) {
  //! [SaveDIBIntoMetaFile]
  DeleteFileA("scan.wmf");
  SaveDIBIntoMetaFile("scan.wmf", dib);  // returns 1 even if it fails: look for the file
  if (GetFileAttributesA("scan.wmf") == INVALID_FILE_ATTRIBUTES) return fail("SaveDIBIntoMetaFile");
  //! [SaveDIBIntoMetaFile]
  EXPECT(GetImageFormat("scan.wmf") == IMG_FORMAT_METAFILE && color_in_metafile("scan.wmf", 2, 2) == kRed);
  return 0;
}

static int dib_to_enhanced(HGLOBAL dib) {
  //! [SaveDIBIntoEnhMetaFile]
  DeleteFileA("scan.emf");
  SaveDIBIntoEnhMetaFile("scan.emf", dib);  // returns 1 even if it fails: look for the file
  if (GetFileAttributesA("scan.emf") == INVALID_FILE_ATTRIBUTES) return fail("SaveDIBIntoEnhMetaFile");
  //! [SaveDIBIntoEnhMetaFile]
  EXPECT(GetImageFormat("scan.emf") == IMG_FORMAT_ENHANCED_METAFILE && color_in_metafile("scan.emf", 2, 2) == kRed);
  return 0;
}

static int bitmap_to_metafile(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [SaveBitmapIntoMetaFile]
  DeleteFileA("drawing.wmf");
  SaveBitmapIntoMetaFile("drawing.wmf", bitmap);
  if (GetFileAttributesA("drawing.wmf") == INVALID_FILE_ATTRIBUTES) return fail("SaveBitmapIntoMetaFile");
  //! [SaveBitmapIntoMetaFile]
  DeleteObject(bitmap);
  EXPECT(GetImageFormat("drawing.wmf") == IMG_FORMAT_METAFILE && color_in_metafile("drawing.wmf", 2, 2) == kRed);
  return 0;
}

static int bitmap_to_enhanced(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [SaveBitmapIntoEnhMetaFile]
  DeleteFileA("drawing.emf");
  SaveBitmapIntoEnhMetaFile("drawing.emf", bitmap);
  if (GetFileAttributesA("drawing.emf") == INVALID_FILE_ATTRIBUTES) return fail("SaveBitmapIntoEnhMetaFile");
  //! [SaveBitmapIntoEnhMetaFile]
  DeleteObject(bitmap);
  EXPECT(GetImageFormat("drawing.emf") == IMG_FORMAT_ENHANCED_METAFILE && color_in_metafile("drawing.emf", 2, 2) == kRed);
  return 0;
}

// Puts a black square of 20 mm on the clipboard, as a metafile.
static void copy_square(HWND window) {
  HDC drawing = CreateMetaFileA(NULL);
  SetMapMode(drawing, MM_ANISOTROPIC);
  SetWindowExtEx(drawing, 10, 10, NULL);
  SelectObject(drawing, GetStockObject(BLACK_BRUSH));
  Rectangle(drawing, 0, 0, 10, 10);
  HGLOBAL block = GlobalAlloc(GHND, sizeof(METAFILEPICT));
  METAFILEPICT* pict = GlobalLock(block);
  pict->mm = MM_ANISOTROPIC;
  pict->xExt = pict->yExt = 2000;
  pict->hMF = CloseMetaFile(drawing);
  GlobalUnlock(block);
  OpenClipboard(window);
  EmptyClipboard();
  SetClipboardData(CF_METAFILEPICT, block);
  CloseClipboard();
}

static int paste_bitmap(HGLOBAL dib) {
  (void)dib;
  HWND window = open_window(DefWindowProcA, 50, 50);
  copy_square(window);
  //! [PlaceMetaFileIntoBMPFromCLP]
  if (!IsClipboardFormatAvailable(CF_METAFILEPICT)) return fail_with("paste", IMG_E_CLIPBOARD_FORMAT);
  HBITMAP pasted = PlaceMetaFileIntoBMPFromCLP(window);
  if (pasted == NULL) return fail("PlaceMetaFileIntoBMPFromCLP");
  //! [PlaceMetaFileIntoBMPFromCLP]
  const int color = color_of(pasted, 10, 10);
  DeleteObject(pasted);
  close_window(window);
  EXPECT(color == kBlack);
  return 0;
}

static int paste_dib(HGLOBAL dib) {
  (void)dib;
  HWND window = open_window(DefWindowProcA, 50, 50);
  copy_square(window);
  //! [PlaceMetaFileIntoDIBFromCLP]
  HGLOBAL pasted = PlaceMetaFileIntoDIBFromCLP(window);
  if (pasted == NULL) return fail("PlaceMetaFileIntoDIBFromCLP");
  if (!SaveDIB("pasted.bmp", pasted)) return fail("SaveDIB");
  GlobalFree(pasted);
  //! [PlaceMetaFileIntoDIBFromCLP]
  close_window(window);
  EXPECT(color_in("pasted.bmp", 10, 10) == kBlack);
  return 0;
}

// ---- Text and clipboard files

static int height_of(HBITMAP bitmap) {
  BITMAP size = {0, 0, 0, 0, 0, 0, NULL};
  GetObject(bitmap, sizeof size, &size);
  return size.bmHeight;
}

static int load_text(HGLOBAL dib) {
  (void)dib;
  write_text("note.txt", "one\ntwo\nthree\n");
  write_text("line.txt", "one\n");
  //! [LoadASCIIFile]
  HBITMAP text = LoadASCIIFile("note.txt", TRUE);  // black on white, in the system font
  if (text == NULL) return fail("LoadASCIIFile");
  //! [LoadASCIIFile]
  HBITMAP line = LoadASCIIFile("line.txt", TRUE);
  const int heights[] = {height_of(text), height_of(line)};
  DeleteObject(line);
  DeleteObject(text);
  EXPECT(heights[1] > 0 && heights[0] > 2 * heights[1]);
  return 0;
}

static int text_block(HGLOBAL dib) {
  (void)dib;
  //! [LoadASCIIIntoBitmap]
  static const char kNote[] = "Received\r\nwith thanks";
  HGLOBAL block = GlobalAlloc(GHND, sizeof kNote);  // the terminating zero included: the last byte becomes 0
  memcpy(GlobalLock(block), kNote, sizeof kNote);
  GlobalUnlock(block);
  HBITMAP text = LoadASCIIIntoBitmap(block);
  GlobalFree(block);
  if (text == NULL) return fail("LoadASCIIIntoBitmap");
  //! [LoadASCIIIntoBitmap]
  BITMAP size;
  GetObject(text, sizeof size, &size);
  DeleteObject(text);
  EXPECT(size.bmBitsPixel == 1 && size.bmWidth > size.bmHeight && size.bmHeight > 10);
  return 0;
}

static int save_clipboard(HGLOBAL dib) {
  HBITMAP bitmap = ConvertDIBToBitmap(dib);
  //! [SaveClipboardFormat]
  if (!SaveClipboardFormat("drawing.clp", bitmap)) return fail("SaveClipboardFormat");
  //! [SaveClipboardFormat]
  DeleteObject(bitmap);
  EXPECT(GetImageFormat("drawing.clp") == IMG_FORMAT_CLIPBOARD && bytes_in("drawing.clp") > 3 * kWidth * kHeight);
  return 0;
}

static int load_clipboard(HGLOBAL dib) {
  HBITMAP saved = ConvertDIBToBitmap(dib);
  SaveClipboardFormat("drawing.clp", saved);
  DeleteObject(saved);
  //! [LoadClipboardFormat]
  HBITMAP bitmap = LoadClipboardFormat("drawing.clp", CF_DIB);
  if (bitmap == NULL && ImgError() == IMG_E_CLIPBOARD_FORMAT) bitmap = LoadClipboardFormat("drawing.clp", CF_METAFILEPICT);
  if (bitmap == NULL) return fail("LoadClipboardFormat");
  //! [LoadClipboardFormat]
  const int color = color_of(bitmap, kWidth - 1, 0);
  DeleteObject(bitmap);
  EXPECT(color == kGreen);
  return 0;
}

const Example kMetafileExamples[] = {
    {"DrawMetaFileIntoBitmap", 1, draw_metafile},
    {"LoadMetaFileIntoBitmap", 24, load_metafile},
    {"SaveDIBIntoMetaFile", 24, dib_to_metafile},
    {"SaveDIBIntoEnhMetaFile", 24, dib_to_enhanced},
    {"SaveBitmapIntoMetaFile", 24, bitmap_to_metafile},
    {"SaveBitmapIntoEnhMetaFile", 24, bitmap_to_enhanced},
    {"PlaceMetaFileIntoBMPFromCLP", 1, paste_bitmap},
    {"PlaceMetaFileIntoDIBFromCLP", 1, paste_dib},
    {"LoadASCIIFile", 1, load_text},
    {"LoadASCIIIntoBitmap", 1, text_block},
    {"SaveClipboardFormat", 24, save_clipboard},
    {"LoadClipboardFormat", 24, load_clipboard},
    {NULL, 0, NULL},
};
