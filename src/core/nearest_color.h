// The entry of a colour table that is nearest to a colour.
#pragma once

#include <cstdint>
#include <span>

#include "core/header.h"

namespace vorel {

// Nearest is the smallest sum of the squared distances in red, green and blue; ties go to the first entry. At most 256 entries are
// searched. An empty table counts as entry 0 alone.
uint8_t nearest_color(std::span<const Rgb> colors, Rgb color);

}  // namespace vorel
