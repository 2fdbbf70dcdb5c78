// A picture at smaller sizes, for showing it on a screen.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "common/picture.h"

namespace vorel::programs {

// Every shown pixel is the mean of its area: black and white are mixed by the share of each. Copies of half the size, a quarter
// and so on are made once, so that drawing any part at any size reads few pixels. Above half the size, results are exact to two
// levels. Below, the edges of areas cut through pixels of a copy, which count as evenly coloured. Parts that are drawn at
// different times fit together.
class Reductions {
 public:
  Reductions() = default;  // of no picture

  // Of a workable picture, whose memory must outlive this.
  explicit Reductions(const Picture& picture);

  // Draws `part` of the picture scaled to `size` as rows from the top, a pixel a number 0x00RRGGBB.
  void draw(Size size, Rect part, std::span<uint32_t> pixels) const;

  // The memory of the halved copies.
  uint64_t bytes() const;

  // The mixtures of two colours, or the greys, in 256 steps; empty for other pictures.
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
