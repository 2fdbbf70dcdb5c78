// How often levels occur, as bars.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vorel::viewer {

// Heights of `width` bars, the highest `height`; heights grow with the square root, so that rare levels can be seen. A level that
// occurs is at least 1 high.
std::vector<int> bars_of(std::span<const uint64_t> counts, int width, int height);

}  // namespace vorel::viewer
