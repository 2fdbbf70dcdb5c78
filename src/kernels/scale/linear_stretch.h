// Resampling a row by two neighbours, the same in every row.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/arena.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// For levels without the instructions.
struct NoStretch {
  static constexpr size_t kBlock = 1;
  NoStretch(std::span<const uint32_t>, const uint8_t*, size_t, Arena&) {}
  static bool fits() { return false; }
  static size_t samples_within(size_t) { return 0; }
  static void stretch(const uint8_t*, size_t, size_t, uint8_t*) {}
};

// Of two neighbours that weigh 255 together, the lighter one weighs at most 127, so weights are signed bytes. The mixture is the
// heavier one, plus the lighter one's share, less the same share of the heavier one. A share (n + 128) / 255 is a single
// multiply-add of pairs of bytes, (sample, 129) times (weight, 1), and a high product. What 255 - weight leaves of the heavier
// one is rounded by the same rule; so what it loses is (n + 126) / 255.
template <class Vector, class Numbers>
struct LinearMix {
  static constexpr uint8_t kRounding = 129, kRoundingOfLoss = 127;

  static constexpr uint16_t pair_of(uint8_t weight) { return static_cast<uint16_t>(weight | 1 << 8); }

  // What the heavier samples gain. All are followed by their rounding.
  [[gnu::always_inline]] static Numbers change(Vector lighter, Vector heavier, Numbers weights) {
    return share(lighter, weights) - share(heavier, weights);
  }

  // Two rows, the lighter one's weight being the same for all samples.
  [[gnu::always_inline]] static Vector mixed(Vector lighter, Vector heavier, Numbers weights) {
    const Vector rounding = Vector{} + kRounding, of_loss = Vector{} + kRoundingOfLoss;
    return heavier + pack_signed(change(low_pairs(lighter, rounding), low_pairs(heavier, of_loss), weights),
                                 change(high_pairs(lighter, rounding), high_pairs(heavier, of_loss), weights));
  }

  // Weights of 127 and 128 where `halves` is 1: half the lighter one rounded down, and half the heavier one rounded up, except that
  // the share of a 1 is 1 and that of 254 is 128. Where `halves` is 0, both are the same sample, which remains.
  static constexpr uint8_t kHalf = 127;
  [[gnu::always_inline]] static Vector halved(Vector lighter, Vector heavier, Vector halves) {
    lighter += (Vector)(lighter == 1) & halves;
    heavier += (Vector)(heavier == 254) & halves;
    return mean(lighter, heavier) - (lighter & ~heavier & 1);
  }

 private:
  [[gnu::always_inline]] static Numbers share(Vector pairs, Numbers weights) {
    return multiply_high(multiply_add(pairs, (Vector)weights), Numbers{} + uint16_t{257});
  }
};

#ifdef __AVX512VBMI__
using WideBytes = Bytes64;
using WideWords = Words64;
#else
using WideBytes = Bytes;
using WideWords = Words;
#endif
using WideMix = LinearMix<WideBytes, WideWords>;

#ifdef __SSE4_1__

// Samples are made in blocks of a whole vector, from two vectors of neighbours. Tables of blocks that repeat after a few, as
// those of simple ratios do, are kept once.
class LinearStretch {
 public:
#ifdef __AVX512VBMI__
  static constexpr size_t kWindow = 128, kRun = 32;
#else
  static constexpr size_t kWindow = 16, kRun = 8;
#endif
  static constexpr size_t kBlock = sizeof(WideBytes);

  // The neighbours of each sample are at its position and `channels` bytes further; `weights` are the weights of the second.
  LinearStretch(std::span<const uint32_t> positions, const uint8_t* weights, size_t channels, Arena& arena)
      : blocks_(aligned_blocks((positions.size() + kBlock - 1) / kBlock, arena)),
        windows_(arena.take<uint32_t>(blocks_.size() * kWindows)) {
    for (size_t block = 0; block < blocks_.size(); ++block)
      for (size_t run = 0; run < kWindows; ++run) {
        const auto at = [&](size_t i) { return std::min(block * kBlock + run * kRun + i, positions.size() - 1); };
        // Positions ascend but for the channels of a pixel.
        uint32_t first = positions[at(0)];
        for (size_t i = 1; i < kRun; ++i) first = std::min(first, positions[at(i)]);
        windows_[block * kWindows + run] = first;
        for (size_t i = 0; i < kRun; ++i) {
          const size_t here = positions[at(i)] - first, next = here + channels;
          const uint8_t weight = weights[at(i)];
          fits_ = fits_ && next < kWindow;
          const bool next_is_heavier = weight > 127;
          const auto lighter_weight = static_cast<uint8_t>(next_is_heavier ? 255 - weight : weight);
          has_halves_ = has_halves_ && (lighter_weight == 0 || lighter_weight == WideMix::kHalf);
          const auto [half, place] = place_of(run * kRun + i);
          uint8_t* const places = &blocks_[block].places[half][place / kPair * kPart + place % kPair];
          places[kPair] = static_cast<uint8_t>((next_is_heavier ? next : here) % kWindow);
          places[0] = lighter_weight == 0 ? places[kPair] : static_cast<uint8_t>((next_is_heavier ? here : next) % kWindow);
          blocks_[block].weights[half][place] = WideMix::pair_of(lighter_weight);
        }
      }
    find_period(positions.size() / kBlock);
  }

  bool fits() const { return fits_; }

  // The samples of the first blocks, whose windows end within `bytes` of the row.
  size_t samples_within(size_t bytes) const {
    size_t count = 0;
    while (fits_ && count < windows_.size() && windows_[count] + kWindow <= bytes) ++count;
    return count / kWindows * kBlock;
  }

  // Writes the samples from `begin`, the start of a block, to before `end`. The row begins at `from`.
  void stretch(const uint8_t* from, size_t begin, size_t end, uint8_t* to) const {
    if (has_halves_)
      stretch<Weights::kHalves>(from, begin, end, to);
    else
      stretch<Weights::kAny>(from, begin, end, to);
  }

 private:
  static constexpr size_t kPart = 16, kPair = kPart / 2;  // bytes of a part, and samples whose neighbours it has
  static constexpr size_t kWindows = kBlock / kRun;
  static constexpr size_t kLongestPeriod = 12;

  struct alignas(kBlock) Block {
    uint8_t places[2][kBlock];  // of lighter and heavier neighbours in the windows
    uint16_t weights[2][kBlock / 2];
  };

  static std::span<Block> aligned_blocks(size_t count, Arena& arena) {
    uint8_t* const memory = arena.take<uint8_t>(count * sizeof(Block) + alignof(Block)).data();
    return {reinterpret_cast<Block*>(memory + (0 - reinterpret_cast<uintptr_t>(memory)) % alignof(Block)), count};
  }

  // Those of halves are 0 or 127 for the lighter neighbour, as at twice the size.
  enum class Weights { kAny, kHalves };

  template <Weights kWeights>
  void stretch(const uint8_t* from, size_t begin, size_t end, uint8_t* to) const {
    const uint32_t* windows = &windows_[begin / kBlock * kWindows];
    if (period_ == 1) {
      const Block block = blocks_[0];  // in registers
      for (; begin + kBlock <= end; begin += kBlock, to += kBlock, windows += kWindows)
        store(to, stretched<kWeights>(from, windows, block));
    }
    for (size_t at = begin / kBlock % period_; begin + kBlock <= end; begin += kBlock, to += kBlock, windows += kWindows) {
      store(to, stretched<kWeights>(from, windows, blocks_[at]));
      if (++at == period_) at = 0;
    }
    if (begin == end) return;
    alignas(kBlock) uint8_t last[kBlock];
    store(last, stretched<kWeights>(from, windows, blocks_.back()));
    std::memcpy(to, last, end - begin);
  }

  struct Place {
    size_t half, place;
  };
  // The vector of a sample, and its place among the samples of the vector.
  static Place place_of(size_t sample) {
#ifdef __AVX512VBMI__
    return {sample / kRun, sample % kRun};
#else
    return {sample / kPair % 2, sample / kPart * kPair + sample % kPair};
#endif
  }

  void find_period(size_t whole_blocks) {
    const auto repeats = [&](size_t period) {
      for (size_t block = period; block < whole_blocks; ++block)
        if (std::memcmp(&blocks_[block], &blocks_[block - period], sizeof(Block)) != 0) return false;
      return true;
    };
    period_ = 1;
    while (period_ < kLongestPeriod && !repeats(period_)) ++period_;
    if (!repeats(period_)) period_ = std::max<size_t>(blocks_.size(), 1);
  }

  template <Weights kWeights>
  [[gnu::always_inline]] static WideBytes stretched(const uint8_t* from, const uint32_t* windows, const Block& block) {
    const WideBytes low = neighbours<0>(from, windows, block), high = neighbours<1>(from, windows, block);
    WideBytes mixed = high_halves(low, high);
    if constexpr (kWeights == Weights::kHalves)
      mixed = WideMix::halved(low_halves(low, high), mixed,
                              pack_signed(load<WideWords>(block.weights[0]) & 1, load<WideWords>(block.weights[1]) & 1));
    else
      mixed += pack_signed(change<0>(low, block), change<1>(high, block));
#ifdef __AVX512VBMI__
    return even_then_odd_groups(mixed);
#else
    return mixed;
#endif
  }

  // In each part eight lighter ones, then the eight heavier ones.
  template <size_t kHalf>
  [[gnu::always_inline]] static WideBytes neighbours(const uint8_t* from, const uint32_t* windows, const Block& block) {
    const auto places = load<WideBytes>(block.places[kHalf]);
#ifdef __AVX512VBMI__
    from += windows[kHalf];
    return picked(load<WideBytes>(from), load<WideBytes>(from + kWindow / 2), places);
#else
    const size_t first = windows[kHalf], last = windows[kWindows - 2 + kHalf];
    return shuffle(parts(from + first, last - first), places);
#endif
  }

  template <size_t kHalf>
  [[gnu::always_inline]] static WideWords change(WideBytes neighbours, const Block& block) {
    const WideBytes rounding = WideBytes{} + WideMix::kRounding, of_loss = WideBytes{} + WideMix::kRoundingOfLoss;
    return WideMix::change(low_pairs(neighbours, rounding), high_pairs(neighbours, of_loss),
                           load<WideWords>(block.weights[kHalf]));
  }

  std::span<Block> blocks_;
  std::span<uint32_t> windows_;  // positions of each block's windows
  bool fits_ = true, has_halves_ = true;
  size_t period_ = 1;
};

#else

using LinearStretch = NoStretch;

#endif

}  // namespace vorel::kernels::VOREL_LEVEL
