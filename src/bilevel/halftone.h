// Black and white by a threshold, by error diffusion, or by a matrix of thresholds.
#pragma once

#include <cstdint>
#include <span>

#include "dib/header.h"
#include "dib/view.h"

namespace vorel {

enum class HalftoneMethod : uint16_t { kThreshold = 0, kDiffusion = 1, kOrdered = 2 };

// Fills a zero-filled 1-bit result from a source of 4, 8 or 24 bits.
//   memory      the source's stored rows, with whatever follows them; what is behind that counts as 0
//   colors      16 or 256 below 24 bits
//   brightness  added to the luminance of each pixel
// Memory that runs short is thrown as std::bad_alloc.
void halftone(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness,
              DibView result, HalftoneMethod method);

}  // namespace vorel
