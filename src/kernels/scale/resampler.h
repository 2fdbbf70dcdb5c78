// Resampling rows of 8-bit samples, by two or four neighbours in each direction.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/arena.h"
#include "core/view.h"
#include "kernels/scale/byte_gather.h"
#include "kernels/scale/taps.h"

namespace vorel::kernels::VOREL_LEVEL {

// A weight's share of a sample, (weight * sample + 128) / 255: exact for all products of two bytes, in 16-bit lanes.
inline uint16_t share(uint16_t weight, uint16_t sample) {
  const auto scaled = static_cast<uint16_t>(weight * sample + 129);
  return static_cast<uint16_t>(uint32_t{scaled} * 257 >> 16);
}

// Mixes samples of several rows, weight(tap, i) of each. Two shares whose weights add up to 255 never exceed a byte.
template <class Method>
void mix(const std::array<const uint8_t*, 2>& rows, auto weight, size_t count,
         uint8_t* __restrict to) requires(Method::kTaps == 2) {
  const uint8_t *const first = rows[0], *const second = rows[1];
  for (size_t i = 0; i < count; ++i) {
    to[i] = static_cast<uint8_t>(share(weight(0, i), first[i]) + share(weight(1, i), second[i]));
  }
}

template <class Method>
void mix(const std::array<const uint8_t*, 4>& rows, auto weight, size_t count,
         uint8_t* __restrict to) requires(Method::kTaps == 4) {
  const uint8_t *const before = rows[0], *const first = rows[1], *const second = rows[2], *const behind = rows[3];
  for (size_t i = 0; i < count; ++i) {
    const auto sum = static_cast<int16_t>(share(weight(1, i), first[i]) - share(weight(0, i), before[i]) +
                                          share(weight(2, i), second[i]) - share(weight(3, i), behind[i]));
    to[i] = static_cast<uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
  }
}

// One picture being resampled, row after row from the first stored one. The samples of a pixel, one or three side by side,
// are mixed independently.
template <class Method>
class Resampler {
 public:
  Resampler(Size source, Size result, int channels, Arena& arena)
      : source_(source),
        result_(result),
        channels_(static_cast<size_t>(channels)),
        samples_(arena.take<uint8_t>((static_cast<size_t>(source.width) + kGuards) * channels_ + ByteGather::kOverread)),
        nothing_(arena.take<uint8_t>(row_samples())),
        gather_(columns(arena), arena) {
    for (Band& band : bands_) band.samples = arena.take<uint8_t>(row_samples());
    std::memset(nothing_.data(), 0, nothing_.size());
  }

  size_t row_samples() const { return static_cast<size_t>(result_.width) * channels_; }

  // Fills row y of the result. read_row(y, samples) reads the samples of a source row.
  void row(int y, uint8_t* to, auto&& read_row) {
    const auto taps = Method::row(y, source_.height, result_.height);
    std::array<const uint8_t*, kTaps> rows;
    for (size_t tap = 0; tap < kTaps; ++tap)
      rows[tap] = taps.weights[tap] == 0 ? nothing_.data() : source_row(taps.first + static_cast<int>(tap), read_row);
    if (is_pick(taps.weights)) {
      std::memcpy(to, rows[kMiddle], row_samples());
    } else {
      mix<Method>(
          rows, [weights = taps.weights](size_t tap, size_t) { return weights[tap]; }, row_samples(), to);
    }
  }

 private:
  static constexpr size_t kTaps = Method::kTaps;
  static constexpr size_t kMiddle = kTaps / 2 - 1;  // the tap of the sample itself
  // Samples are repeated at both ends, as far as neighbours reach.
  static constexpr size_t kGuardBefore = 1, kGuardBehind = 3, kGuards = kGuardBefore + kGuardBehind;

  // A row of the source at the width of the result.
  struct Band {
    int y = -1;
    std::span<uint8_t> samples;
  };

  static bool is_pick(const std::array<uint8_t, kTaps>& weights) { return weights[kMiddle] == kWholeWeight; }

  // The position of each sample's first tap in the guarded row; the weights go to their tables.
  std::span<const uint32_t> columns(Arena& arena) {
    const auto positions = arena.take<uint32_t>(row_samples());
    for (auto& table : weights_) table = arena.take<uint8_t>(row_samples()).data();
    for (size_t x = 0, i = 0; x < static_cast<size_t>(result_.width); ++x) {
      const auto taps = Method::column(static_cast<int>(x), source_.width, result_.width);
      const size_t first = static_cast<size_t>(taps.first + static_cast<int>(kGuardBefore)) * channels_;
      picks_ = picks_ && is_pick(taps.weights);
      for (size_t channel = 0; channel < channels_; ++channel, ++i) {
        positions[i] = static_cast<uint32_t>(first + channel);
        for (size_t tap = 0; tap < kTaps; ++tap) weights_[tap][i] = taps.weights[tap];
      }
    }
    return positions;
  }

  // Rows above the first stored one are black; the last row is repeated.
  const uint8_t* source_row(int y, auto& read_row) {
    if (y < 0) return nothing_.data();
    y = y < source_.height ? y : source_.height - 1;
    Band& band = bands_[static_cast<size_t>(y) % kTaps];
    if (band.y != y) {
      band.y = y;
      read(y, read_row);
      stretch(band.samples.data());
    }
    return band.samples.data();
  }

  void read(int y, auto& read_row) {
    const std::span<uint8_t> pixels =
        samples_.subspan(kGuardBefore * channels_, static_cast<size_t>(source_.width) * channels_);
    read_row(y, pixels);
    std::memcpy(samples_.data(), pixels.data(), channels_);
    uint8_t* behind = pixels.data() + pixels.size();
    for (size_t i = 0; i < kGuardBehind; ++i, behind += channels_) std::memcpy(behind, behind - channels_, channels_);
  }

  void stretch(uint8_t* to) const {
    constexpr size_t kRun = 512;  // samples whose neighbours are picked together, so that they stay in cache
    if (picks_) return gather_.pick(samples_.data() + kMiddle * channels_, 0, row_samples(), to);
    alignas(32) uint8_t picked[kTaps][kRun];
    std::array<const uint8_t*, kTaps> neighbours;
    for (size_t tap = 0; tap < kTaps; ++tap) neighbours[tap] = picked[tap];
    for (size_t begin = 0; begin < row_samples(); begin += kRun) {
      const size_t end = begin + kRun < row_samples() ? begin + kRun : row_samples();
      for (size_t tap = 0; tap < kTaps; ++tap) gather_.pick(samples_.data() + tap * channels_, begin, end, picked[tap]);
      mix<Method>(
          neighbours, [=, weights = weights_](size_t tap, size_t i) { return weights[tap][begin + i]; }, end - begin,
          to + begin);
    }
  }

  Size source_, result_;
  size_t channels_;
  bool picks_ = true;  // every column of the result is a column of the source
  std::array<uint8_t*, kTaps> weights_;
  std::span<uint8_t> samples_, nothing_;
  ByteGather gather_;
  std::array<Band, kTaps> bands_;
};

}  // namespace vorel::kernels::VOREL_LEVEL
