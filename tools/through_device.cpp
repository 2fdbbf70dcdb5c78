// Takes a picture to a device bitmap of the display and back, and saves what comes of it.
// usage: through_device IN.bmp OUT.bmp
#include <cstdio>

#include <vorel32.h>

namespace {

int failed(const char* what) {
  char reason[IMG_MESSAGE_BYTES];
  std::fprintf(stderr, "through_device: %s: %s\n", what, ImgErrorString(reason, ImgError()));
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "usage: through_device IN.bmp OUT.bmp\n");
    return 2;
  }
  HBITMAP bitmap = LoadBitmapFromFile(arguments[1]);
  if (bitmap == nullptr) return failed(arguments[1]);
  BITMAP facts{};
  GetObject(bitmap, sizeof facts, &facts);
  const BOOL saved = SaveBitmap(arguments[2], bitmap, nullptr);
  DeleteObject(bitmap);
  if (!saved) return failed(arguments[2]);
  std::printf("%s: a device bitmap of %ld x %ld at %d bits, saved as %s\n", arguments[1], facts.bmWidth, facts.bmHeight,
              facts.bmBitsPixel, arguments[2]);
  return 0;
}
