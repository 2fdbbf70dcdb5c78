// Group 4 fax data: each row is coded by how its changes of colour lie beside those of the row above (ITU-T T.6). libtiff's encoder
// writes the same bytes in five times the time, and was most of the cost of a batch of pages. Decoding stays with libtiff.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace codec {

class Group4Encoder {
 public:
  // `width` in pixels, at least 1. `white_bit` is the bit of a white pixel.
  Group4Encoder(int width, bool white_bit);

  // The next row from the top, of at least `width` bits; the high bit of a byte is the leftmost pixel.
  void add_row(std::span<const uint8_t> row);

  // The data of all rows and the code that ends a page.
  std::vector<uint8_t> finish();

 private:
  // Positions in ascending order at which the colour changes, the first one to black; then copies of `width_`.
  using Changes = std::vector<int>;

  void find_changes(std::span<const uint8_t> row);
  void encode_changes();

  int width_;
  uint64_t white_word_;
  Changes above_, changes_;
  size_t above_count_ = 0, count_ = 0;

  std::vector<uint8_t> bytes_;
  size_t size_ = 0;  // of the bytes that are written
  uint64_t pending_ = 0;
  int pending_bits_ = 0;
};

}  // namespace codec
