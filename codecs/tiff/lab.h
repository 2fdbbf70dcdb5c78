// CIE L*a*b* colours.
#pragma once

#include <cstdint>
#include <span>

namespace codec {

// Turns pixels of b*, a* (both from -128, which is 0) and L* (255 is 100) into blue, green, red. White becomes white, whatever
// the illuminant.
void lab_to_true_color(std::span<uint8_t> pixels);

}  // namespace codec
