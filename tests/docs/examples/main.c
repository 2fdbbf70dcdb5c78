// Runs the examples of docs/examples in a folder of their own: all of them, or those that are named.
// usage: examples FOLDER EXPORT_TABLE [EXPORT...]
#include <stdlib.h>

#include "examples.h"

#ifdef _WIN32
#include <direct.h>
#define enter _chdir
#else
#include <unistd.h>
#define enter chdir
#endif

static const Example* const kFamilies[] = {
    kFileExamples,   kLibraryExamples, kToneExamples,     kTurningExamples,
#ifdef _WIN32
    kBitmapExamples, kDisplayExamples, kMetafileExamples, kPrintingExamples, kZoomExamples,
#endif
};

int fail(const char* function) { return fail_with(function, ImgError()); }

int fail_with(const char* function, int code) {
  char why[IMG_MESSAGE_BYTES];
  fprintf(stderr, "%s: %s (%d)\n", function, code >= 0 && code <= 31 ? ImgErrorString(why, code) : "no text", code);
  return 1;
}

// ---- Pictures

static size_t stride_of(const BITMAPINFOHEADER* header) {
  return ((size_t)header->biBitCount * (size_t)header->biWidth + 31) / 32 * 4;
}

static unsigned char* rows_of(BITMAPINFOHEADER* header) {
  return (unsigned char*)header + header->biSize + PaletteSize(header);
}

static void set_pixel(unsigned char* row, int depth, int x, int value) {
  static const int kColors[] = {kRed, kGreen, kBlue, kWhite};
  if (depth == 24) {
    for (int i = 0; i < 3; ++i) row[3 * x + i] = (unsigned char)(kColors[value] >> 8 * i);
  } else {
    const int shift = 8 - depth - x * depth % 8;
    row[x * depth / 8] |= (unsigned char)((depth == 8 ? 40 + 60 * value : depth == 4 ? value : value != 0) << shift);
  }
}

static void set_colors(RGBQUAD* table, int depth) {
  static const RGBQUAD kQuarters[] = {{0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0}, {255, 255, 255, 0}};
  for (int i = 0; i < 1 << depth; ++i) {
    const unsigned char gray = (unsigned char)(i * 255 / ((1 << depth) - 1));
    const RGBQUAD level = {gray, gray, gray, 0};
    table[i] = depth == 4 && i < 4 ? kQuarters[i] : level;
  }
}

HGLOBAL picture(int depth) {
  const BITMAPINFOHEADER wanted = {
      40, kWidth, kHeight, 1, (WORD)depth, BI_RGB, 0, 11811, 11811, depth < 24 ? 1u << depth : 0, 0};
  const size_t stride = stride_of(&wanted), table = 4 * (size_t)wanted.biClrUsed;
  HGLOBAL dib = GlobalAlloc(GHND, sizeof wanted + table + stride * kHeight);
  BITMAPINFOHEADER* header = GlobalLock(dib);
  *header = wanted;
  header->biSizeImage = (unsigned)(stride * kHeight);
  if (depth < 24) set_colors((RGBQUAD*)(header + 1), depth);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const int is_speck = depth == 1 && x == kSpeckX && y == kSpeckY;
      const int quarter = 2 * (y >= kHeight / 2) + (x >= kWidth / 2);
      set_pixel(rows_of(header) + (size_t)(kHeight - 1 - y) * stride, depth, x, is_speck ? 0 : quarter);
    }
  GlobalUnlock(dib);
  return dib;
}

// ---- Outcomes

// A picture that is not there has no colour.
int color_at(HGLOBAL dib, int x, int y) {
  BITMAPINFOHEADER* header = GlobalLock(dib);
  if (header == NULL || x >= header->biWidth || y >= header->biHeight) return -1;
  const unsigned char* row = rows_of(header) + (size_t)(header->biHeight - 1 - y) * stride_of(header);
  const int depth = header->biBitCount;
  const unsigned char* color = row + 3 * x;
  if (depth < 24)
    color = (unsigned char*)(header + 1) + 4 * (row[x * depth / 8] >> (8 - depth - x * depth % 8) & ((1 << depth) - 1));
  const int result = color[2] << 16 | color[1] << 8 | color[0];
  GlobalUnlock(dib);
  return result;
}

static BITMAPINFOHEADER header_in(const char* bitmap_file) {
  BITMAPINFOHEADER header;
  memset(&header, 0, sizeof header);
  HGLOBAL dib = LoadDIBFromFile(bitmap_file);
  if (dib != NULL) header = *(BITMAPINFOHEADER*)GlobalLock(dib);
  GlobalFree(dib);
  return header;
}
int width_in(const char* bitmap_file) { return (int)header_in(bitmap_file).biWidth; }
int depth_in(const char* bitmap_file) { return header_in(bitmap_file).biBitCount; }

int color_in(const char* bitmap_file, int x, int y) {
  HGLOBAL dib = LoadDIBFromFile(bitmap_file);
  const int color = color_at(dib, x, y);
  GlobalFree(dib);
  return color;
}

int whites_in(const char* bitmap_file, int left, int top) {
  HGLOBAL dib = LoadDIBFromFile(bitmap_file);
  int count = 0;
  for (int i = 0; i < kWidth / 2 * (kHeight / 2); ++i)
    count += color_at(dib, left + i % (kWidth / 2), top + i / (kWidth / 2)) == kWhite;
  GlobalFree(dib);
  return count;
}

int bytes_in(const char* path) {
  FILE* file = fopen(path, "rb");
  if (file == NULL) return 0;
  fseek(file, 0, SEEK_END);
  const int bytes = (int)ftell(file);
  fclose(file);
  return bytes;
}

void write_text(const char* path, const char* text) {
  FILE* file = fopen(path, "w");
  if (file == NULL) return;
  fputs(text, file);
  fclose(file);
}

#ifdef _WIN32

int color_on(HDC dc, int x, int y) {
  const COLORREF color = GetPixel(dc, x, y);
  return GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color);
}

int color_of(HBITMAP bitmap, int x, int y) {
  HDC dc = CreateCompatibleDC(NULL);
  HGDIOBJ before = SelectObject(dc, bitmap);
  const int color = color_on(dc, x, y);
  SelectObject(dc, before);
  DeleteDC(dc);
  return color;
}

HWND open_window(WNDPROC procedure, int width, int height) {
  const WNDCLASSA window_class = {
      0, procedure, 0, 0, NULL, NULL, LoadCursor(NULL, IDC_ARROW), GetStockObject(WHITE_BRUSH), NULL, "examples"};
  RegisterClassA(&window_class);
  HWND window = CreateWindowA("examples", "", WS_POPUP | WS_VISIBLE, 30, 40, width, height, NULL, NULL, NULL, NULL);
  UpdateWindow(window);
  SetActiveWindow(window);
  return window;
}

int color_shown(HWND window, int x, int y) {
  UpdateWindow(window);
  HDC dc = GetDC(window);
  const int color = color_on(dc, x, y);
  ReleaseDC(window, dc);
  return color;
}

void close_window(HWND window) {
  DestroyWindow(window);
  UnregisterClassA("examples", NULL);
}

#endif

// ---- Running

static int run(const Example* example) {
  HGLOBAL dib = picture(example->depth);
  const int failed = example->run(dib);
  GlobalFree(dib);
  if (failed) fprintf(stderr, "FAILED: %s\n", example->name);
  return failed;
}

static const Example* example_of(const char* name) {
  for (size_t i = 0; i < sizeof kFamilies / sizeof *kFamilies; ++i)
    for (const Example* example = kFamilies[i]; example->name != NULL; ++example)
      if (strcmp(example->name, name) == 0) return example;
  return NULL;
}

static int run_named(const char* name) {
  const Example* example = example_of(name);
  if (example != NULL) return run(example);
  fprintf(stderr, "FAILED: %s has no example\n", name);
  return 1;
}

// Every function in the table of exports has an example.
static int run_all(FILE* table) {
  int failures = 0, count = 0;
  char line[400], builds[20], name[60];
  while (fgets(line, sizeof line, table) != NULL) {
    if (sscanf(line, " %*d | %19[a-z] | %*[^|]| %59[A-Za-z0-9_]", builds, name) != 2) continue;
#ifndef _WIN32
    if (strcmp(builds, "windows") == 0) continue;
#endif
    failures += run_named(name);
    ++count;
  }
  printf("%d examples, %d failures\n", count, failures);
  return failures != 0 || count == 0;
}

int main(int count, char** arguments) {
  if (count < 3) return 2;
  FILE* table = fopen(arguments[2], "r");
  if (table == NULL || enter(arguments[1]) != 0)
    return fprintf(stderr, "usage: examples FOLDER EXPORT_TABLE [EXPORT...]\n"), 2;
  int failed = 0;
  for (int i = 3; i < count; ++i) failed |= run_named(arguments[i]);
  if (count == 3) failed = run_all(table);
  fclose(table);
  return failed;
}
