#include "tiff/components.h"

#include <algorithm>
#include <bit>

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

// Combines each value with every channel of its pixel.
template <class Combine>
void blend(std::span<const uint8_t> values, std::span<uint8_t> pixels, size_t channels, Combine combine) {
  for (size_t i = 0; i < values.size() * channels; ++i) pixels[i] = combine(pixels[i], values[i / channels]);
}

}  // namespace

void extract(std::span<const uint8_t> bytes, const SampleLayout& layout, std::span<uint8_t> values) {
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
