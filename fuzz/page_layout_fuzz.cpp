// Pages: any image, resolution and sheet.
#include "calls.h"
#include "print/page_layout.h"

using namespace vorel;
using namespace vorel::print;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int flags = input.byte();
  ImgPrintOptions options{};
  options.fitProportionally = flags & 1;
  options.stretchToPage = flags >> 1 & 1;
  options.centreVertically = flags >> 2 & 1;
  options.centreHorizontally = flags >> 3 & 1;
  options.useImageDpi = flags >> 4 & 1;
  const auto float_of = [&] {
    const int32_t number = input.number();
    if (number % 5 != 4) return static_cast<float>(number);
    float bits;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
  };
  const auto size_of = [&] { return Size{input.number(), input.number()}; };
  const DotDensity printer{float_of(), float_of()};
  const std::array<int, 2> given = {input.number(), input.number()};
  const DibHeader header{.x_per_metre = input.number(), .y_per_metre = input.number()};
  const DotDensity image = image_resolution(options, flags >> 5 & 1 ? given.data() : nullptr, header, printer);
  const Size pixels = size_of(), sheet = size_of();
  const Placement placement = place_image(options, pixels, image, printable_page(sheet, printer));
  constexpr int kMost = 1 << 27;
  const auto is_bounded = [](int dots) { return dots >= -kMost && dots <= kMost; };
  const Rect& dots = placement.dots;
  fuzz::require(is_bounded(dots.x) && is_bounded(dots.y) && is_bounded(dots.width) && is_bounded(dots.height));

  // Bands lie on the sheet. A part lies in its band and in the picture.
  const auto on_sheet = [&] { return input.number() & 0xFFFFF; };
  const Rect band{on_sheet(), on_sheet(), on_sheet(), on_sheet()};
  const PlacedPart part = part_in_band(dots, pixels, band);
  if (part.dots.width == 0) return 0;
  fuzz::require(part.dots.x >= band.x && part.dots.x + part.dots.width <= band.x + band.width);
  fuzz::require(part.pixels.x >= 0 && part.pixels.width > 0 && part.pixels.x <= pixels.width - part.pixels.width);
  fuzz::require(part.pixels.y >= 0 && part.pixels.height > 0 && part.pixels.y <= pixels.height - part.pixels.height);
  return 0;
}
