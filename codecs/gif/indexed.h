// Pictures as GIF stores them: a byte for each pixel, and at most 256 colours.
#pragma once

#include <cstdint>
#include <vector>

#include "common/dib.h"

namespace codec::gif {

struct Indexed {
  Colors colors;
  std::vector<uint8_t> indices;  // from the top row on, without padding
};

// A 24-bit picture: with its own colours if they are at most 256, else with 256 that giflib chooses. Throws Failure.
Indexed indexed(const SourceDib& dib);

}  // namespace codec::gif
