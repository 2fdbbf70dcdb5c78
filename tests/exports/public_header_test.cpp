#include <cstddef>
#include <gtest/gtest.h>

#include <vorel32.h>

extern "C" int palette_bytes_seen_from_c(void);

TEST(PublicHeader, ServesC) { EXPECT_EQ(palette_bytes_seen_from_c(), 64); }

// Programs were compiled with these numbers.
static_assert(IMG_OK == 0 && IMG_E_MEMORY == 1 && IMG_E_CREATE_DC == 2 && IMG_E_OPEN_FILE == 3 && IMG_E_FILE_IO == 4 &&
              IMG_E_OPEN_CLIPBOARD == 5 && IMG_E_RECEIVE_CLIPBOARD == 6 && IMG_E_COPY_BITS == 7 && IMG_E_PARAMETER == 8 &&
              IMG_E_FORMAT == 9 && IMG_E_CREATE_PALETTE == 10 && IMG_E_CREATE_BITMAP == 11 && IMG_E_MAPPING_MODE == 12 &&
              IMG_E_PIXEL_BITS == 13 && IMG_E_CLIPBOARD_FORMAT == 14 && IMG_E_BITMAP_PARAMETERS == 15 &&
              IMG_E_CREATE_METAFILE == 16 && IMG_E_LOCK == 17 && IMG_E_COMPRESSED == 18 && IMG_E_DIB_SIZE == 19 &&
              IMG_E_DITHER_PARAMETER == 20 && IMG_E_HEADER_BITS == 21 && IMG_E_QUENT_BITS == 22 && IMG_E_PRINTER_DC == 23 &&
              IMG_E_PRINTER_RASTER == 24 && IMG_E_DISPLAY_DC == 25 && IMG_E_SET_ABORT_PROC == 26 && IMG_E_START_DOC == 27 &&
              IMG_E_NEXT_BAND == 28 && IMG_E_CLIPBOARD == 29 && IMG_E_NOTHING_TO_DO == 30 && IMG_E_NOTHING_TO_CONVERT == 31);
static_assert(IMG_FORMAT_UNKNOWN == 0 && IMG_FORMAT_TIFF == 1 && IMG_FORMAT_PCX == 2 && IMG_FORMAT_DCX == 3 &&
              IMG_FORMAT_GIF == 4 && IMG_FORMAT_TGA == 5 && IMG_FORMAT_BITMAP == 6 && IMG_FORMAT_METAFILE == 7 &&
              IMG_FORMAT_CLIPBOARD == 8 && IMG_FORMAT_COLOR_FAX == 9 && IMG_FORMAT_TEXT == 10 && IMG_FORMAT_CALS == 12 &&
              IMG_FORMAT_JPEG == 13 && IMG_FORMAT_PNG == 14 && IMG_FORMAT_ENHANCED_METAFILE == 15);
static_assert(IMG_ALLOCATE == 30 && IMG_COMPUTE == 31 && IMG_FREE == 32 && IMG_MESSAGE_BYTES == 50 &&
              IMG_ZOOM_TABLE_ENTRIES == 11);
#ifdef _WIN32
static_assert(IMG_DISPLAY_FIT == 0x8 && IMG_DISPLAY_INVERTED == 0x20 && IMG_DISPLAY_RESOLUTION == 0x40 &&
              IMG_DISPLAY_CENTRE == 0x80 && IMG_DISPLAY_STRETCH == 0x100 && IMG_DISPLAY_NO_VSCROLL == 0x200 &&
              IMG_DISPLAY_NO_HSCROLL == 0x400 && IMG_DISPLAY_AS_BITMAP == 0x800 && IMG_DISPLAY_FIT_WIDTH == 0x1000);
#endif

// And with these layouts.
static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(ImgErrorCode) == 4 && sizeof(ImgFormat) == 4);
static_assert(sizeof(ImgDescription) == 48 && offsetof(ImgDescription, hasOpacity) == 44);
static_assert(sizeof(ImgPrintOptions) == 40 && offsetof(ImgPrintOptions, copies) == 16 &&
              offsetof(ImgPrintOptions, silent) == 36);
static_assert(sizeof(ImgDisplayLayout) == 120 && offsetof(ImgDisplayLayout, zoomViewportX) == 44 &&
              offsetof(ImgDisplayLayout, imageDpiY) == 116);
static_assert(sizeof(ImgZoomTracker) == 68 && offsetof(ImgZoomTracker, resultLeft) == 20 &&
              offsetof(ImgZoomTracker, bandShown) == 64);
#ifdef _WIN32
static_assert(sizeof(ImgScreenZoom) == 40 && offsetof(ImgScreenZoom, zoom) == 24);
static_assert(sizeof(ImgDisplayState) == (sizeof(void*) == 8 ? 160 : 144) &&
              offsetof(ImgDisplayState, bitmap) == (sizeof(void*) == 8 ? 136 : 128) &&
              offsetof(ImgDisplayState, ownership) == (sizeof(void*) == 8 ? 144 : 132));
#endif
