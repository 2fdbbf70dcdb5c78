#include "common/reductions.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "common/forms.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

// The weights of the pixels under a new one together, across and down.
constexpr uint32_t kWholeAcross = 1 << 16, kWholeDown = 1 << 8;

// The pixels of a copy under the new pixels from `begin` on: for each the first one, and weights for as many as any has. A pixel of
// the copy stands for `scale` pixels of the picture.
struct Covers {
  Covers(int before, int after, int scale, int begin, int count, uint32_t whole) {
    const auto parts_of_new = static_cast<uint64_t>(before);
    const uint64_t parts_of_copy = static_cast<uint64_t>(scale) * static_cast<uint64_t>(after);
    const auto last_under = [&](uint64_t from) { return (from + parts_of_new - 1) / parts_of_copy; };
    for (int i = begin; i < begin + count; ++i) {
      const uint64_t from = static_cast<uint64_t>(i) * parts_of_new;
      first.push_back(static_cast<int>(from / parts_of_copy));
      most = std::max(most, static_cast<size_t>(last_under(from) - from / parts_of_copy + 1));
    }
    weights.resize(first.size() * most);
    for (size_t i = 0; i < first.size(); ++i) {
      const uint64_t from = (static_cast<uint64_t>(begin) + i) * parts_of_new, to = from + parts_of_new;
      uint64_t sum = 0;
      for (uint64_t pixel = from / parts_of_copy; pixel <= last_under(from); ++pixel) {
        const uint64_t sum_so_far = (std::min(to, (pixel + 1) * parts_of_copy) - from) * whole / parts_of_new;
        weights[i * most + static_cast<size_t>(pixel) - static_cast<size_t>(first[i])] =
            static_cast<uint32_t>(sum_so_far - sum);
        sum = sum_so_far;
      }
    }
    end = static_cast<int>(last_under((static_cast<uint64_t>(begin) + first.size() - 1) * parts_of_new)) + 1;
  }

  std::vector<int> first;
  size_t most = 1;  // pixels under a new one
  std::vector<uint32_t> weights;
  int end = 0;  // behind the last pixel
};

// In 16 bits: eight for the sample and eight of fraction.
void add_row(std::span<uint16_t> sums, const uint8_t* samples, uint32_t weight) {
  const auto factor = static_cast<uint16_t>(weight);
  for (size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<uint16_t>(sums[i] + samples[i] * factor);
}

// One row of new pixels from the sums of its columns. As many pixels under each are a constant for the usual numbers of them.
template <size_t channels, class Put>
void reduce_row(const uint16_t* columns, const Covers& across, Put put) {
  const auto reduce = [&](auto most) {
    const uint32_t* weights = across.weights.data();
    const int begin = across.first.front();
    for (const int first : across.first) {
      const uint16_t* column = columns + static_cast<size_t>(first - begin) * channels;
      std::array<uint32_t, channels> sums;
      sums.fill(kWholeAcross * kWholeDown / 2);
      for (size_t i = 0; i < most; ++i, ++weights)
        for (size_t c = 0; c < channels; ++c) sums[c] += *column++ * *weights;
      for (uint32_t& sum : sums) sum /= kWholeAcross * kWholeDown;
      put(sums);
    }
  };
  switch (across.most) {
    case 1: return reduce(std::integral_constant<size_t, 1>());
    case 2: return reduce(std::integral_constant<size_t, 2>());
    case 3: return reduce(std::integral_constant<size_t, 3>());
    default: reduce(across.most);
  }
}

// Eight pixels of a bit each as samples.
constexpr auto kEightSamples = [] {
  std::array<std::array<uint8_t, 8>, 256> table{};
  for (size_t byte = 0; byte < table.size(); ++byte)
    for (size_t bit = 0; bit < 8; ++bit) table[byte][bit] = byte & (0x80 >> bit) ? 255 : 0;
  return table;
}();

template <size_t channels>
void halve_rows(const uint8_t* above, const uint8_t* below, uint8_t* to, size_t pairs) {
  for (size_t x = 0; x < pairs; ++x, above += 2 * channels, below += 2 * channels, to += channels)
    for (size_t c = 0; c < channels; ++c)
      to[c] = static_cast<uint8_t>((above[c] + above[c + channels] + below[c] + below[c + channels] + 2) >> 2);
}

uint32_t mixed(uint32_t color, uint32_t other, uint32_t share) {
  uint32_t result = 0;
  for (const int shift : {0, 8, 16}) {
    const uint32_t a = color >> shift & 0xFF, b = other >> shift & 0xFF;
    result |= (a * (255 - share) + b * share + 127) / 255 << shift;
  }
  return result;
}

}  // namespace

Reductions::Reductions(const Picture& picture) : picture_(picture.lent()) {
  const bool is_gray = has_gray_ramp(picture);
  channels_ = picture.depth() == 1 || is_gray ? 1 : 3;
  for (uint32_t i = 0; i < colors_.size() && channels_ == 1; ++i)
    colors_[i] = is_gray ? i * 0x010101 : mixed(color_of(picture, 0), color_of(picture, 1), i);
  for (Size size = picture.pixels().size(); size.width > 1 || size.height > 1; size = copies_.back().size)
    copies_.push_back(halved(copies_.size()));
}

uint64_t Reductions::bytes() const {
  uint64_t bytes = 0;
  for (const Copy& copy : copies_) bytes += copy.samples.size();
  return bytes;
}

std::span<const uint32_t> Reductions::mixtures() const {
  return channels_ == 1 ? std::span<const uint32_t>(colors_) : std::span<const uint32_t>();
}

Size Reductions::size_of(size_t level) const { return level == 0 ? picture_.pixels().size() : copies_[level - 1].size; }

// Of `count` pixels of a row. Those of the picture itself are unpacked where they are no samples as they are.
const uint8_t* Reductions::samples(size_t level, int row, int first, int count, std::vector<uint8_t>& scratch) const {
  const auto offset = static_cast<size_t>(first) * channels_;
  if (level > 0) {
    const Copy& copy = copies_[level - 1];
    return copy.samples.data() + static_cast<size_t>(row) * static_cast<size_t>(copy.size.width) * channels_ + offset;
  }
  const uint8_t* const bytes = picture_.pixels().row_from_top(row).data();
  if (picture_.depth() == 24 || (picture_.depth() == 8 && channels_ == 1)) return bytes + offset;
  if (picture_.depth() == 1) {
    const auto from = static_cast<size_t>(first / 8), end = static_cast<size_t>((first + count + 7) / 8);
    scratch.resize((end - from) * 8);
    for (size_t at = from; at < end; ++at) std::memcpy(scratch.data() + (at - from) * 8, kEightSamples[bytes[at]].data(), 8);
    return scratch.data() + first % 8;
  }
  scratch.resize(static_cast<size_t>(count) * channels_);
  for (int i = 0; i < count; ++i) {
    const uint32_t pixel = picture_.depth() == 4 ? Pixel<4>::load(bytes, first + i) : Pixel<8>::load(bytes, first + i);
    Pixel<24>::store(scratch.data(), i, color_of(picture_, pixel));
  }
  return scratch.data();
}

// An odd row or column at the end stays alone.
Reductions::Copy Reductions::halved(size_t level) const {
  const Size from = size_of(level), size = {(from.width + 1) / 2, (from.height + 1) / 2};
  const auto row_samples = static_cast<size_t>(size.width) * channels_;
  Copy copy{size, std::vector<uint8_t>(row_samples * static_cast<size_t>(size.height))};
  std::vector<uint8_t> scratch[2];
  const auto pairs = static_cast<size_t>(from.width / 2);
  for (int y = 0; y < size.height; ++y) {
    const uint8_t* const above = samples(level, 2 * y, 0, from.width, scratch[0]);
    const uint8_t* const below = samples(level, std::min(2 * y + 1, from.height - 1), 0, from.width, scratch[1]);
    uint8_t* const to = copy.samples.data() + static_cast<size_t>(y) * row_samples;
    channels_ == 1 ? halve_rows<1>(above, below, to, pairs) : halve_rows<3>(above, below, to, pairs);
    for (size_t c = 0; c < channels_ && from.width % 2 != 0; ++c) {
      const size_t last = 2 * pairs * channels_ + c;
      to[pairs * channels_ + c] = static_cast<uint8_t>((above[last] + below[last] + 1) >> 1);
    }
  }
  return copy;
}

// The smallest copy that is not below `size`.
size_t Reductions::level_for(Size size) const {
  const Size whole = size_of(0);
  size_t level = 0;
  const auto is_enough = [&](int side, int wanted) { return side >> (level + 1) >= wanted; };
  while (level < copies_.size() && is_enough(whole.width, size.width) && is_enough(whole.height, size.height)) ++level;
  return level;
}

void Reductions::draw(Size size, Rect part, std::span<uint32_t> pixels) const {
  if (part.width <= 0 || part.height <= 0) return;
  const size_t level = level_for(size);
  const Size whole = size_of(0);
  const Covers across(whole.width, size.width, 1 << level, part.x, part.width, kWholeAcross);
  const Covers down(whole.height, size.height, 1 << level, part.y, part.height, kWholeDown);
  const int first = across.first.front(), count = across.end - first;
  const size_t used = static_cast<size_t>(count) * channels_;
  std::vector<uint16_t> columns(used + across.most * channels_);  // weights of 0 reach beyond the last one
  std::vector<uint8_t> scratch;
  uint32_t* to = pixels.data();
  for (size_t y = 0; y < down.first.size(); ++y) {
    std::ranges::fill(columns, uint16_t{0});
    for (size_t i = 0; i < down.most; ++i) {
      const uint32_t weight = down.weights[y * down.most + i];
      if (weight == 0) continue;
      const uint8_t* const row = samples(level, down.first[y] + static_cast<int>(i), first, count, scratch);
      add_row(std::span(columns).first(used), row, weight);
    }
    if (channels_ == 1) {
      reduce_row<1>(columns.data(), across, [&](const auto& level_of_gray) { *to++ = colors_[level_of_gray[0]]; });
    } else {
      reduce_row<3>(columns.data(), across, [&](const auto& c) { *to++ = c[0] | c[1] << 8 | c[2] << 16; });
    }
  }
}

}  // namespace vorel::programs
