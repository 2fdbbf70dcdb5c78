// Resampling rows of 8-bit samples, by two or four neighbours in each direction.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "core/arena.h"
#include "core/view.h"
#include "kernels/row_output.h"
#include "kernels/scale/byte_gather.h"
#include "kernels/scale/linear_stretch.h"
#include "kernels/scale/taps.h"

namespace vorel::kernels::VOREL_LEVEL {

// A weight's share of a sample, (weight * sample + 128) / 255 without remainder: exact for all products of two bytes, in 16-bit lanes.
inline uint16_t share(uint16_t weight, uint16_t sample) {
  const auto scaled = static_cast<uint16_t>(weight * sample + 129);
  return static_cast<uint16_t>(uint32_t{scaled} * 257 >> 16);
}

[[gnu::always_inline]] inline Words share(uint16_t weight, Words samples) {
  return multiply_high(samples * weight + 129, Words{} + uint16_t{257});
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
  Resampler(ConstDibView source, Size result, int channels, Arena& arena)
      : view_(source),
        source_(source.size()),
        result_(result),
        channels_(static_cast<size_t>(channels)),
        samples_(arena.take<uint8_t>((static_cast<size_t>(source.width()) + kGuards) * channels_ + ByteGather::kOverread)),
        nothing_(arena.take<uint8_t>(band_bytes())),
        gather_(columns(arena), arena),
        stretch_(gather_.positions(), weights_[kTaps - 1], channels_, arena) {
    for (Band& band : bands_) band.samples = arena.take<uint8_t>(band_bytes());
    std::memset(nothing_.data(), 0, nothing_.size());
  }

  size_t row_samples() const { return static_cast<size_t>(result_.width) * channels_; }

  // Fills row y of the result. read_row(y, samples) reads the samples of a source row.
  void row(int y, uint8_t* to, const RowOutput& output, auto&& read_row) {
    const auto taps = Method::row(y, source_.height, result_.height);
    std::array<const uint8_t*, kTaps> rows;
    for (size_t tap = 0; tap < kTaps; ++tap)
      rows[tap] = taps.weights[tap] == 0 ? nothing_.data() : source_row(taps.first + static_cast<int>(tap), read_row);
    if (is_pick(taps.weights)) return output.copy({to, row_samples()}, rows[kMiddle], {});
    if constexpr (kTaps == 2)
      output.write_vectors({to, row_samples()}, [&](size_t begin, size_t end, uint8_t* target, auto put)
                                                    VOREL_INLINE { mix_rows(rows, taps.weights, begin, end, target, put); });
    else
      mix<Method>(
          rows, [weights = taps.weights](size_t tap, size_t) { return weights[tap]; }, row_samples(), to);
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

  // Vectors are read whole.
  size_t band_bytes() const { return row_samples() + kVectorBytes; }

  static void mix_rows(const std::array<const uint8_t*, 2>& rows, const std::array<uint8_t, 2>& weights, size_t begin,
                       size_t end, uint8_t* to, auto put) {
    const auto mixed_at = [first = rows[0], second = rows[1], weights](size_t i) VOREL_INLINE {
      const auto a = load<Bytes>(first + i), b = load<Bytes>(second + i);
      return pack(share(weights[0], low_words(a)) + share(weights[1], low_words(b)),
                  share(weights[0], high_words(a)) + share(weights[1], high_words(b)));
    };
    size_t i = begin;
    for (; i + kVectorBytes <= end; i += kVectorBytes, to += kVectorBytes) put(to, mixed_at(i));
    if (i == end) return;
    uint8_t last[kVectorBytes];
    store(last, mixed_at(i));
    std::memcpy(to, last, end - i);
  }

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
      const int next = y + 2 * (y - last_read_);  // probably: the row behind the next one
      last_read_ = y;
      stretch(band.samples.data(), next < source_.height ? view_.row(next).data() : nullptr);
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

  // `ahead` is a row of the source that is read soon.
  void stretch(uint8_t* to, const uint8_t* ahead) const {
    constexpr size_t kRun = 512;  // samples whose neighbours are picked together, so that they stay in cache
    alignas(32) uint8_t picked[kTaps][kRun];
    for (size_t begin = 0; begin < row_samples(); begin += kRun, to += kRun) {
      const size_t end = begin + kRun < row_samples() ? begin + kRun : row_samples();
      read_ahead(ahead, begin, end);
      if (picks_) {
        gather_.pick(samples_.data() + kMiddle * channels_, begin, end, to);
      } else if (stretch_.fits()) {
        stretch_.stretch(samples_.data(), begin, end, to);
      } else {
        std::array<const uint8_t*, kTaps> neighbours;
        for (size_t tap = 0; tap < kTaps; ++tap) {
          gather_.pick(samples_.data() + tap * channels_, begin, end, picked[tap]);
          neighbours[tap] = picked[tap];
        }
        mix<Method>(
            neighbours, [=, weights = weights_](size_t tap, size_t i) { return weights[tap][begin + i]; }, end - begin, to);
      }
    }
  }

  // The part that these samples are made from. Inline, because the compiler drops calls that only prefetch.
  [[gnu::always_inline]] void read_ahead(const uint8_t* row, size_t begin, size_t end) const {
    constexpr size_t kLine = 64;
    const auto byte = [&](size_t sample) { return gather_.positions()[sample] / channels_ * view_.depth() / 8; };
    if (row == nullptr) return;
    for (size_t at = byte(begin); at <= byte(end - 1); at += kLine) __builtin_prefetch(row + at, 0, 2);
  }

  ConstDibView view_;
  Size source_, result_;
  size_t channels_;
  bool picks_ = true;  // every column of the result is a column of the source
  std::array<uint8_t*, kTaps> weights_;
  std::span<uint8_t> samples_, nothing_;
  ByteGather gather_;
  std::conditional_t<kTaps == 2, LinearStretch, NoStretch> stretch_;
  std::array<Band, kTaps> bands_;
  int last_read_ = 0;
};

}  // namespace vorel::kernels::VOREL_LEVEL
