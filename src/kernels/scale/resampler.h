// Resampling rows of 8-bit samples, by two or four neighbours in each direction.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "core/arena.h"
#include "core/view.h"
#include "kernels/cache.h"
#include "kernels/row_output.h"
#include "kernels/scale/byte_gather.h"
#include "kernels/scale/linear_stretch.h"
#include "kernels/scale/taps.h"

namespace vorel::kernels::VOREL_LEVEL {

// A weight's share of a sample, (weight * sample + 128) / 255 without remainder: exact for all products of two bytes, in 16-bit
// lanes.
inline uint16_t share(uint16_t weight, uint16_t sample) {
  const auto scaled = static_cast<uint16_t>(weight * sample + 129);
  return static_cast<uint16_t>(uint32_t{scaled} * 257 >> 16);
}

// Reads rows of samples that are stored as they are.
struct StoredSamples {
  void operator()(const uint8_t* row, std::span<uint8_t> samples) const {
    in_vectors(0, samples.size(), [&]<class V>(size_t x) VOREL_INLINE { store(&samples[x], load<V>(row + x)); });
  }
};

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
// are mixed independently. Rows of the source up to `height` that the view lacks are like its last one.
template <class Method>
class Resampler {
 public:
  Resampler(ConstDibView source, int height, Size result, int channels, Arena& arena)
      : view_(source),
        source_{source.width(), height},
        result_(result),
        channels_(static_cast<size_t>(channels)),
        samples_(arena.take<uint8_t>((static_cast<size_t>(source.width()) + kGuards) * channels_ + ByteGather::kOverread)),
        zeros_(arena.take<uint8_t>(band_bytes())),
        gather_(columns(arena), arena),
        stretch_(gather_.positions(), weights_[kTaps - 1], channels_, arena),
        from_source_(samples_from_source()) {
    for (Band& band : bands_) band.samples = arena.take<uint8_t>(band_bytes());
    std::memset(zeros_.data(), 0, zeros_.size());
  }

  size_t row_samples() const { return static_cast<size_t>(result_.width) * channels_; }

  // What row y of the result is mixed from.
  auto taps_of(int y) const { return Method::row(y, source_.height, result_.height); }
  // Whether rows that are all like the last one are mixed.
  bool repeats(const auto& taps) const { return taps.first >= view_.height() - 1; }

  // Fills a row of the result. read_row(row, samples) reads the samples of a stored row of the source.
  void row(const auto& taps, uint8_t* to, const RowOutput& output, auto&& read_row) {
    std::array<const uint8_t*, kTaps> rows;
    for (size_t tap = 0; tap < kTaps; ++tap)
      rows[tap] = taps.weights[tap] == 0 ? zeros_.data() : source_row(taps.first + static_cast<int>(tap), read_row);
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
  size_t band_bytes() const { return row_samples() + sizeof(WideBytes); }

  static void mix_rows(const std::array<const uint8_t*, 2>& rows, const std::array<uint8_t, 2>& weights, size_t begin,
                       size_t end, uint8_t* to, auto put) {
    const size_t heavier = weights[1] > weights[0];
    const uint8_t *const light = rows[1 - heavier], *const heavy = rows[heavier];
    if (const uint8_t weight = weights[1 - heavier]; weight == WideMix::kHalf)
      combine_rows(light, heavy, begin, end, to, put,
                   [](WideBytes a, WideBytes b) VOREL_INLINE { return WideMix::halved(a, b, WideBytes{} + 1); });
    else
      combine_rows(light, heavy, begin, end, to, put,
                   [pair = WideWords{} + WideMix::pair_of(weight)](WideBytes a, WideBytes b)
                       VOREL_INLINE { return WideMix::mixed(a, b, pair); });
  }

  [[gnu::always_inline]] static void combine_rows(const uint8_t* light, const uint8_t* heavy, size_t begin, size_t end,
                                                  uint8_t* to, auto put, auto combined) {
    const auto mixed_at = [&](size_t i)
                              VOREL_INLINE { return combined(load<WideBytes>(light + i), load<WideBytes>(heavy + i)); };
    constexpr size_t kWide = sizeof(WideBytes);
    size_t i = begin;
    for (; i + kWide <= end; i += kWide, to += kWide) {
      const WideBytes mixed = mixed_at(i);
      for (size_t k = 0; k < kWide; k += kVectorBytes)
        put(to + k, load<Bytes>(reinterpret_cast<const uint8_t*>(&mixed) + k));
    }
    if (i == end) return;
    uint8_t last[kWide];
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

  // Rows above the first stored one are black; the last row of the view is repeated.
  const uint8_t* source_row(int y, auto& read_row) {
    if (y < 0) return zeros_.data();
    y = y < view_.height() ? y : view_.height() - 1;
    Band& band = bands_[static_cast<size_t>(y) % kTaps];
    if (band.y != y) {
      band.y = y;
      constexpr bool kIsStored = std::is_same_v<std::remove_cvref_t<decltype(read_row)>, StoredSamples>;
      const size_t from_source = kIsStored ? from_source_ : 0;
      read(view_.row(y).data(), from_source, read_row);
      const int next = y + 2 * (y - last_read_);  // a guess: the row behind the next one
      last_read_ = y;
      const uint8_t* const ahead = next < view_.height() ? view_.row(next).data() : nullptr;
      stretch(view_.row(y).data() - kGuardBefore * channels_, 0, from_source, band.samples.data(), ahead);
      stretch(samples_.data(), from_source, row_samples(), band.samples.data(), ahead);
    }
    return band.samples.data();
  }

  // The first samples of a row that are made from whole windows within the source row, and so need no guards.
  size_t samples_from_source() const {
    const size_t end = (kGuardBefore + static_cast<size_t>(source_.width)) * channels_;
    return std::min(row_samples(),
                    picks_ ? gather_.samples_within(end - kMiddle * channels_) : stretch_.samples_within(end));
  }

  // Reads a row, for the samples from `begin` on.
  void read(const uint8_t* row, size_t begin, auto& read_row) {
    if (begin == row_samples()) return;
    const size_t in_front = kGuardBefore * channels_;
    const size_t skipped = begin == 0 ? 0 : std::ranges::min(gather_.positions().subspan(begin)) - in_front;
    const std::span<uint8_t> pixels = samples_.subspan(in_front, static_cast<size_t>(source_.width) * channels_);
    read_row(row + skipped, pixels.subspan(skipped));
    std::memcpy(samples_.data(), pixels.data(), channels_);
    uint8_t* behind = pixels.data() + pixels.size();
    for (size_t i = 0; i < kGuardBehind; ++i, behind += channels_) std::memcpy(behind, behind - channels_, channels_);
  }

  // `ahead` is a row of the source that is read soon.
  void stretch(const uint8_t* from, size_t begin, size_t end_of_all, uint8_t* band, const uint8_t* ahead) const {
    constexpr size_t kRun = 512;  // samples whose neighbours are picked together, so that they stay in cache
    alignas(32) uint8_t picked[kTaps][kRun];
    while (begin < end_of_all) {
      const size_t end = end_of_all - begin < kRun ? end_of_all : begin + kRun;
      uint8_t* const to = band + begin;
      read_samples_ahead(ahead, begin, end);
      if (picks_) {
        gather_.pick(from + kMiddle * channels_, begin, end, to);
      } else if (stretch_.fits()) {
        stretch_.stretch(from, begin, end, to);
      } else {
        std::array<const uint8_t*, kTaps> neighbours;
        for (size_t tap = 0; tap < kTaps; ++tap) {
          gather_.pick(from + tap * channels_, begin, end, picked[tap]);
          neighbours[tap] = picked[tap];
        }
        mix<Method>(
            neighbours, [=, weights = weights_](size_t tap, size_t i) { return weights[tap][begin + i]; }, end - begin, to);
      }
      begin = end;
    }
  }

  // The part that these samples are made from.
  [[gnu::always_inline]] void read_samples_ahead(const uint8_t* row, size_t begin, size_t end) const {
    const auto byte = [&](size_t sample) { return gather_.positions()[sample] / channels_ * view_.depth() / 8; };
    if (row != nullptr) read_row_ahead(row + byte(begin), byte(end - 1) - byte(begin) + 1);
  }

  ConstDibView view_;
  Size source_, result_;
  size_t channels_;
  bool picks_ = true;  // every column of the result is a column of the source
  std::array<uint8_t*, kTaps> weights_;
  std::span<uint8_t> samples_, zeros_;
  ByteGather gather_;
  std::conditional_t<kTaps == 2, LinearStretch, NoStretch> stretch_;
  size_t from_source_;
  std::array<Band, kTaps> bands_;
  int last_read_ = 0;
};

}  // namespace vorel::kernels::VOREL_LEVEL
