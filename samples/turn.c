/* Turns the first page of an image file upright and saves it as a bitmap file: turn scan.tif upright.bmp */
#include <stdio.h>

#include <vorel32.h>

static int fail(const char* what) {
  char why[IMG_MESSAGE_BYTES];
  int code = ImgError(); /* some failures of codec modules leave no code */
  fprintf(stderr, "%s: %s\n", what, code == IMG_OK ? "damaged or not supported" : ImgErrorString(why, code));
  return 1;
}

int main(int count, char** words) {
  HGLOBAL scan, upright;
  if (count != 3) return fprintf(stderr, "usage: turn IN OUT.bmp\n"), 2;
  scan = LoadImageIntoDIB(words[1], 1, NULL);
  if (scan == NULL) return fail(words[1]);
  upright = RotateDIB90(scan);
  GlobalFree(scan);
  if (upright == NULL || !SaveDIB(words[2], upright)) return fail(words[2]);
  GlobalFree(upright);
  return 0;
}
