// Picking bytes of a row, the same positions in every row.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "core/arena.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// Bytes are picked in blocks. A block's positions are reached through successive windows, a shuffle each; where positions
// lie too far apart for that, one by one.
class ByteGather {
 public:
#ifdef __AVX512VBMI__
  static constexpr size_t kBlock = 64, kWindow = 128;
#else
  static constexpr size_t kBlock = 16, kWindow = 16;
#endif
  // Bytes read behind the last position.
  static constexpr size_t kOverread = 256;

  // `positions` outlives the gather. Takes a byte of the arena for each position and four for each block.
  ByteGather(std::span<const uint32_t> positions, Arena& arena)
      : positions_(positions),
        first_(arena.take<uint32_t>((positions.size() + kBlock - 1) / kBlock)),
        relative_(arena.take<uint8_t>(first_.size() * kBlock)) {
    uint32_t widest = 0;
    for (size_t block = 0; block < first_.size(); ++block) {
      const auto at = [&](size_t i) { return positions[std::min(block * kBlock + i, positions.size() - 1)]; };
      first_[block] = at(0);
      for (size_t i = 1; i < kBlock; ++i) first_[block] = std::min(first_[block], at(i));
      for (size_t i = 0; i < kBlock; ++i) {
        widest = std::max(widest, at(i) - first_[block]);
        relative_[block * kBlock + i] = static_cast<uint8_t>(at(i) - first_[block]);
      }
    }
    windows_ = widest / static_cast<uint32_t>(kWindow) + 1;
  }

  std::span<const uint32_t> positions() const { return positions_; }

  // The bytes of the first blocks, whose windows end within `bytes` of the row.
  size_t samples_within(size_t bytes) const {
    size_t count = 0;
    while (count < first_.size() && first_[count] + windows_ * kWindow <= bytes) ++count;
    return count * kBlock;
  }

  // Picks the bytes from `begin`, the start of a block, to before `end`. Writes whole blocks.
  void pick(const uint8_t* row, size_t begin, size_t end, uint8_t* to) const {
    switch (windows_) {
#ifdef __SSSE3__
      case 1: return shuffle<1>(row, begin, end, to);
      case 2: return shuffle<2>(row, begin, end, to);
#ifndef __AVX512VBMI__
      case 3: return shuffle<3>(row, begin, end, to);
      case 4: return shuffle<4>(row, begin, end, to);
#endif
#endif
      default: break;
    }
    for (size_t i = begin; i < end; ++i) *to++ = row[positions_[i]];
  }

 private:
#ifdef __AVX512VBMI__
  template <int kWindows>
  void shuffle(const uint8_t* row, size_t begin, size_t end, uint8_t* to) const {
    for (size_t i = begin; i < end; i += kBlock, to += kBlock) {
      const uint8_t* const from = row + first_[i / kBlock];
      const auto at = load<Bytes64>(relative_.data() + i);
      Bytes64 bytes = picked(load<Bytes64>(from), load<Bytes64>(from + 64), at);
      if constexpr (kWindows == 2) {
        const Bytes64 further = picked(load<Bytes64>(from + 128), load<Bytes64>(from + 192), at);
        bytes = at < kWindow ? bytes : further;
      }
      store(to, bytes);
    }
  }
#elif defined(__SSSE3__)
  template <int kWindows>
  void shuffle(const uint8_t* row, size_t begin, size_t end, uint8_t* to) const {
    const auto beyond = _mm_set1_epi8(0x70);  // lifts 16 and more to values for which a shuffle gives 0
    for (size_t i = begin; i < end; i += kBlock, to += kBlock) {
      const uint8_t* const from = row + first_[i / kBlock];
      auto at = load<Bytes16>(relative_.data() + i);
      Bytes16 bytes{};
      for (int window = 0; window < kWindows; ++window, at -= kWindow) {
        const auto places = window + 1 < kWindows ? (Bytes16)_mm_adds_epu8((__m128i)at, beyond) : at;
        bytes |= picked(load<Bytes16>(from + static_cast<size_t>(window) * kWindow), places);
      }
      store(to, bytes);
    }
  }
#endif

  std::span<const uint32_t> positions_;
  std::span<uint32_t> first_;    // position of each block
  std::span<uint8_t> relative_;  // positions relative to it
  uint32_t windows_;
};

}  // namespace vorel::kernels::VOREL_LEVEL
