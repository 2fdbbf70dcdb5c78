// A picture at smaller sizes, for showing it on a screen.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "common/picture.h"

namespace vorel::programs {

// Every shown pixel is the mean of its area, so that black and white becomes mixtures of its two colours by the share of each. Copies
// of half the size, a quarter and so on are made once; drawing any part at any size then reads few pixels. Sizes of more than half are
// exact to two levels; below, the edges of areas fall into pixels of a copy, which count as even. A part is drawn as it is in the
// whole, so that parts drawn at different times fit together.
class Reductions {
 public:
  Reductions() = default;  // of no picture

  // Of a workable picture, whose memory must outlive this.
  explicit Reductions(const Picture& picture);

  // Draws `part` of the picture scaled to `size` as rows from the top, a pixel a number 0x00RRGGBB.
  void draw(Size size, Rect part, std::span<uint32_t> pixels) const;

  // Those of the halved copies.
  uint64_t bytes() const;

  // The colours that are mixtures of two, from one to the other; empty for pictures of more colours.
  std::span<const uint32_t> mixtures() const;

 private:
  // Samples of a copy, `channels_` to a pixel, row by row from the top. Its last row and column may stand for fewer pixels.
  struct Copy {
    Size size;
    std::vector<uint8_t> samples;
  };

  Size size_of(size_t level) const;
  const uint8_t* samples(size_t level, int row, int first, int count, std::vector<uint8_t>& scratch) const;
  Copy halved(size_t level) const;
  size_t level_for(Size size) const;

  Picture picture_;  // lent
  size_t channels_ = 0;
  std::vector<Copy> copies_;
  std::array<uint32_t, 256> colors_{};  // of samples, where a pixel has one
};

}  // namespace vorel::programs
