// One example for each function of the library. The lines between two marks //! [NAME] are shown in the manual; the lines around
// them prepare a picture and look at the outcome. The test `examples` runs them all.
#ifndef VOREL32_EXAMPLES_H
#define VOREL32_EXAMPLES_H

#include <stdio.h>
#include <string.h>

#include <vorel32.h>

typedef struct Example {
  const char* name;         // the function
  int depth;                // bits per pixel of the picture that it gets
  int (*run)(HGLOBAL dib);  // returns 0 if the outcome is right
} Example;

// Each family ends with an entry without a name.
extern const Example kFileExamples[], kLibraryExamples[], kToneExamples[], kTurningExamples[];
#ifdef _WIN32
extern const Example kBitmapExamples[], kDisplayExamples[], kMetafileExamples[], kPrintingExamples[], kZoomExamples[];
#endif

// The error handling of a program. Both return 1.
int fail(const char* function);                 // reports the thread's code
int fail_with(const char* function, int code);  // reports the code that the function gave

// ---- Pictures to work on, and their outcome

// The picture has 64 x 48 pixels in quarters of one colour, at 300 dpi. At 4 and 24 bits they are red, green, blue and white, in
// reading order; at 8 bits grey; at 1 bit black, white, white, and white with one black pixel.
enum { kWidth = 64, kHeight = 48, kSpeckX = 50, kSpeckY = 40 };
enum { kRed = 0xFF0000, kGreen = 0x00FF00, kBlue = 0x0000FF, kWhite = 0xFFFFFF, kBlack = 0 };
enum { kGray1 = 40 * 0x010101, kGray2 = 100 * 0x010101, kGray3 = 160 * 0x010101, kGray4 = 220 * 0x010101 };
HGLOBAL picture(int depth);

// Colours are 0xRRGGBB; y counts from the top.
int color_at(HGLOBAL dib, int x, int y);
int color_in(const char* bitmap_file, int x, int y);
int width_in(const char* bitmap_file);
int depth_in(const char* bitmap_file);
// The white pixels of the quarter whose upper left pixel is (left, top).
int whites_in(const char* bitmap_file, int left, int top);
int bytes_in(const char* file);
void write_text(const char* file, const char* text);

#ifdef _WIN32
int color_of(HBITMAP bitmap, int x, int y);
int color_on(HDC dc, int x, int y);
HWND open_window(WNDPROC procedure, int width, int height);
int color_shown(HWND window, int x, int y);
void close_window(HWND window);
#endif

#define EXPECT(condition)                                                     \
  do {                                                                        \
    if (!(condition)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      return 1;                                                               \
    }                                                                         \
  } while (0)

#endif
