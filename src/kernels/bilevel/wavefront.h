// Error diffusion over sixteen rows at a time. A pixel waits for its left neighbour and for a few pixels of the row above,
// so each row can follow the one above it at a distance of a few columns: the lag. All sixteen advance by a column in each
// step.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/arena.h"
#include "core/view.h"
#include "kernels/bilevel/row_lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// Which lanes are at a column of the picture in a step. Between the ends of the rows, where kEnds is false, all lanes are inside
// and at neither end.
template <bool kEnds>
struct LaneColumns {
  int step, lag, width;

  // Lanes at or past a column.
  Lanes from(int column) const { return offsets() <= limited(step - column); }
  Lanes before(int column) const { return offsets() > limited(step - column); }
  Lanes at(int column) const { return from(column) & before(column + 1); }
  Lanes inside() const {
    if constexpr (!kEnds) return lanes_of(-1);
    return from(0) & before(width);
  }

 private:
  Lanes offsets() const {
    constexpr Lanes kOrder = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    return kOrder * static_cast<int16_t>(lag);
  }
  static int16_t limited(int distance) { return static_cast<int16_t>(std::clamp(distance, -1, 1000)); }
};

//   kLag       columns between a row and the one above it
//   kLate      steps from a column's samples to its bits
//   kChannels  planes of samples; each gives bits, or all together give indices (kMakesIndices)
//   kStreams   rows of numbers passed from each row to the next
//   step(streams, samples, columns, results)
//              takes the streams at each lane's column, and leaves the next row's values kLag - 1 columns before it
template <class Method>
class Wavefront {
 public:
  static constexpr size_t kStreams = Method::kStreams, kChannels = Method::kChannels;
  static constexpr int kLag = Method::kLag;

  // Columns of the streams before `end` are passed on.
  Wavefront(int width, int end, Arena& arena) : width_(width), end_(end) {
    for (auto& stream : streams_) {
      stream = arena.take<int16_t>(static_cast<size_t>(end) + 2 * kMargin).data() + kMargin;
      std::memset(stream - kMargin, 0, (static_cast<size_t>(end) + 2 * kMargin) * sizeof(int16_t));
    }
    for (auto& bits : bits_) {
      bits = arena.take<uint16_t>(static_cast<size_t>(end) + 2 * kMargin).data();
      std::memset(bits, 0, (static_cast<size_t>(end) + 2 * kMargin) * sizeof(uint16_t));
    }
  }

  // The first row's input from above.
  std::span<int16_t> stream(size_t index) { return {streams_[index], static_cast<size_t>(end_)}; }

  // Runs over the next rows, at most sixteen.
  //   read(channel rows, lane, x, count)  puts samples of a lane into a row of bytes for each channel
  //   write(lane, x, bytes)               gets indices of a lane
  template <class Read, class Write>
  void run(Method method, int rows, Read&& read, Write&& write) {
    alignas(64) uint8_t samples[kChannels][kTile * kLanes], indices[kTile * kLanes];
    Lanes passed[kStreams] = {};
    const int steps = end_ + kLag * kLanes;
    for (int begin = 0; begin < steps; begin += kTile) {
      gather(samples, rows, begin, read);
      // A method may look one column further.
      const bool has_ends = begin <= kLag * kLanes || begin + kTile >= width_;
      if (has_ends)
        for (int i = 0; i < kTile; ++i) step<true>(method, passed, samples, begin, i, indices);
      else
        for (int i = 0; i < kTile; ++i) step<false>(method, passed, samples, begin, i, indices);
      if constexpr (Method::kMakesIndices) scatter(indices, rows, begin, write);
    }
  }

  // The bits of a lane as a row of pixels; unused bits of the last byte are 0.
  void write_bits(size_t channel, int lane, std::span<uint8_t> row) const {
    const uint16_t* from = bits_[channel] + lane * kLag + Method::kLate;
    const auto load = [&](const uint16_t* masks) {
      return _mm_sll_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(masks)), _mm_cvtsi32_si128(15 - lane));
    };
    for (size_t byte = 0; byte < row.size(); byte += 2, from += kLanes)
      store_bits(_mm_movemask_epi8(_mm_packs_epi16(load(from), load(from + 8))), row.subspan(byte));
  }

 private:
  static constexpr int kTile = 64;        // steps whose samples are gathered together
  static constexpr size_t kMargin = 128;  // columns that steps go past either end of a row

  // Samples by step and lane, for the steps from `begin` on.
  template <class Read>
  void gather(uint8_t (&samples)[kChannels][kTile * kLanes], int rows, int begin, Read& read) const {
    alignas(64) uint8_t by_lane[kChannels][kLanes * kTile] = {};
    for (int lane = 0; lane < rows; ++lane) {
      const int first = begin - lane * kLag, x = std::max(first, 0), last = std::min(first + kTile, end_);
      if (x >= last) continue;
      uint8_t* to[kChannels];
      for (size_t channel = 0; channel < kChannels; ++channel) to[channel] = by_lane[channel] + lane * kTile + (x - first);
      read(to, lane, x, last - x);
    }
    for (size_t channel = 0; channel < kChannels; ++channel)
      for (int i = 0; i < kTile; i += kLanes)
        transpose_bytes(by_lane[channel] + i, kTile, samples[channel] + i * kLanes, kLanes);
  }

  template <bool kEnds>
  void step(Method& method, Lanes (&passed)[kStreams], const uint8_t (&samples)[kChannels][kTile * kLanes], int begin, int i,
            uint8_t* indices) {
    const int at = begin + i;
    Lanes now[kChannels], results[kChannels];
    for (size_t channel = 0; channel < kChannels; ++channel) now[channel] = widened(samples[channel] + i * kLanes);
    for (size_t s = 0; s < kStreams; ++s) passed[s] = moved_on(passed[s], at < end_ ? streams_[s][at] : int16_t{0});
    method.step(passed, now, LaneColumns<kEnds>{at, kLag, width_}, results);
    for (size_t s = 0; s < kStreams; ++s) streams_[s][at - (kLag * kLanes - 1)] = passed[s][kLanes - 1];
    if constexpr (Method::kMakesIndices)
      store_bytes(results[0], indices + i * kLanes);
    else
      for (size_t channel = 0; channel < kChannels; ++channel) bits_[channel][at] = bits_of(results[channel]);
  }

  // Passes indices, by step and lane, on as rows of each lane.
  template <class Write>
  void scatter(const uint8_t* indices, int rows, int begin, Write& write) const {
    alignas(64) uint8_t by_lane[kLanes * kTile];
    for (int i = 0; i < kTile; i += kLanes) transpose_bytes(indices + i * kLanes, kLanes, by_lane + i, kTile);
    for (int lane = 0; lane < rows; ++lane) {
      const int first = begin - lane * kLag, x = std::max(first, 0), last = std::min(first + kTile, width_);
      if (x < last)
        write(lane, x, std::span<const uint8_t>(by_lane + lane * kTile + (x - first), static_cast<size_t>(last - x)));
    }
  }

  int width_, end_;
  int16_t* streams_[kStreams];
  uint16_t* bits_[kChannels];
};

}  // namespace vorel::kernels::VOREL_LEVEL
