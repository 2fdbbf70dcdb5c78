// The pictures that all participants work on: made once by the driver, read from a file by each of them.
#pragma once

#include <string>
#include <vector>

#include "peers/workload.h"

namespace peers {

struct Color {
  std::uint8_t blue, green, red;
};

// Rows from the top without padding. 1 bit: the leftmost pixel in the highest bit, 1 is white. 8 bits: indices. 24 bits: blue,
// green, red.
struct Picture {
  Extent extent;
  std::vector<std::uint8_t> bytes;

  const std::uint8_t* row(int y) const { return bytes.data() + static_cast<std::size_t>(y) * extent.row_bytes(); }
};

// A printed page: lines of letters, rules and specks; with greys and colours on a gradient with noise. Indices of a palette are a
// chart of flat areas under the letters.
Picture make_picture(Extent extent);

// Black and white, greys, or a cube of 6 x 6 x 6 colours and 40 greys. None at 24 bits.
std::vector<Color> palette_of(Extent extent);

// A bitmap file, bottom row first; its pixels run-length codes if `is_encoded`, which takes 8 bits.
std::vector<std::uint8_t> bitmap_file(const Picture& picture, bool is_encoded = false);

std::vector<std::uint8_t> read_file(const std::string& path);
void write_file(const std::string& path, const std::vector<std::uint8_t>& bytes);

}  // namespace peers
