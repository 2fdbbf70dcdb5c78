// Inverts a DIB's colours, or the sense of a 1-bit DIB's bits.
#pragma once

#include <cstdint>
#include <span>

#include "core/header.h"

namespace vorel {

// Blue, green and red become 255 minus themselves.
void complement_colors(std::span<Rgb> colors);

// Swaps blue, green and red of two colours; their reserved bytes stay.
void swap_colors(Rgb& a, Rgb& b);

void invert_bits(std::span<uint8_t> bytes);

}  // namespace vorel
