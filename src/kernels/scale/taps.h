// The source samples that a sample of the result is mixed from, and their weights in units of 1/255.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace vorel::kernels::VOREL_LEVEL {

inline constexpr int kWholeWeight = 255;

// Filter taps for one position of the result: source samples from `first` on.
template <int kTaps>
struct Taps {
  int first;
  std::array<uint8_t, kTaps> weights;
};

// Position `at` of `result`, where `source` samples become `result` ones: the sample there and, in units of 1/result, the
// offset from its start. The left edges of pixels are aligned, not the centres.
struct Position {
  Position(int at, int source, int result)
      : sample(static_cast<int>(int64_t{at} * source / result)), rest(static_cast<int>(int64_t{at} * source % result)) {}
  int sample, rest;
};

// Two taps, weighted by proximity.
struct Linear {
  static constexpr int kTaps = 2;

  static Taps<kTaps> column(int at, int source, int result) {
    const Position position(at, source, result);
    const auto second = static_cast<uint8_t>((int64_t{position.rest} * kWholeWeight + result / 2) / result);
    return {position.sample, {static_cast<uint8_t>(kWholeWeight - second), second}};
  }

  // The last row is not mixed with its own repetition.
  static Taps<kTaps> row(int at, int source, int result) {
    Taps<kTaps> taps = column(at, source, result);
    if (taps.first == source - 1) taps.weights = {kWholeWeight, 0};
    return taps;
  }
};

// Four taps, by cubic convolution with a = -1 (Keys, 1981). The outer weights are negative; their magnitudes are kept.
struct Cubic {
  static constexpr int kTaps = 4;

  static Taps<kTaps> column(int at, int source, int result) {
    const int sample = Position(at, source, result).sample;
    const double behind = static_cast<double>(at) * source / result - sample;
    const auto inner = [](double u) { return truncated(u * u * u - 2 * u * u + 1); };
    const auto outer = [](double u) { return truncated(u * u * u - 5 * u * u + 8 * u - 4); };
    return {
        sample - 1,
        {outer(std::abs(behind + 1)), inner(std::abs(behind)), inner(std::abs(behind - 1)), outer(std::abs(behind - 2))}};
  }
  static Taps<kTaps> row(int at, int source, int result) { return column(at, source, result); }

 private:
  static uint8_t truncated(double weight) { return static_cast<uint8_t>(static_cast<int>(kWholeWeight * weight)); }
};

}  // namespace vorel::kernels::VOREL_LEVEL
