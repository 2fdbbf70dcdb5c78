// The DIB of a device bitmap: its header, and its colours if there is no palette.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "core/header.h"

namespace vorel {

// The DIB's depth for the bits per pixel of a device bitmap, all planes together: 1, 4, 8 or 24.
uint16_t dib_depth_for(uint32_t device_bits_per_pixel);

// None when no block can hold the pixels.
std::optional<DibHeader> header_for_device_bitmap(int32_t width, int32_t height, uint32_t device_bits_per_pixel);

// Black and white, the 16 standard colours, or a cube of 8 reds, 8 greens and 4 blues; empty for other depths.
std::span<const Rgb> default_colors(uint32_t depth);

}  // namespace vorel
