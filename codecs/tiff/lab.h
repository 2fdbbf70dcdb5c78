// CIE L*a*b* colours.
#pragma once

#include <cstdint>
#include <span>

namespace codec {

// Converts pixels of b*, a* (both from -128, stored as 0) and L* (255 is 100) to blue, green, red. White becomes white,
// whatever the illuminant.
void lab_to_true_color(std::span<uint8_t> pixels);

}  // namespace codec
