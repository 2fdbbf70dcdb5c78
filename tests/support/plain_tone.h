// Tone and colour one pixel at a time: what the library's results are held against, and how much is gained by its way of doing
// it. No checks: these are for good pictures and parameters.
#pragma once

#include "support/dib.h"

namespace test {

// 256 counters of the square whose left upper corner is (x, y) from the top, or as near to that as the picture allows.
Bytes plain_histogram(const Bytes& dib, int x, int y);

// Without a histogram if that is empty.
Bytes plain_table(const Bytes& histogram, int contrast, int brightness);

// Each of the following returns the block that the library should. `copied` is false where the picture itself is changed.

Bytes plain_lookup(const Bytes& dib, const Bytes& table, bool copied);

Bytes plain_brightness(const Bytes& dib, int brightness, int contrast);

Bytes plain_24_bits(const Bytes& dib);

struct PlainFilter {
  int type, size;
  std::vector<int> kernel = {};  // the caller's: coefficients and divisor
};

// Its kernel as a file of little-endian numbers of so many bytes each.
Bytes kernel_file(const std::vector<int>& kernel, size_t number_bytes);

Bytes plain_convolution(const Bytes& dib, bool copied, const PlainFilter& filter);

Bytes plain_color_convolution(const Bytes& dib, bool copied, int intensity_mode, const PlainFilter& filter);

Bytes plain_gray(const Bytes& dib, int grade, bool weighted);

Bytes plain_mono_gray(const Bytes& dib, int grade);

// Nothing for pictures that are not cleaned.
Bytes plain_cleaning(const Bytes& dib, int level, bool full);

}  // namespace test
