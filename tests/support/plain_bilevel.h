// Bi-level output one pixel at a time: what the library's results are held against, and how much is gained by its way of doing
// it. No checks: these are for good pictures and parameters. What a block is too short for reads as 0.
#pragma once

#include "support/dib.h"

namespace test {

enum class PlainDither { floyd_steinberg, jarvis, smooth, sharp };

Bytes plain_dither(const Bytes& dib, PlainDither kind, int bits);

Bytes plain_halftone(const Bytes& dib, int method, int brightness);

}  // namespace test
