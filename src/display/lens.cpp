#include "display/lens.h"

#include "core/saturate.h"

namespace vorel::display {
namespace {

constexpr int kOne = 10;

// Picture pixels that fill the lens along one axis.
int64_t source_extent(int numerator, int denominator, int lens) {
  return int64_t{denominator} * (int64_t{lens} - kLensFrames) / numerator;
}

}  // namespace

std::optional<Box> lens_source(Point middle, std::span<int, 4> zoom, int lens_width, int lens_height) {
  if (zoom[2] == 0 || zoom[3] == 0) return std::nullopt;
  if (zoom[1] > zoom[0] || zoom[0] == 0) zoom[0] = zoom[1] = kOne;
  if (zoom[3] > zoom[2]) zoom[2] = zoom[3] = kOne;
  const int64_t width = source_extent(zoom[0], zoom[1], lens_width);
  const int64_t height = source_extent(zoom[2], zoom[3], lens_height);
  const int64_t left = middle.x - width / 2, top = middle.y - height / 2;
  return Box{saturated(left), saturated(top), saturated(left + width), saturated(top + height)};
}

}  // namespace vorel::display
