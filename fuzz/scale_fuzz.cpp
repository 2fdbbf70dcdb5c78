// Scaling pictures whose headers may lie.
#include "calls.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int mode = input.byte();
  const int32_t width = input.number(), height = input.number();
  const int x_factor = input.byte() % 20 - 1, y_factor = input.byte() % 20 - 1;
  const fuzz::Picture picture(input);
  if (!picture.is_acceptable()) return 0;

  // Interpolation takes the low 16 bits of the size.
  const bool is_scaled = mode % 2 == 0, takes_low_bits = is_scaled && picture.header().biBitCount > 1;
  BITMAPINFOHEADER result = picture.header();
  result.biWidth = takes_low_bits ? width & 0xFFFF : width;
  result.biHeight = takes_low_bits ? height & 0xFFFF : height;
  // It works on every pixel of the result: pixels are limited, whatever bytes they take.
  if (takes_low_bits || !is_scaled) result.biBitCount = 24;
  const auto times = [](int factor) { return static_cast<uint64_t>(std::max(factor, 0)); };
  const uint64_t factors = is_scaled ? 1 : times(x_factor) * times(y_factor);
  const uint64_t calls = takes_low_bits ? 4 : 1;  // interpolation is slow, and short pictures are scaled twice
  if (fuzz::rows_bytes(result) * factors * calls > input.most_bytes()) return 0;
  fuzz::make(picture, [&](HGLOBAL dib) {
    if (is_scaled) return ScaleDIB(dib, mode / 2 % 2, static_cast<unsigned>(width), static_cast<unsigned>(height));
    return ScaleGrayDIB(dib, width, height, x_factor, y_factor, mode / 2 % 2);
  });
  return 0;
}
