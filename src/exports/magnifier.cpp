// The magnifying lens.
#include "display/magnifier.h"

#include <vorel32.h>

#include "display/lens.h"

using namespace vorel;
using namespace vorel::display;

extern "C" {

int VORELCALL M_SetSizes(int width, int height) {
  set_lens_size({width, height});
  return 1;
}

int VORELCALL M_GetWidth(void) { return lens_size().width; }
int VORELCALL M_GetHeight(void) { return lens_size().height; }

int VORELCALL M_StartMagnify(HWND window, HPALETTE palette) {
  start_lens(window, palette);
  return 1;
}

int VORELCALL M_StopMagnify(void) {
  stop_lens();
  return 1;
}

int VORELCALL M_CalcRect(int x, int y, int* zoom, RECT* source) {
  if (zoom == nullptr || source == nullptr) return 0;
  const auto part = lens_source({x, y}, std::span<int, 4>(zoom, 4), lens_size().width, lens_size().height);
  if (!part) return 0;
  *source = rect_of(*part);
  return 1;
}

void VORELCALL M_StretchBitmap(HBITMAP source, int x, int y, int width, int height) {
  fill_lens(source, x, y, width, height);
}

void VORELCALL M_CopyBitmap(HWND window, int x, int y) { place_lens(window, {x, y}); }

}  // extern "C"
