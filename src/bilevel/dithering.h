// Reducing pictures to few fixed colours by error diffusion.
#pragma once

#include <span>

#include "bilevel/channels.h"
#include "dib/header.h"
#include "dib/view.h"

namespace vorel {

enum class Dithering { kFloydSteinberg, kJarvisJudiceNinke, kSmooth, kSharp };

// The fixed colours of results with so many bits: black and white; each of red, green and blue on or off; eight reds, eight greens
// and four blues.
void write_dither_colors(int bits, std::span<Rgb> colors);

// Fills a zero-filled result of 1, 4 or (not kSmooth and kSharp) 8 bits and of the source's size. Memory that runs short is thrown
// as std::bad_alloc.
void dither(Channels& source, DibView result, Dithering method);

}  // namespace vorel
