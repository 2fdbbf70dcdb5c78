// Dithering and halftoning of pictures whose headers may lie.
#include "calls.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int operation = input.byte() % 8;
  const int number = input.number();
  const fuzz::Picture picture(input);
  // Error diffusion works on every pixel: pixels are limited, whatever bytes they take. It takes 64 steps for shorter rows too.
  BITMAPINFOHEADER true_color = picture.header();
  true_color.biBitCount = 24;
  if (true_color.biWidth > 0) true_color.biWidth = std::max<decltype(true_color.biWidth)>(true_color.biWidth, 64);
  if (true_color.biHeight <= 0) true_color.biHeight = 1;  // no rows, but scratch memory for one
  if (!picture.is_acceptable() || fuzz::rows_bytes(true_color) > input.most_bytes()) return 0;
  constexpr std::array kDithers = {DitherFS4, DitherJJN, DitherSmooth, DitherSharp};
  fuzz::make(picture, [&](HGLOBAL dib) {
    WORD error = 0;
    HGLOBAL result = operation < 4 ? kDithers[static_cast<size_t>(operation)](dib, number)
                                   : Halftone(dib, static_cast<WORD>(operation - 4), number, &error);
    while (GlobalUnlock(dib) != FALSE) {
    }
    return result;
  });
  return 0;
}
