// Headers and palettes of DIBs, and picture files.
#include "examples.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

static HFILE open_for_reading(const char* path) {
#ifdef _WIN32
  return _lopen(path, OF_READ);
#else
  return open(path, O_RDONLY);
#endif
}

static void close_file(HFILE file) {
#ifdef _WIN32
  _lclose(file);
#else
  close(file);
#endif
}

static int palette_size(HGLOBAL dib) {
  //! [PaletteSize]
  BITMAPINFOHEADER* header = GlobalLock(dib);
  if (header == NULL) return fail("GlobalLock");
  unsigned char* rows = (unsigned char*)header + header->biSize + PaletteSize(header);
  printf("The lower left pixel has the value %d.\n", rows[0]);  // the bottom row comes first
  //! [PaletteSize]
  int lower_left = rows[0];
  GlobalUnlock(dib);
  EXPECT(lower_left == 160);
  return 0;
}

static int read_dib_info(HGLOBAL dib) {
  SaveDIB("scan.bmp", dib);
  //! [ReadDIBInfo]
  HFILE file = open_for_reading("scan.bmp");  // _lopen on Windows, open on Linux
  HGLOBAL info = ReadDIBInfo(file);           // header and colours, no pixels
  close_file(file);
  if (info == NULL) return fail("ReadDIBInfo");
  BITMAPINFOHEADER* header = GlobalLock(info);
  int width = (int)header->biWidth, height = (int)header->biHeight;
  GlobalUnlock(info);
  GlobalFree(info);
  printf("%d x %d pixels\n", width, height);
  //! [ReadDIBInfo]
  EXPECT(width == kWidth && height == kHeight);
  return 0;
}

static int invert_palette(HGLOBAL dib) {
  //! [InvertDIBPalette]
  // A negative without touching a pixel. The header must state biClrUsed.
  if (!InvertDIBPalette(dib)) return fail("InvertDIBPalette");
  if (!SaveDIB("negative.bmp", dib)) return fail("SaveDIB");
  //! [InvertDIBPalette]
  EXPECT(color_in("negative.bmp", 0, 0) == (kGray1 ^ 0xFFFFFF));
  return 0;
}

static int invert_mono(HGLOBAL dib) {
  //! [InvertMonoDIB]
  // Fax programs want black pixels to be ones. The picture looks the same afterwards.
  RGBQUAD* colors = (RGBQUAD*)((BITMAPINFOHEADER*)GlobalLock(dib) + 1);
  int black_is_0 = colors[0].rgbGreen < colors[1].rgbGreen;
  GlobalUnlock(dib);
  if (black_is_0) InvertMonoDIB(dib);
  //! [InvertMonoDIB]
  int first_byte_of_black = ((unsigned char*)GlobalLock(dib))[48 + 8 * (kHeight - 1)];
  GlobalUnlock(dib);
  EXPECT(black_is_0 && first_byte_of_black == 0xFF);
  EXPECT(color_at(dib, 0, 0) == kBlack && color_at(dib, kWidth - 1, 0) == kWhite);
  return 0;
}

static int load_dib(HGLOBAL dib) {
  SaveDIB("scan.bmp", dib);
  //! [LoadDIBFromFile]
  HGLOBAL scan = LoadDIBFromFile("scan.bmp");
  if (scan == NULL) return fail("LoadDIBFromFile");
  printf("%lu bytes in memory\n", (unsigned long)GlobalSize(scan));
  GlobalFree(scan);
  //! [LoadDIBFromFile]
  EXPECT(color_in("scan.bmp", 0, 0) == kRed && color_in("scan.bmp", kWidth - 1, kHeight - 1) == kWhite);
  return 0;
}

static int save_dib(HGLOBAL dib) {
  //! [SaveDIB]
  if (!SaveDIB("saved.bmp", dib)) return fail("SaveDIB");
  //! [SaveDIB]
  EXPECT(bytes_in("saved.bmp") == 14 + 40 + 3 * kWidth * kHeight && color_in("saved.bmp", kWidth - 1, 0) == kGreen);
  return 0;
}

static int get_format(HGLOBAL dib) {
  SaveDIBInImageFormat("attachment.dat", dib, IMG_FORMAT_TIFF, 0, 0);
  //! [GetImageFormat]
  // By its content, whatever the file is called.
  int format = GetImageFormat("attachment.dat");
  switch (format) {
    case IMG_FORMAT_UNKNOWN: puts("no picture"); break;
    case IMG_FORMAT_TIFF: puts("TIFF, perhaps of several pages"); break;
    default: printf("format %d\n", format);
  }
  //! [GetImageFormat]
  EXPECT(format == IMG_FORMAT_TIFF && GetImageFormat("missing.dat") == IMG_FORMAT_UNKNOWN);
  return 0;
}

static int load_image(HGLOBAL dib) {
  SaveDIBInImageFormat("letter.tif", dib, IMG_FORMAT_TIFF, 0, 4);
  //! [LoadImageIntoDIB]
  int status = 0;
  SetImgError(IMG_OK);  // codec modules may fail without a code
  HGLOBAL page = LoadImageIntoDIB("letter.tif", 1, &status);
  if (page == NULL) return fail_with("LoadImageIntoDIB", status != 0 ? status : ImgError());
  if (!SaveDIB("letter.bmp", page)) return fail("SaveDIB");
  GlobalFree(page);
  //! [LoadImageIntoDIB]
  EXPECT(color_in("letter.bmp", 0, 0) == kBlack && color_in("letter.bmp", kWidth - 1, 0) == kWhite);
  return 0;
}

static int save_image(HGLOBAL dib) {
  //! [SaveDIBInImageFormat]
  enum { kGroup4 = 4 };  // compression by its TIFF number; 0 picks one
  if (!SaveDIBInImageFormat("fax.tif", dib, IMG_FORMAT_TIFF, 0, kGroup4)) return fail("fax.tif");
  if (!SaveDIBInImageFormat("fax.gif", dib, IMG_FORMAT_GIF, 1, 0)) return fail("fax.gif");  // interlaced
  //! [SaveDIBInImageFormat]
  EXPECT(GetImageFormat("fax.tif") == IMG_FORMAT_TIFF && GetImageFormat("fax.gif") == IMG_FORMAT_GIF);
  return 0;
}

static int compress(HGLOBAL dib) {
  //! [CompressDIB]
  HGLOBAL packed = CompressDIB(dib);
  if (packed == NULL) return fail("CompressDIB");
  if (GlobalSize(packed) < GlobalSize(dib) && !SaveDIB("packed.bmp", packed)) return fail("SaveDIB");
  GlobalFree(packed);
  //! [CompressDIB]
  EXPECT(bytes_in("packed.bmp") < bytes_in("missing.bmp") + 14 + 40 + 1024 + kWidth * kHeight / 4);
  return 0;
}

static int expand(HGLOBAL dib) {
  HGLOBAL compressed = CompressDIB(dib);
  SaveDIB("packed.bmp", compressed);
  GlobalFree(compressed);
  //! [ExpandCompressedDIB]
  HGLOBAL packed = LoadDIBFromFile("packed.bmp");
  if (packed == NULL) return fail("LoadDIBFromFile");
  HGLOBAL expanded = ExpandCompressedDIB(packed);  // most functions work on uncompressed pixels alone
  GlobalFree(packed);
  if (expanded == NULL) return fail("ExpandCompressedDIB");
  if (!SaveDIB("expanded.bmp", expanded)) return fail("SaveDIB");
  GlobalFree(expanded);
  //! [ExpandCompressedDIB]
  EXPECT(color_in("expanded.bmp", 0, 0) == kGray1 && color_in("expanded.bmp", kWidth - 1, kHeight - 1) == kGray4);
  return 0;
}

// A page in three planes: black where no plane has a pixel.
static void make_fax_set(HGLOBAL dib) {
  SaveDIB("plane.bmp", dib);
  write_text("letter.fax",
             "[ColorFax]\nTotalPages=2\nFirstPage=1\nPlanes=3\nBitsPixel=1\nFiles=6\n"
             "[Page1]\nPlane0=plane.bmp\nPlane1=plane.bmp\nPlane2=plane.bmp\n"
             "[Page2]\nPlane0=plane.bmp\nPlane1=plane.bmp\nPlane2=plane.bmp\n");
}

static int fax_pages(HGLOBAL dib) {
  make_fax_set(dib);
  //! [GetNumberOfImagesInFaxFile]
  int pages = GetNumberOfImagesInFaxFile("letter.fax");
  if (pages < 0) return fail("GetNumberOfImagesInFaxFile");
  printf("%d pages\n", pages);
  //! [GetNumberOfImagesInFaxFile]
  EXPECT(pages == 2);
  return 0;
}

static int fax_page(HGLOBAL dib) {
  make_fax_set(dib);
  //! [LoadColorFaxPage]
  int status = 0;
  HGLOBAL page = LoadColorFaxPage("letter.fax", 2, &status);
  if (page == NULL) return fail_with("LoadColorFaxPage", status != 0 ? status : ImgError());
  if (!SaveDIB("page-2.bmp", page)) return fail("SaveDIB");
  GlobalFree(page);
  //! [LoadColorFaxPage]
  EXPECT(depth_in("page-2.bmp") == 4 && color_in("page-2.bmp", 0, 0) != color_in("page-2.bmp", kWidth - 1, 0));
  return 0;
}

const Example kFileExamples[] = {
    {"PaletteSize", 8, palette_size},        {"ReadDIBInfo", 8, read_dib_info},
    {"InvertDIBPalette", 8, invert_palette}, {"InvertMonoDIB", 1, invert_mono},
    {"LoadDIBFromFile", 24, load_dib},       {"SaveDIB", 24, save_dib},
    {"GetImageFormat", 1, get_format},       {"LoadImageIntoDIB", 1, load_image},
    {"SaveDIBInImageFormat", 1, save_image}, {"CompressDIB", 8, compress},
    {"ExpandCompressedDIB", 8, expand},      {"GetNumberOfImagesInFaxFile", 1, fax_pages},
    {"LoadColorFaxPage", 1, fax_page},       {NULL, 0, NULL},
};
