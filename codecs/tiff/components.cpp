#include "tiff/components.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace codec {
namespace {

constexpr uint8_t scaled(int value, int factor) { return static_cast<uint8_t>((value * factor + 127) / 255); }

void extract_bits(std::span<const uint8_t> bytes, const SampleLayout& layout, std::span<uint8_t> values) {
  size_t position = size_t{layout.sample} * layout.bits;
  for (uint8_t& value : values) {
    unsigned number = 0;
    for (size_t bit = position; bit < position + layout.bits; ++bit)
      number = number << 1 | (bytes[bit / 8] >> (7 - bit % 8) & 1u);
    value = static_cast<uint8_t>(layout.bits > 8 ? number >> (layout.bits - 8) : number);
    position += size_t{layout.count} * layout.bits;
  }
}

template <class Number>
Number load(const uint8_t* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

// IEEE 754 half precision: a sign, five bits of exponent and ten of fraction.
double half_precision(uint16_t bits) {
  const int exponent = bits >> 10 & 31, fraction = bits & 1023;
  const double size = exponent == 31  ? fraction == 0 ? INFINITY : NAN
                      : exponent == 0 ? std::ldexp(fraction, -24)
                                      : std::ldexp(1024 + fraction, exponent - 25);
  return (bits & 0x8000) != 0 ? -size : size;
}

double number_at(const uint8_t* bytes, SampleKind kind, unsigned bits) {
  if (kind == SampleKind::kFloat) {
    if (bits == 16) return half_precision(load<uint16_t>(bytes));
    return bits == 32 ? double{load<float>(bytes)} : load<double>(bytes);
  }
  switch (bits) {
    case 8: return load<int8_t>(bytes);
    case 16: return load<int16_t>(bytes);
    default: return load<int32_t>(bytes);
  }
}

// Calls visit(i, number) for one sample of each of `pixels` pixels.
template <class Visit>
void for_each_number(std::span<const uint8_t> bytes, const SampleLayout& layout, size_t pixels, Visit visit) {
  const size_t size = layout.bits / 8;
  for (size_t i = 0; i < pixels; ++i)
    visit(i, number_at(&bytes[(i * layout.count + layout.sample) * size], layout.kind, layout.bits));
}

uint8_t placed(double number, const Range& range) {
  const double share = (number - range.low) / (range.high - range.low);
  return share > 0 ? static_cast<uint8_t>(std::min(share, 1.0) * 255 + 0.5) : 0;  // 0 for NaN
}

// Combines each value with every channel of its pixel.
template <class Combine>
void blend(std::span<const uint8_t> values, std::span<uint8_t> pixels, size_t channels, Combine combine) {
  for (size_t i = 0; i < values.size() * channels; ++i) pixels[i] = combine(pixels[i], values[i / channels]);
}

}  // namespace

bool is_known_number(SampleKind kind, unsigned bits) {
  return kind == SampleKind::kFloat ? bits == 16 || bits == 32 || bits == 64 : bits == 8 || bits == 16 || bits == 32;
}

void widen(Range& range, std::span<const uint8_t> bytes, const SampleLayout& layout, size_t pixels) {
  for_each_number(bytes, layout, pixels, [&](size_t, double number) {
    if (!std::isfinite(number)) return;
    range.low = std::min(range.low, number);
    range.high = std::max(range.high, number);
  });
}

void extract(std::span<const uint8_t> bytes, const SampleLayout& layout, std::span<uint8_t> values) {
  if (layout.kind != SampleKind::kCount)
    return for_each_number(bytes, layout, values.size(),
                           [&](size_t i, double number) { values[i] = placed(number, layout.range); });
  if (layout.bits % 8 != 0) return extract_bits(bytes, layout, values);
  const size_t size = layout.bits / 8;
  const size_t high_byte = std::endian::native == std::endian::little ? size - 1 : 0;
  for (size_t i = 0; i < values.size(); ++i) values[i] = bytes[(i * layout.count + layout.sample) * size + high_byte];
}

void apply(const Component& component, const Colors& colors, std::span<uint8_t> values, std::span<uint8_t> row, int depth,
           size_t x) {
  for (uint8_t& value : values) value = component.values[value];
  const size_t channels = depth == 24 ? 3 : 1;
  const auto pixels = row.subspan(x * static_cast<size_t>(depth) / 8);
  switch (component.action) {
    case Action::kIndices: return pack_indices(values, depth, pixels);
    case Action::kLookUp:
      for (size_t i = 0; i < values.size(); ++i) {
        const Rgb color = values[i] < colors.size() ? colors[values[i]] : Rgb{};
        pixels[i * 3] = color.blue;
        pixels[i * 3 + 1] = color.green;
        pixels[i * 3 + 2] = color.red;
      }
      return;
    case Action::kChannel:
      for (size_t i = 0; i < values.size(); ++i) pixels[i * 3 + component.channel] = values[i];
      return;
    case Action::kDarken: return blend(values, pixels, channels, scaled);
    case Action::kCoverage: return blend(values, pixels, channels, over_white);
    case Action::kPremultipliedCoverage: return blend(values, pixels, channels, premultiplied_over_white);
  }
}

}  // namespace codec
