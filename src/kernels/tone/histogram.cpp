#include "kernels/tone/histogram.h"

#include <algorithm>
#include <cstdlib>

namespace vorel::kernels {
namespace {

constexpr int kFurthestSlide = kHistogramSide / 2;

int clamped(int begin, int size) { return size < kHistogramSide ? 0 : std::clamp(begin, 0, size - kHistogramSide); }

}  // namespace

Corner clamped(Corner corner, Size picture) { return {clamped(corner.x, picture.width), clamped(corner.y, picture.height)}; }

bool can_slide(Corner from, Corner to) {
  return std::abs(from.x - to.x) <= kFurthestSlide && std::abs(from.y - to.y) <= kFurthestSlide;
}

}  // namespace vorel::kernels
