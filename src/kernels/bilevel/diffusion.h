// Error diffusion: the error of a pixel is spread over the pixels to come. Written as methods that a wavefront steps.
#pragma once

#include <cstdint>

#include "kernels/bilevel/row_lanes.h"
#include "kernels/bilevel/wavefront.h"

namespace vorel::kernels::VOREL_LEVEL {

inline constexpr int16_t kThreshold = 128;  // lighter values become white
inline constexpr int16_t kWhite = 255;

// The shares that reach any pixel add up to less than one, so errors stay below white and no sum exceeds 16 bits.

// A share of an error, truncated towards zero.
template <int kPart>
Lanes sixteenths(Lanes error) {
  const Lanes scaled = error * int16_t{kPart};
  return (scaled + (scaled >> 15 & int16_t{15})) >> 4;
}

// The same in parts of 48: exact for all products up to 2,000.
template <int kPart>
Lanes of_48(Lanes error) {
  const Lanes scaled = error * int16_t{kPart};
  return high_product(scaled, 1366) - (scaled >> 15);
}

// Black or white, and the error.
struct ToBits {
  static constexpr bool kMakesIndices = false;

  static Lanes error_of(size_t channel, Lanes value, Lanes* results) {
    const Lanes is_white = value > kThreshold;
    results[channel] = is_white;
    return value - (is_white & kWhite);
  }
};

// Eight reds, eight greens and four blues, in this order of channels, as one index.
template <int kMostBlue>
struct ToIndices {
  static constexpr bool kMakesIndices = true;

  static Lanes error_of(size_t channel, Lanes value, Lanes* results) {
    const int16_t shift = channel == 2 ? 6 : 5, most = channel == 2 ? kMostBlue : 7;
    Lanes level = value >> shift;
    level = chosen(level < int16_t{0}, Lanes{}, level);
    level = chosen(level > most, lanes_of(most), level);
    if (channel == 0) results[0] = level << 5;
    if (channel == 1) results[0] |= level << 2;
    if (channel == 2) results[0] |= level;
    return value - (level << shift);
  }
};

// Four neighbours (Floyd and Steinberg, 1976). Two quirks that are kept: shares for the row below are assigned, not added, so
// the last of several wins; and all channels continue with the remainder of the first one.
template <class Result, int kPlanes>
struct FloydSteinberg : Result {
  // With indices, shares for the row below land one column further left.
  static constexpr int kLag = Result::kMakesIndices ? 3 : 2, kLate = 0;
  static constexpr size_t kChannels = kPlanes, kStreams = 1;

  template <bool kEnds>
  void step(Lanes (&streams)[kStreams], const Lanes (&samples)[kChannels], const LaneColumns<kEnds>& columns,
            Lanes* results) {
    const Lanes above = streams[0], inside = columns.inside();
    for (size_t channel = 0; channel < kChannels; ++channel) {
      const Lanes value = (above + samples[channel] + carried_[channel]) & inside;
      const Lanes error = Result::error_of(channel, value, results);
      carried_[channel] = sixteenths<7>(error);
      if (channel == 0) streams[0] = below(error, above);
    }
  }

 private:
  // The share of the row below at the first column that no later pixel reaches.
  Lanes below(Lanes error, Lanes above) {
    const Lanes counts = error != int16_t{0};
    const Lanes done = chosen(counts, sixteenths<3>(error), next_);
    if constexpr (Result::kMakesIndices) {
      next_ = chosen(counts, sixteenths<5>(error), second_);
      second_ = chosen(counts, sixteenths<1>(error), above);
    } else {
      next_ = chosen(counts, sixteenths<5>(error), chosen(counted_, second_, above));
      second_ = sixteenths<1>(error);
      counted_ = counts;
    }
    return done;
  }

  Lanes carried_[kChannels] = {};
  Lanes next_ = {}, second_ = {}, counted_ = {};
};

// Twelve neighbours (Jarvis, Judice and Ninke, 1976). Shares for the second row below are assigned, not added: a quirk
// that is kept. The last two weights of that row are parameters: one user has them swapped, which is kept too.
template <class Result, int kPlanes, int kNext, int kLast>
struct JarvisJudiceNinke : Result {
  static constexpr int kLag = 3, kLate = 0;
  static constexpr size_t kChannels = kPlanes, kStreams = 2 * kPlanes;

  template <bool kEnds>
  void step(Lanes (&streams)[kStreams], const Lanes (&samples)[kChannels], const LaneColumns<kEnds>& columns,
            Lanes* results) {
    const Lanes inside = columns.inside();
    for (size_t channel = 0; channel < kChannels; ++channel) {
      Channel& state = channels_[channel];
      const Lanes value = (streams[2 * channel] + samples[channel] + state.carried[0]) & inside;
      state.spread(Result::error_of(channel, value, results), streams[2 * channel], streams[2 * channel + 1]);
    }
  }

 private:
  struct Channel {
    Lanes carried[2] = {};                // for the next two pixels
    Lanes below[4] = {};                  // sums so far, from the previous column on
    Lanes further[2] = {};                // values so far, for the previous and the current column
    Lanes last[2] = {}, counted[2] = {};  // shares of the two previous pixels for this column, and whether they count
    Lanes last_share = {};                // of the previous pixel, for the next column

    // `second` enters with the values from above for both rows below and leaves with the value for the second one.
    void spread(Lanes error, Lanes& first, Lanes& second) {
      const Lanes one = of_48<1>(error), three = of_48<3>(error), five = of_48<5>(error), seven = of_48<7>(error);
      const Lanes counts = error != int16_t{0};
      carried[0] = carried[1] + seven;
      carried[1] = five;

      first = below[0] + three;
      below[0] = below[1] + five;
      below[1] = below[2] + seven + second;
      below[2] = below[3] + five;
      below[3] = three;

      const Lanes before = chosen(counted[0], last[0], chosen(counted[1], last[1], second));
      second = chosen(counts, one, further[0]);
      further[0] = chosen(counts, three, further[1]);
      further[1] = chosen(counts, five, before);
      last[1] = last_share;
      counted[1] = counted[0];
      last[0] = kNext == 1 ? one : three;
      last_share = kLast == 1 ? one : three;
      counted[0] = counts;
    }
  };

  Channel channels_[kChannels];
};

}  // namespace vorel::kernels::VOREL_LEVEL
