#include "common/reductions.h"

#include <algorithm>

#include "common/forms.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

constexpr uint32_t kWhole = 1 << 16;  // the weights of a new pixel's old pixels together

// The pixels of a copy under a new pixel, with the weight of each.
struct Cover {
  int first;
  int count;
  size_t weights;
};

// Covers of the new pixels from `begin` on. A pixel of the copy stands for `scale` pixels of the picture.
struct Covers {
  Covers(int before, int after, int scale, int begin, int count) {
    const auto parts_of_new = static_cast<uint64_t>(before);
    const uint64_t parts_of_copy = static_cast<uint64_t>(scale) * static_cast<uint64_t>(after);
    for (int i = begin; i < begin + count; ++i) {
      const uint64_t from = static_cast<uint64_t>(i) * parts_of_new, to = from + parts_of_new;
      const uint64_t first = from / parts_of_copy, last = (to - 1) / parts_of_copy;
      covers.push_back({static_cast<int>(first), static_cast<int>(last - first + 1), weights.size()});
      uint64_t sum = 0;
      for (uint64_t pixel = first; pixel <= last; ++pixel) {
        const uint64_t sum_so_far = (std::min(to, (pixel + 1) * parts_of_copy) - from) * kWhole / parts_of_new;
        weights.push_back(static_cast<uint32_t>(sum_so_far - sum));
        sum = sum_so_far;
      }
    }
  }

  int first() const { return covers.front().first; }
  int end() const { return covers.back().first + covers.back().count; }

  std::vector<Cover> covers;
  std::vector<uint32_t> weights;
};

// Sums of a column carry eight bits of fraction.
constexpr int kFraction = 8;

void add_row(std::vector<uint32_t>& sums, const uint8_t* samples, uint32_t weight) {
  for (size_t i = 0; i < sums.size(); ++i) sums[i] += samples[i] * weight;
}

void drop_fraction(std::vector<uint32_t>& sums) {
  for (uint32_t& sum : sums) sum = (sum + (kWhole >> kFraction) / 2) >> (16 - kFraction);
}

template <size_t channels>
std::array<uint32_t, channels> mean(const uint32_t* column, const uint32_t* weights, int count) {
  std::array<uint32_t, channels> sums;
  sums.fill(kWhole << kFraction >> 1);
  for (; count > 0; --count, ++weights)
    for (size_t c = 0; c < channels; ++c) sums[c] += *column++ * *weights;
  for (uint32_t& sum : sums) sum >>= 16 + kFraction;
  return sums;
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
  scratch.resize(static_cast<size_t>(count) * channels_);
  for (int i = 0; i < count; ++i) {
    if (picture_.depth() == 1) {
      scratch[static_cast<size_t>(i)] = Pixel<1>::load(bytes, first + i) != 0 ? 255 : 0;
    } else {
      const uint32_t pixel = picture_.depth() == 4 ? Pixel<4>::load(bytes, first + i) : Pixel<8>::load(bytes, first + i);
      Pixel<24>::store(scratch.data(), i, color_of(picture_, pixel));
    }
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
    const uint8_t* above = samples(level, 2 * y, 0, from.width, scratch[0]);
    const uint8_t* below = samples(level, std::min(2 * y + 1, from.height - 1), 0, from.width, scratch[1]);
    uint8_t* to = copy.samples.data() + static_cast<size_t>(y) * row_samples;
    const auto halve = [&](size_t next) {
      for (size_t c = 0; c < channels_; ++c)
        to[c] = static_cast<uint8_t>((above[c] + above[c + next] + below[c] + below[c + next] + 2) >> 2);
    };
    for (size_t x = 0; x < pairs; ++x, above += 2 * channels_, below += 2 * channels_, to += channels_) halve(channels_);
    if (from.width % 2 != 0) halve(0);
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
  const Covers across(whole.width, size.width, 1 << level, part.x, part.width);
  const Covers down(whole.height, size.height, 1 << level, part.y, part.height);
  const int first = across.first(), count = across.end() - first;
  std::vector<uint32_t> columns(static_cast<size_t>(count) * channels_);
  std::vector<uint8_t> scratch;
  uint32_t* to = pixels.data();
  for (const Cover& rows : down.covers) {
    std::ranges::fill(columns, 0);
    for (int i = 0; i < rows.count; ++i)
      add_row(columns, samples(level, rows.first + i, first, count, scratch),
              down.weights[rows.weights + static_cast<size_t>(i)]);
    drop_fraction(columns);
    for (const Cover& cover : across.covers) {
      const uint32_t* const column = columns.data() + static_cast<size_t>(cover.first - first) * channels_;
      const uint32_t* const weights = across.weights.data() + cover.weights;
      if (channels_ == 1) {
        *to++ = colors_[mean<1>(column, weights, cover.count)[0]];
      } else {
        const auto color = mean<3>(column, weights, cover.count);
        *to++ = color[0] | color[1] << 8 | color[2] << 16;
      }
    }
  }
}

}  // namespace vorel::programs
