// Resampling rows of 8-bit samples, by two or four neighbours in each direction, with weights that are fractions of 255.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "core/view.h"

namespace vorel::kernels::VOREL_LEVEL {

// What one row or column of the result is mixed from: neighbours from `first` on, and how much of each.
template <int kTaps>
struct Mix {
  int first;
  std::array<uint8_t, kTaps> weights;
};

constexpr int kWholeWeight = 255;

// Position `at` of `result`, where `source` samples become `result` ones: the sample there and, in units of 1/result, how far
// behind its start. Left edges of pixels lie on each other, not centres.
struct Position {
  Position(int at, int source, int result)
      : sample(static_cast<int>(int64_t{at} * source / result)), rest(static_cast<int>(int64_t{at} * source % result)) {}
  int sample, rest;
};

// Two neighbours, weighted by how near they are.
struct Linear {
  static constexpr int kTaps = 2;
  static constexpr std::array kSigns = {1, 1};

  static Mix<kTaps> column(int at, int source, int result) {
    const Position position(at, source, result);
    const auto second = static_cast<uint8_t>((int64_t{position.rest} * kWholeWeight + result / 2) / result);
    return {position.sample, {static_cast<uint8_t>(kWholeWeight - second), second}};
  }

  // The last row is not mixed with its own repetition, which would round up.
  static Mix<kTaps> row(int at, int source, int result) {
    Mix<kTaps> mix = column(at, source, result);
    if (mix.first == source - 1) mix.weights = {kWholeWeight, 0};
    return mix;
  }
};

// Four neighbours, by cubic convolution with a = -1 (Keys, 1981). The outer weights are negative; their magnitudes are kept.
struct Cubic {
  static constexpr int kTaps = 4;
  static constexpr std::array kSigns = {-1, 1, 1, -1};

  static Mix<kTaps> column(int at, int source, int result) {
    const int sample = Position(at, source, result).sample;
    const double behind = static_cast<double>(at) * source / result - sample;
    const auto inner = [](double u) { return truncated(u * u * u - 2 * u * u + 1); };
    const auto outer = [](double u) { return truncated(u * u * u - 5 * u * u + 8 * u - 4); };
    return {
        sample - 1,
        {outer(std::abs(behind + 1)), inner(std::abs(behind)), inner(std::abs(behind - 1)), outer(std::abs(behind - 2))}};
  }
  static Mix<kTaps> row(int at, int source, int result) { return column(at, source, result); }

 private:
  static uint8_t truncated(double weight) { return static_cast<uint8_t>(static_cast<int>(kWholeWeight * weight)); }
};

// A weight's share of a sample, rounded to nearest.
constexpr int share(int weight, int sample) {
  const int scaled = weight * sample + kWholeWeight / 2 + 1;
  return (scaled + 1 + (scaled >> 8)) >> 8;  // scaled / 255, for all that two bytes multiply to
}

// Picks one sample of the result from those that it is mixed from.
template <class Method>
uint8_t mixed(const std::array<uint8_t, Method::kTaps>& weights, auto&& sample) {
  int sum = 0;
  for (size_t tap = 0; tap < Method::kTaps; ++tap) sum += Method::kSigns[tap] * share(weights[tap], sample(tap));
  return static_cast<uint8_t>(std::clamp(sum, 0, 255));
}

// One picture being resampled, row after row from the first stored one. Each sample of a pixel, kChannels of them side by
// side, is mixed by itself.
template <class Method, int kChannels>
class Resampler {
 public:
  Resampler(Size source, Size result)
      : source_(source),
        result_(result),
        samples_(static_cast<size_t>(source.width + kGuardBefore + kGuardBehind) * kChannels) {
    columns_.reserve(static_cast<size_t>(result.width));
    for (int x = 0; x < result.width; ++x) columns_.push_back(Method::column(x, source.width, result.width));
    for (Band& band : bands_) band.samples.resize(row_samples());
    nothing_.resize(row_samples());
    mixed_.resize(row_samples());
  }

  // Row y of the result. read_row(y, samples) puts the samples of a row of the source.
  std::span<const uint8_t> row(int y, auto&& read_row) {
    constexpr size_t kTaps = Method::kTaps;
    const auto mix = Method::row(y, source_.height, result_.height);
    std::array<const uint8_t*, kTaps> rows;
    for (size_t tap = 0; tap < kTaps; ++tap) rows[tap] = source_row(mix.first + static_cast<int>(tap), read_row);
    for (size_t i = 0; i < mixed_.size(); ++i)
      mixed_[i] = mixed<Method>(mix.weights, [&](size_t tap) { return rows[tap][i]; });
    return mixed_;
  }

 private:
  // Samples are repeated at both ends, as far as neighbours reach.
  static constexpr int kGuardBefore = 1, kGuardBehind = 3;

  // A row of the source with the width of the result.
  struct Band {
    int y = -1;
    std::vector<uint8_t> samples;
  };

  size_t row_samples() const { return static_cast<size_t>(result_.width) * kChannels; }

  // Above the first stored row there is black; the last row is repeated.
  const uint8_t* source_row(int y, auto& read_row) {
    if (y < 0) return nothing_.data();
    y = std::min(y, source_.height - 1);
    Band& band = bands_[static_cast<size_t>(y) % bands_.size()];
    if (band.y != y) {
      band.y = y;
      read(y, read_row);
      stretch(band.samples);
    }
    return band.samples.data();
  }

  void read(int y, auto& read_row) {
    constexpr size_t kPixel = kChannels;
    const std::span<uint8_t> pixels =
        std::span(samples_).subspan(kGuardBefore * kPixel, static_cast<size_t>(source_.width) * kPixel);
    read_row(y, pixels);
    std::copy_n(pixels.begin(), kPixel, samples_.begin());
    for (auto guard = pixels.end(); guard != std::span(samples_).end(); guard += kPixel)
      std::copy_n(guard - kPixel, kPixel, guard);
  }

  void stretch(std::span<uint8_t> target) const {
    uint8_t* to = target.data();
    for (const auto& column : columns_) {
      const uint8_t* from = samples_.data() + static_cast<size_t>(column.first + kGuardBefore) * kChannels;
      for (size_t channel = 0; channel < kChannels; ++channel)
        *to++ = mixed<Method>(column.weights, [&](size_t tap) { return from[tap * kChannels + channel]; });
    }
  }

  Size source_, result_;
  std::vector<Mix<Method::kTaps>> columns_;
  std::vector<uint8_t> samples_, nothing_, mixed_;
  std::array<Band, Method::kTaps> bands_;
};

}  // namespace vorel::kernels::VOREL_LEVEL
