#include "common/area.h"

#include <algorithm>
#include <array>
#include <vector>

#include "common/forms.h"
#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/pixel.h"

namespace vorel::programs {
namespace {

// A row or column of `before` pixels laid over one of `after`: lengths are counted in parts, `after` to an old pixel and `before` to
// a new one, so that all of them are whole.
class Overlap {
 public:
  Overlap(int before, int after) : before_(static_cast<uint32_t>(before)), after_(static_cast<uint32_t>(after)) {}

  // Calls take(new pixel, parts of it that the next old pixel covers), from the first old pixel's first part on.
  template <class Take>
  void cover(Take take) {
    for (uint32_t left = after_; left > 0;) {
      const uint32_t parts = std::min(left, before_ - filled_);
      take(at_, parts);
      left -= parts;
      filled_ += parts;
      if (filled_ < before_) continue;
      filled_ = 0;
      ++at_;
    }
  }

 private:
  uint32_t before_, after_;
  size_t at_ = 0;
  uint32_t filled_ = 0;
};

// Sums of samples by area, a row of new pixels at a time. A row has `channels` samples to a pixel.
class AreaSums {
 public:
  AreaSums(Size before, Size after, size_t channels)
      : before_(before),
        after_(after),
        channels_(channels),
        across_(static_cast<size_t>(after.width) * channels),
        sums_(across_.size()),
        down_(before.height, after.height),
        whole_(uint64_t{static_cast<uint32_t>(before.width)} * static_cast<uint32_t>(before.height)) {}

  // The sum that a sample of 1 everywhere has.
  uint64_t whole() const { return whole_; }

  // Takes the next row of samples. Calls finish(y, sums) for each new row that is complete.
  template <class Finish>
  void add(const uint8_t* samples, Finish finish) {
    sum_across(samples);
    down_.cover([&](size_t y, uint32_t parts) {
      for (size_t i = 0; i < sums_.size(); ++i) sums_[i] += uint64_t{across_[i]} * parts;
      filled_ += parts;
      if (filled_ < static_cast<uint32_t>(before_.height)) return;
      finish(static_cast<int>(y), std::as_const(sums_));
      std::ranges::fill(sums_, 0);
      filled_ = 0;
    });
  }

 private:
  void sum_across(const uint8_t* samples) {
    std::ranges::fill(across_, 0);
    Overlap overlap(before_.width, after_.width);
    for (int x = 0; x < before_.width; ++x, samples += channels_)
      overlap.cover([&](size_t at, uint32_t parts) {
        for (size_t c = 0; c < channels_; ++c) across_[at * channels_ + c] += samples[c] * parts;
      });
  }

  Size before_, after_;
  size_t channels_;
  std::vector<uint32_t> across_;
  std::vector<uint64_t> sums_;
  Overlap down_;
  uint32_t filled_ = 0;
  uint64_t whole_;
};

uint8_t mean_of(uint64_t sum, uint64_t whole) { return static_cast<uint8_t>((sum + whole / 2) / whole); }

// Runs samples_of(row) over the rows from the top, and finish(row from the top of the result, sums, whole).
template <class SamplesOf, class Finish>
Picture by_area(const Picture& picture, Size size, size_t channels, SamplesOf samples_of, Finish finish) {
  Picture result = blank_like(picture, size, picture.depth());
  const DibView from = picture.pixels(), to = result.pixels();
  AreaSums sums({picture.width(), picture.height()}, size, channels);
  for (int y = 0; y < from.height(); ++y)
    sums.add(samples_of(from.row_from_top(y).data()), [&](int row, const std::vector<uint64_t>& of_row) {
      finish(to.row_from_top(row).data(), of_row, sums.whole());
    });
  return result;
}

// Bytes that are levels as they are: greys, and blue, green and red.
Picture levels_by_area(const Picture& picture, Size size) {
  const auto finish = [](uint8_t* row, const std::vector<uint64_t>& sums, uint64_t whole) {
    for (const uint64_t sum : sums) *row++ = mean_of(sum, whole);
  };
  return by_area(
      picture, size, picture.depth() == 24 ? 3 : 1, [](const uint8_t* row) { return row; }, finish);
}

Picture bits_by_area(const Picture& picture, Size size) {
  std::vector<uint8_t> samples(static_cast<size_t>(picture.width()));
  const auto unpacked = [&](const uint8_t* row) {
    for (size_t x = 0; x < samples.size(); ++x) samples[x] = static_cast<uint8_t>(Pixel<1>::load(row, static_cast<int>(x)));
    return samples.data();
  };
  const auto brightness = [&](uint32_t pixel) {
    const uint32_t color = color_of(picture, pixel);
    return vorel::luminance_of(
        {static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8), static_cast<uint8_t>(color >> 16), 0});
  };
  const uint64_t for_half = brightness(1) < brightness(0) ? 1 : 0;  // the darker one wins
  const auto finish = [&](uint8_t* row, const std::vector<uint64_t>& sums, uint64_t whole) {
    for (size_t x = 0; x < sums.size(); ++x)
      Pixel<1>::store(row, static_cast<int>(x), 2 * sums[x] + for_half > whole ? 1 : 0);
  };
  return by_area(picture, size, 1, unpacked, finish);
}

// Colours of a table are mixed, and the nearest colour of the table stands for the mixture.
Picture colors_by_area(const Picture& picture, Size size) {
  const auto count = std::min(picture.colors().size(), size_t{1} << picture.depth());
  const std::span<const Rgb> table = picture.colors().first(count);
  std::vector<uint8_t> samples(static_cast<size_t>(picture.width()) * 3);
  const auto unpacked = [&](const uint8_t* row) {
    with_depth(picture.depth(), [&](auto depth) {
      for (int x = 0; x < picture.width(); ++x)
        Pixel<24>::store(samples.data(), x, color_of(picture, Pixel<depth>::load(row, x)));
    });
    return samples.data();
  };
  const auto finish = [&](uint8_t* row, const std::vector<uint64_t>& sums, uint64_t whole) {
    with_depth(picture.depth(), [&](auto depth) {
      for (size_t x = 0; x < sums.size() / 3; ++x) {
        const Rgb mixed = {mean_of(sums[3 * x], whole), mean_of(sums[3 * x + 1], whole), mean_of(sums[3 * x + 2], whole), 0};
        Pixel<depth>::store(row, static_cast<int>(x), static_cast<uint32_t>(nearest_color(table, mixed)));
      }
    });
  };
  return by_area(picture, size, 3, unpacked, finish);
}

}  // namespace

Picture scaled_by_area(const Picture& picture, Size size) {
  if (picture.depth() == 24 || has_gray_ramp(picture)) return levels_by_area(picture, size);
  return picture.depth() == 1 ? bits_by_area(picture, size) : colors_by_area(picture, size);
}

}  // namespace vorel::programs
