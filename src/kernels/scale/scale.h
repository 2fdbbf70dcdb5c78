// Making pictures larger or smaller.
#pragma once

#include <span>

#include "core/header.h"
#include "core/view.h"
#include "kernels/levels.h"

namespace vorel::kernels {

enum class Interpolation { kLinear, kCubic };

// An interpolating scaler fills a result of the same depth, 4, 8 or 24 bits. An index past the colours, of which below
// 24 bits there are at most as many as the depth has, is black. Memory that runs short is thrown as std::bad_alloc.
using Interpolate = void(ConstDibView source, std::span<const Rgb> colors, DibView result, Interpolation interpolation);

struct ScaleTable {
  // Mixes colours; below 24 bits each mixture goes to the nearest colour. Black at the beginning of a row is taken for colour 0
  // whatever that is: a deliberate oddity.
  Interpolate* scale_colors;

  // The same for grey pictures, below 24 bits by the level of each colour, with the nearest colour to the grey that comes out.
  Interpolate* scale_levels;

  // Fills a zero-filled result of the same depth with the nearest pixels of a rectangle that begins inside the picture; what it
  // covers beyond is zero. `columns` is room for a number for each column of the result.
  void (*scale_nearest)(ConstDibView source, Rect rect, DibView result, std::span<int> columns);
};

const ScaleTable& scale(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
