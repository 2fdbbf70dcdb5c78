#include <cstddef>
#include <gtest/gtest.h>

#include <vorel32.h>

extern "C" int palette_bytes_seen_from_c(void);

TEST(PublicHeader, ServesC) { EXPECT_EQ(palette_bytes_seen_from_c(), 64); }

// Programs were compiled with these layouts.
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
