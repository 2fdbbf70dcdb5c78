#include "print/page_layout.h"

#include <algorithm>

namespace vorel::print {
namespace {

constexpr float kMetresPerInch = 0.025400052f;

// The largest number of dots that devices can handle. Larger numbers are clamped; NaN becomes 0.
constexpr float kMostDots = 1 << 27;

int to_dots(float inches, float resolution) {
  const float dots = inches * resolution + 0.5f;
  if (!(dots == dots)) return 0;
  return static_cast<int>(std::clamp(dots, -kMostDots, kMostDots));
}

// An axis without extent needs no scaling.
float filling_scale(float page, float image) { return image == 0 ? 1.0f : page / image; }

PageScale page_scale(const ImgPrintOptions& options, Inches image, Inches page) {
  const PageScale filling = {filling_scale(page.width, image.width), filling_scale(page.height, image.height)};
  if (options.fitProportionally != 0) {
    const float scale = std::min(filling.x, filling.y);
    return {scale, scale};
  }
  return options.stretchToPage != 0 ? filling : PageScale{1.0f, 1.0f};
}

float margin(bool centers, float page, float printed) { return centers ? (page - printed) / 2 : 0.0f; }

// A range of dots or pixels; `end` is exclusive.
struct Range {
  int begin, end;

  int length() const { return std::max(end - begin, 0); }
};

Range common(Range a, Range b) { return {std::max(a.begin, b.begin), std::min(a.end, b.end)}; }

// The pixels that some of an image's dots show.
Range pixels_on(Range dots, Range image, int pixels) {
  if (dots.length() == 0) return {0, 0};
  const float scale = static_cast<float>(image.length()) / static_cast<float>(pixels);
  const auto pixel_at = [&](int dot) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): edges lie at or behind the image's, and half a pixel counts as one
    return static_cast<int64_t>(static_cast<float>(dot - image.begin) / scale + 0.5f);
  };
  // A band that is thinner than a pixel still shows one.
  const auto begin = std::clamp<int64_t>(pixel_at(dots.begin), 0, pixels - 1);
  return {static_cast<int>(begin), static_cast<int>(std::clamp<int64_t>(pixel_at(dots.end), begin + 1, pixels))};
}

Range across(Rect rect) { return {rect.x, rect.x + rect.width}; }
Range down(Rect rect) { return {rect.y, rect.y + rect.height}; }
Rect rect_of(Range x, Range y) { return {x.begin, y.begin, x.length(), y.length()}; }

}  // namespace

PrintablePage printable_page(Size dots, DotDensity resolution) {
  return {resolution, {static_cast<float>(dots.width) / resolution.x, static_cast<float>(dots.height) / resolution.y}};
}

DotDensity image_resolution(const ImgPrintOptions& options, const int* given, const DibHeader& header, DotDensity printer) {
  if (options.useImageDpi == 0) return printer;
  const bool has_given = given != nullptr;
  const int x = has_given ? given[0] : header.x_per_metre, y = has_given ? given[1] : header.y_per_metre;
  if (x <= 0 || y <= 0) return printer;
  const float unit = has_given ? 1.0f : kMetresPerInch;
  return {static_cast<float>(x) * unit, static_cast<float>(y) * unit};
}

Placement place_image(const ImgPrintOptions& options, Size pixels, DotDensity image, const PrintablePage& page) {
  const Inches size = {static_cast<float>(pixels.width) / image.x, static_cast<float>(pixels.height) / image.y};
  const PageScale scale = page_scale(options, size, page.size);
  const Inches printed = {size.width * scale.x, size.height * scale.y};
  const auto [x, y] = page.resolution;
  const Rect dots = {to_dots(margin(options.centreHorizontally != 0, page.size.width, printed.width), x),
                     to_dots(margin(options.centreVertically != 0, page.size.height, printed.height), y),
                     to_dots(printed.width, x), to_dots(printed.height, y)};
  return {scale, dots};
}

PlacedPart part_in_band(Rect image, Size pixels, Rect band) {
  const Range x = common(across(image), across(band)), y = common(down(image), down(band));
  if (x.length() == 0 || y.length() == 0 || pixels.width <= 0 || pixels.height <= 0) return {};
  return {rect_of(x, y), rect_of(pixels_on(x, across(image), pixels.width), pixels_on(y, down(image), pixels.height))};
}

}  // namespace vorel::print
