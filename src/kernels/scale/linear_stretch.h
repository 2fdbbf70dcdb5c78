// Resampling a row by two neighbours, the same in every row.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "core/arena.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// Without the instructions for it.
struct NoStretch {
  NoStretch(std::span<const uint32_t>, const uint8_t*, size_t, Arena&) {}
  static bool fits() { return false; }
  static void stretch(const uint8_t*, size_t, size_t, uint8_t*) {}
};

#ifdef __AVX512VBMI__

// Of two neighbours that weigh 255 together, the lighter one weighs at most 127, so weights are signed bytes. The mixture is the
// heavier one, plus the lighter one's share, less the same share of the heavier one. A share (n + 128) / 255 is a single
// multiply-add of pairs of bytes, (sample, 129) times (weight, 1), and a high product. What 255 - weight leaves of the heavier
// one is rounded by the same rule; so what it loses is (n + 126) / 255.
class LinearStretch {
 public:
  // The neighbours of each sample lie at its position and `channels` bytes further; `weights` are the second ones'.
  LinearStretch(std::span<const uint32_t> positions, const uint8_t* weights, size_t channels, Arena& arena)
      : blocks_(arena.take<Block>((positions.size() + kBlock - 1) / kBlock)) {
    for (size_t block = 0; block < blocks_.size(); ++block) {
      const size_t begin = block * kBlock;
      // Positions ascend but for the channels of a pixel.
      uint32_t first = positions[begin];
      for (size_t i = begin; i < std::min(begin + kBlock, positions.size()); ++i) first = std::min(first, positions[i]);
      Block& entry = blocks_[block];
      entry.first = first;
      for (size_t i = 0; i < kBlock; ++i) {
        const size_t sample = std::min(begin + i, positions.size() - 1);
        const size_t here = positions[sample] - first, next = here + channels;
        const uint8_t weight = weights[sample];
        fits_ = fits_ && next < kWindow;
        const bool next_is_heavier = weight > 127;
        entry.heavier[i] = static_cast<uint16_t>((next_is_heavier ? next : here) % kWindow | kRoundingOfLoss << 8);
        entry.lighter[i] = static_cast<uint16_t>((next_is_heavier ? here : next) % kWindow | kRounding << 8);
        entry.weights[i] = static_cast<uint16_t>((next_is_heavier ? 255 - weight : weight) | 1 << 8);
      }
    }
  }

  bool fits() const { return fits_; }

  // Writes the samples from `begin`, the start of a block, to before `end`. The row begins at `from`; a window is read from each
  // block's first position on.
  void stretch(const uint8_t* from, size_t begin, size_t end, uint8_t* to) const {
    const Block* block = &blocks_[begin / kBlock];
    for (; begin + kBlock <= end; begin += kBlock, to += kBlock)
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), stretched(from, *block++));
    if (begin < end) _mm256_mask_storeu_epi8(to, (__mmask32{1} << (end - begin)) - 1, stretched(from, *block));
  }

 private:
  static constexpr size_t kBlock = 32, kWindow = 128, kRounding = 129, kRoundingOfLoss = 127;

  // Of each sample: positions in the window, and its lighter neighbour's weight. The upper bytes are the other factors.
  struct alignas(64) Block {
    uint16_t heavier[kBlock], lighter[kBlock], weights[kBlock];
    size_t first;
  };

  [[gnu::always_inline]] static __m256i stretched(const uint8_t* from, const Block& block) {
    constexpr __mmask64 kLowBytes = 0x5555555555555555;
    const auto low = load<__m512i>(from + block.first), high = load<__m512i>(from + block.first + 64);
    const auto weights = load<__m512i>(block.weights);
    const __m512i heavier = _mm512_mask2_permutex2var_epi8(low, load<__m512i>(block.heavier), kLowBytes, high);
    const __m512i lighter = _mm512_mask2_permutex2var_epi8(low, load<__m512i>(block.lighter), kLowBytes, high);
    const __m512i scale = _mm512_set1_epi16(257);
    const __m512i gained = _mm512_mulhi_epu16(_mm512_maddubs_epi16(lighter, weights), scale);
    const __m512i lost = _mm512_mulhi_epu16(_mm512_maddubs_epi16(heavier, weights), scale);
    return _mm512_maskz_cvtepi16_epi8(~__mmask32{0}, _mm512_add_epi16(heavier, _mm512_sub_epi16(gained, lost)));
  }

  std::span<Block> blocks_;
  bool fits_ = true;
};

#else

using LinearStretch = NoStretch;

#endif

}  // namespace vorel::kernels::VOREL_LEVEL
