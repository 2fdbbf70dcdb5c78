// Moves the light of each block of two by two pixels to its brightest ones.
#pragma once

#include <cstdint>

#include "kernels/bilevel/diffusion.h"

namespace vorel::kernels::VOREL_LEVEL {

// Light that is left over from whitening a block's brightest pixels goes to the block to the right, halved if sharpened. The
// upper row of a block comes from the row above, the lower one is the next row of the picture: samples are one row and, as
// blocks reach to the right, one column ahead.
//
// Where rows fill their plane, the pixel past the end is never loaded: for both rows of the blocks it keeps the remainder of
// the row above. The second stream of a channel carries it for the lower row.
template <int kPlanes, bool kHalves>
class Redistribution {
 public:
  static constexpr int kLag = 2, kLate = 1;
  static constexpr size_t kChannels = kPlanes, kStreams = 2 * kPlanes;
  static constexpr bool kMakesIndices = false;

  //   last_lane   the lane of the picture's last row, whose lower row repeats the upper one
  //   fills_plane whether the pixel past the end is never loaded
  Redistribution(int last_lane, bool fills_plane) : fills_plane_(fills_plane) {
    for (int lane = 0; lane < kLanes; ++lane) is_last_[lane] = lane == last_lane ? int16_t{-1} : int16_t{0};
  }

  template <bool kEnds>
  void step(Lanes (&streams)[kStreams], const Lanes (&samples)[kChannels], const LaneColumns<kEnds>& columns,
            Lanes* results) {
    const Lanes inside = kEnds ? columns.from(1) & columns.before(columns.width + 1) : lanes_of(-1);
    const Lanes at_end = kEnds && fills_plane_ ? columns.at(columns.width) : Lanes{};
    const Lanes past_end = kEnds && fills_plane_ ? columns.at(columns.width + 1) : Lanes{};
    for (size_t channel = 0; channel < kChannels; ++channel) {
      Lanes &above = streams[2 * channel], &past = streams[2 * channel + 1];
      Block& block = blocks_[channel];
      const Lanes lower = chosen(at_end, past, chosen(is_last_, above, samples[channel]));
      block = {{block.pixels[1], above, block.pixels[3], lower}, block.carried};
      results[channel] = block.move_light(inside);
      above = chosen(past_end, block.pixels[0], block.pixels[2]);
      past = block.pixels[2];
    }
  }

 private:
  struct Block {
    Lanes pixels[4] = {};  // upper left, upper right, lower left, lower right
    Lanes carried = {};

    // Returns the lanes whose upper left pixel has become white.
    Lanes move_light(Lanes inside) {
      const Lanes sum = pixels[0] + pixels[1] + pixels[2] + pixels[3] + carried;
      Lanes ranks[4];
      rank(ranks);
      for (int i = 0; i < 4; ++i) {
        Lanes light = sum - ranks[i] * kWhite;
        light = chosen(light < int16_t{0}, Lanes{}, light);
        light = chosen(light > kWhite, lanes_of(kWhite), light);
        pixels[i] = chosen(inside, light, pixels[i]);
      }
      const Lanes is_white = (pixels[0] == kWhite) & inside;
      carried = pixels[0] & ~is_white & inside;
      if constexpr (kHalves) carried = carried >> 1;
      return is_white;
    }

    // The number of brighter pixels for each pixel. Of two equal ones the earlier counts as brighter, but of the middle two
    // the later.
    void rank(Lanes (&ranks)[4]) const {
      const Lanes* const w = pixels;
      // Comparisons that hold are -1.
      const Lanes b01 = w[1] > w[0], b02 = w[2] > w[0], b03 = w[3] > w[0], b12 = w[2] > w[1], b13 = w[3] > w[1],
                  b23 = w[3] > w[2];
      ranks[0] = -(b01 + b02 + b03);
      ranks[1] = int16_t{1} + b01 - b12 - b13;
      ranks[2] = int16_t{2} + b02 + b12 - b23;
      ranks[3] = int16_t{3} + b03 + b13 + b23;
      const auto least = [](Lanes a, Lanes b) { return chosen(a < b, a, b); };
      const auto most = [](Lanes a, Lanes b) { return chosen(a > b, a, b); };
      const Lanes low = most(least(w[0], w[1]), least(w[2], w[3])), high = least(most(w[0], w[1]), most(w[2], w[3]));
      const Lanes flipped = (low == high) & int16_t{3};
      for (Lanes& rank : ranks) rank ^= ((rank == int16_t{1}) | (rank == int16_t{2})) & flipped;
    }
  };

  Lanes is_last_ = {};
  bool fills_plane_;
  Block blocks_[kChannels];
};

}  // namespace vorel::kernels::VOREL_LEVEL
