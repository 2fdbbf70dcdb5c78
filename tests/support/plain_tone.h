// Tone and colour one pixel at a time: the reference for the library's results, and a baseline for benchmarks. No checks: for good
// pictures and parameters only.
#pragma once

#include "support/dib.h"

namespace test {

// 256 counters of the square whose top left corner is (x, y), counted from the top, or the nearest that lies inside.
Bytes plain_histogram(const Bytes& dib, int x, int y);

// An empty histogram stands for none.
Bytes plain_table(const Bytes& histogram, int contrast, int brightness);

// Each of the following returns the block that the library should return. `copied` is false where the picture itself changes.

Bytes plain_lookup(const Bytes& dib, const Bytes& table, bool copied);

Bytes plain_brightness(const Bytes& dib, int brightness, int contrast);

Bytes plain_24_bits(const Bytes& dib);

struct PlainFilter {
  int type, size;
  std::vector<int> kernel = {};  // the caller's: coefficients and divisor
};

// The kernel as a file of little-endian numbers, `number_bytes` each.
Bytes kernel_file(const std::vector<int>& kernel, size_t number_bytes);

Bytes plain_convolution(const Bytes& dib, bool copied, const PlainFilter& filter);

Bytes plain_color_convolution(const Bytes& dib, bool copied, int intensity_mode, const PlainFilter& filter);

Bytes plain_gray(const Bytes& dib, int grade, bool weighted);

Bytes plain_mono_gray(const Bytes& dib, int grade);

// Empty for pictures that are not cleaned.
Bytes plain_cleaning(const Bytes& dib, int level, bool full);

}  // namespace test
