// Rows of one byte per pixel to and from packed rows, and the two orders of colour channels.
#pragma once

#include <cstdint>
#include <span>

namespace vorel {

// To rows of 1, 4 or 8 bits per pixel. Upper bits of an index that do not fit the depth are dropped; unused bits of the last
// byte become 0. The row may begin where the indices begin.
void pack_indices(std::span<const uint8_t> indices, int depth, std::span<uint8_t> row);

// From rows of 1, 2, 4 or 8 bits per pixel.
void unpack_indices(std::span<const uint8_t> row, int depth, std::span<uint8_t> indices);

// Exchanges the first and third byte of each of `width` pixels of 24 bits.
void swap_red_and_blue(std::span<uint8_t> row, int width);

}  // namespace vorel
