/* Times calls of the library on a picture of 8 x 8 pixels: nanoseconds of processor time for a call and the release of its result. */
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <vorel32.h>

static double seconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static HGLOBAL half_size(HGLOBAL dib) { return ScaleDIB(dib, 0, 4, 4); }
static HGLOBAL gray(HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 0, 0); }

int main(void) {
  static const struct {
    const char* name;
    HGLOBAL (*call)(HGLOBAL);
  } kCalls[] = {{"rotate", RotateDIB90}, {"mirror", FlipDIBHorizontal}, {"scale", half_size}, {"gray", gray}};
  const int count = 200000;
  HGLOBAL dib = GlobalAlloc(GHND, 40 + 8 * 24);
  unsigned char* const bytes = GlobalLock(dib);
  bytes[0] = 40;
  bytes[4] = bytes[8] = 8;
  bytes[12] = 1;
  bytes[14] = 24;
  GlobalUnlock(dib);
  for (size_t i = 0; i < sizeof kCalls / sizeof *kCalls; ++i) {
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
      const double start = seconds();
      for (int n = 0; n < count; ++n) GlobalFree(kCalls[i].call(dib));
      const double took = (seconds() - start) / count;
      if (took < best) best = took;
    }
    printf("%s %.0f\n", kCalls[i].name, best * 1e9);
  }
  return 0;
}
