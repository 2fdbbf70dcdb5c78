// Making pictures larger or smaller.
#pragma once

#include <cstdint>
#include <span>

#include "core/byte_count.h"
#include "core/header.h"
#include "core/view.h"
#include "kernels/levels.h"

namespace vorel::kernels {

enum class Interpolation { kLinear, kCubic };

// An interpolating scaler fills a result of the same depth, 4, 8 or 24 bits, whose pixels need not be cleared; row padding
// is left alone. Below 24 bits there are at most as many colours as the depth has; an index past them is black.
//   source   the first rows of the picture; the others are like its last one
//   height   of the picture
//   scratch  interpolation_scratch() bytes, aligned to 8 bytes
using Interpolate = void(ConstDibView source, int height, std::span<const Rgb> colors, DibView result,
                         Interpolation interpolation, std::span<uint8_t> scratch);

constexpr ByteCount interpolation_scratch(Size source, Size result) {
  constexpr uint64_t kPerSourcePixel = 3, kPerResultPixel = 84, kColorMap = 320'000, kRest = 4096;
  return kPerSourcePixel * static_cast<uint64_t>(source.width) + kPerResultPixel * static_cast<uint64_t>(result.width) +
         kColorMap + kRest;
}

struct ScaleTable {
  // Mixes colours; below 24 bits each mixture becomes the nearest colour. Black at the beginning of a row becomes colour 0,
  // whatever that is: a quirk that is kept.
  Interpolate* scale_colors;

  // The same for grey pictures: below 24 bits it mixes levels, and the result becomes the colour nearest to the mixed grey.
  Interpolate* scale_levels;

  // Fills a zero-filled result of the same depth with the nearest pixels of a rectangle that begins inside the picture.
  // Parts of the rectangle outside the picture stay zero.
  //   scratch  nearest_scratch() bytes, aligned to 8 bytes, or empty, which is slower
  void (*scale_nearest)(ConstDibView source, Rect rect, DibView result, std::span<uint8_t> scratch);
};

constexpr ByteCount nearest_scratch(int depth, Size result) {
  constexpr uint64_t kPerResultPixel = 3, kRest = 512;
  return depth == 1 ? kPerResultPixel * static_cast<uint64_t>(result.width) + kRest : 0;
}

const ScaleTable& scale(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
