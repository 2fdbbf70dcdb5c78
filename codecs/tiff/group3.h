// Group 3 fax data whose rows have more runs than libtiff's decoder has room for.
//
// The decoder of one-dimensional codes has room for as many runs as the width in pixels, rounded up to a multiple of 32. A
// row that begins black and changes at every pixel has one run more, an empty white one in front. The decoder of
// two-dimensional codes has twice the room.
#pragma once

#include <cstdint>
#include <span>

#include "tiff/bytes.h"
#include "tiff/handle.h"

namespace codec {

// Whether a row, in which black is 1, has too many runs.
bool has_too_many_runs(std::span<const uint8_t> row, int width);

// Whether a page may have such rows: one-dimensional Group 3 data of one sample.
bool is_one_dimensional_group3(const TiffHandle& tiff);

// Makes a file of the page's data with each row marked as one-dimensional, as in two-dimensional data. Throws Failure.
void make_two_dimensional(const TiffHandle& tiff, Bytes& copy);

}  // namespace codec
