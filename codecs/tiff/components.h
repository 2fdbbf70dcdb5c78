// The components of a pixel, between the samples of a file and the rows of a DIB.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "common/dib.h"

namespace codec {

// The effect of a component's values on a row. The components of a picture are applied in the order of its samples, whether
// pixel by pixel or plane by plane.
enum class Action {
  kIndices,               // are pixels of a DIB with a colour table
  kLookUp,                // are pixels, looked up in the colour table for 24 bits
  kChannel,               // are one channel of 24 bits
  kDarken,                // scale the row: the black ink of four
  kCoverage,              // blend the row over white
  kPremultipliedCoverage  // the same, for a row that is scaled already
};

struct Component {
  unsigned sample = 0;
  Action action = Action::kIndices;
  unsigned channel = 0;               // of a DIB's pixel
  std::array<uint8_t, 256> values{};  // by the sample, or by its upper eight bits
};

// Whether it is opacity, which has a range of its own.
constexpr bool is_coverage(const Component& component) {
  return component.action == Action::kCoverage || component.action == Action::kPremultipliedCoverage;
}

// The meaning of samples: counts that fill their bits, or numbers of a range of their own.
enum class SampleKind { kCount, kSigned, kFloat };

// The numbers that become 0 and 255.
struct Range {
  double low = 0, high = 1;
};

// The layout of a row's samples in memory.
struct SampleLayout {
  unsigned bits = 0;   // of a sample: up to 16, or a multiple of 8
  unsigned count = 0;  // samples per pixel
  unsigned sample = 0;
  SampleKind kind = SampleKind::kCount;
  Range range{};  // of numbers
};

// Whether numbers of this size are supported.
bool is_known_number(SampleKind kind, unsigned bits);

// Widens the range by one sample of each of `pixels` pixels. NaN and infinite samples are skipped.
void widen(Range& range, std::span<const uint8_t> bytes, const SampleLayout& layout, size_t pixels);

// Takes one sample of each pixel, `values.size()` of them: its upper eight bits, or 0 to 255 for a number.
void extract(std::span<const uint8_t> bytes, const SampleLayout& layout, std::span<uint8_t> values);

// Applies a component's values to a row from pixel x on; the values are replaced by their meaning. Below 8 bits per pixel x
// must be at the start of a byte.
void apply(const Component& component, const Colors& colors, std::span<uint8_t> values, std::span<uint8_t> row, int depth,
           size_t x);

}  // namespace codec
