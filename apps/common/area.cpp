#include "common/area.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <span>
#include <vector>

#include "common/forms.h"
#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/pixel.h"
#include "core/row_bits.h"

namespace vorel::programs {
namespace {

// The old pixels under a new one, in a row or column. Only the first and the last can be covered in part. Lengths are whole
// numbers of parts: an old pixel has as many as there are new pixels, a new pixel as many as there were old ones.
struct Cover {
  int first;
  uint32_t head, tail;  // covered parts of a partly covered first or last pixel; 0 if there is none
  int whole;            // pixels covered entirely, between these two
  int pixels() const { return last() - first + 1; }
  int last() const { return first + (head > 0 ? 1 : 0) + whole - (tail > 0 ? 0 : 1); }
};

std::vector<Cover> covers_of(int before, int after) {
  std::vector<Cover> covers(static_cast<size_t>(after));
  const auto old_parts = static_cast<uint64_t>(after), new_parts = static_cast<uint64_t>(before);
  uint64_t begin = 0;
  for (Cover& cover : covers) {
    const uint64_t into = begin % old_parts, head = into > 0 ? std::min(old_parts - into, new_parts) : 0;
    const uint64_t rest = new_parts - head;
    cover = {static_cast<int>(begin / old_parts), static_cast<uint32_t>(head), static_cast<uint32_t>(rest % old_parts),
             static_cast<int>(rest / old_parts)};
    begin += new_parts;
  }
  return covers;
}

// Calls take(old pixel, covered parts) for each old pixel.
template <class Take>
void for_each_covered(const Cover& cover, uint32_t parts_of_old, Take take) {
  int at = cover.first;
  if (cover.head > 0) take(at++, cover.head);
  for (const int end = at + cover.whole; at < end; ++at) take(at, parts_of_old);
  if (cover.tail > 0) take(at, cover.tail);
}

// The parts of a new pixel: those across times those down.
uint64_t parts_of(const Picture& picture) {
  return uint64_t{static_cast<uint32_t>(picture.width())} * static_cast<uint32_t>(picture.height());
}

// sum / whole, rounded to the nearest level, halves up.
class Mean {
 public:
  explicit Mean(uint64_t whole) : whole_(whole), inverse_(1 / static_cast<double>(whole)) {}

  uint8_t operator()(uint64_t sum) const {
    const uint64_t rounded = sum + whole_ / 2;
    auto mean = static_cast<uint64_t>(static_cast<double>(rounded) * inverse_);  // off by one at most
    if (mean * whole_ > rounded) --mean;
    if ((mean + 1) * whole_ <= rounded) ++mean;
    return static_cast<uint8_t>(mean);
  }

 private:
  uint64_t whole_;
  double inverse_;
};

// Adds a row of samples to the sums of columns.
template <class Sum>
void add_row(std::vector<Sum>& sums, const uint8_t* samples, Sum parts) {
  for (size_t i = 0; i < sums.size(); ++i) sums[i] += samples[i] * parts;
}

// For each new row: adds up samples_of(old row) over the old rows that it covers, then calls finish(new row, x, sums of the
// channels) for each pixel. Columns come first because adding whole rows is faster than adding along a row.
template <size_t channels, class Sum, class SamplesOf, class Finish>
void sum_areas(const Picture& picture, const Picture& result, SamplesOf samples_of, Finish finish) {
  const DibView from = picture.pixels(), to = result.pixels();
  const std::vector<Cover> across = covers_of(from.width(), to.width()), down = covers_of(from.height(), to.height());
  const auto column_parts = static_cast<uint32_t>(to.width()), row_parts = static_cast<uint32_t>(to.height());
  std::vector<Sum> columns(static_cast<size_t>(from.width()) * channels);
  for (int y = 0; y < to.height(); ++y) {
    std::ranges::fill(columns, Sum{0});
    for_each_covered(down[static_cast<size_t>(y)], row_parts, [&](int row, uint32_t parts) {
      add_row(columns, samples_of(from.row_from_top(row).data()), Sum{parts});
    });
    uint8_t* const row = to.row_from_top(y).data();
    for (size_t x = 0; x < across.size(); ++x) {
      std::array<uint64_t, channels> sums{};
      for_each_covered(across[x], column_parts, [&](int column, uint32_t parts) {
        const Sum* const of_column = columns.data() + static_cast<size_t>(column) * channels;
        for (size_t c = 0; c < channels; ++c) sums[c] += uint64_t{of_column[c]} * parts;
      });
      finish(row, static_cast<int>(x), sums);
    }
  }
}

template <size_t channels, class SamplesOf, class Finish>
Picture by_area(const Picture& picture, Size size, SamplesOf samples_of, Finish finish) {
  Picture result = blank_like(picture, size, picture.depth());
  const bool fits = picture.height() < (1 << 24);  // a column's sum of samples up to 255 fits 32 bits
  if (fits)
    sum_areas<channels, uint32_t>(picture, result, samples_of, finish);
  else
    sum_areas<channels, uint64_t>(picture, result, samples_of, finish);
  return result;
}

// Pixels whose bytes are levels: greys, or blue, green and red.
template <size_t channels>
Picture levels_by_area(const Picture& picture, Size size) {
  return by_area<channels>(
      picture, size, [](const uint8_t* row) { return row; },
      [mean = Mean(parts_of(picture))](uint8_t* row, int x, const auto& sums) {
        for (size_t c = 0; c < channels; ++c) row[static_cast<size_t>(x) * channels + c] = mean(sums[c]);
      });
}

// ---- Black and white ----

// Whether a new pixel that is half set and half clear becomes set: the darker colour wins.
bool set_wins_ties(const Picture& picture) {
  const auto brightness = [&](uint32_t pixel) { return vorel::luminance_of(rgb_of(color_of(picture, pixel))); };
  return brightness(1) < brightness(0);
}

// The covered parts of set pixels in a row of old pixels: pixels count as whole ones until the parts outside are taken off.
class PartsAcross {
 public:
  PartsAcross(int before, int after) : covers_(covers_of(before, after)), parts_(static_cast<uint32_t>(after)) {
    if (std::ranges::all_of(covers_, [](const Cover& cover) { return cover.pixels() <= kFew; }))
      for (const Cover& cover : covers_) few_.push_back(parts_of_few(cover));
  }

  const Cover& operator[](int x) const { return covers_[static_cast<size_t>(x)]; }

  // Whether no new pixel covers more than a few old ones.
  bool has_few() const { return !few_.empty(); }
  // For a word that begins at the new pixel's first old one.
  uint32_t of_few(int x, uint64_t pixels) const {
    return few_[static_cast<size_t>(x)][static_cast<size_t>(pixels >> (64 - kFew))];
  }

  uint64_t of(int x, std::span<const uint8_t> row) const {
    const Cover& cover = (*this)[x];
    uint64_t sum = 0;
    int first = cover.first;
    for (int count = cover.pixels(); count > 0; first += kInWord, count -= kInWord)
      sum += uint64_t{parts_} * static_cast<uint64_t>(count_ones(pixels_under(row, first, std::min(count, kInWord))));
    if (cover.head > 0) sum -= (parts_ - cover.head) * Pixel<1>::load(row.data(), cover.first);
    if (cover.tail > 0) sum -= (parts_ - cover.tail) * Pixel<1>::load(row.data(), cover.last());
    return sum;
  }

  static constexpr int kInWord = 56;  // pixels that a word has wherever they begin

  static uint64_t pixels_under(std::span<const uint8_t> row, int first, int count) {
    return first_of(pixels_at(row, static_cast<size_t>(first / 8)) << first % 8, count);
  }

 private:
  static constexpr int kFew = 3;
  using PartsOfFew = std::array<uint32_t, 1 << kFew>;  // for each pattern of pixels, the first one in the highest bit

  PartsOfFew parts_of_few(const Cover& cover) const {
    PartsOfFew sums{};
    for (uint32_t pattern = 0; pattern < sums.size(); ++pattern)
      for_each_covered(cover, parts_, [&](int x, uint32_t parts) {
        if ((pattern >> (kFew - 1 - (x - cover.first)) & 1) != 0) sums[pattern] += parts;
      });
    return sums;
  }

  std::vector<Cover> covers_;
  std::vector<PartsOfFew> few_;
  uint32_t parts_;  // of a whole old pixel
};

// Gives each new pixel the colour that covers more of it. Nothing is counted where all old pixels under eight new ones have one colour,
// as on most of a page.
class Majority {
 public:
  Majority(const Picture& picture, const Picture& result)
      : from_(picture.pixels()),
        to_(result.pixels()),
        across_(from_.width(), to_.width()),
        down_(covers_of(from_.height(), to_.height())),
        any_(from_.row(0).size()),
        all_(any_.size()),
        whole_(parts_of(picture)),
        for_half_(set_wins_ties(picture) ? 1 : 0) {}

  void make() {
    for (int y = 0; y < to_.height(); ++y) {
      look_through(down_[static_cast<size_t>(y)]);
      for (int x = 0; x < to_.width(); x += 8) make_byte(to_.row_from_top(y).data(), x);
    }
  }

 private:
  struct OldRow {
    std::span<const uint8_t> pixels;
    uint64_t parts, word = 0;
  };

  void look_through(const Cover& cover) {
    rows_.clear();
    for_each_covered(cover, static_cast<uint32_t>(to_.height()), [&](int y, uint32_t parts) {
      rows_.push_back({from_.row_from_top(y), parts});
    });
    std::ranges::copy(rows_.front().pixels, any_.begin());
    std::ranges::copy(rows_.front().pixels, all_.begin());
    for (const OldRow& row : std::span(rows_).subspan(1)) {
      std::ranges::transform(any_, row.pixels, any_.begin(), std::bit_or());
      std::ranges::transform(all_, row.pixels, all_.begin(), std::bit_and());
    }
  }

  void make_byte(uint8_t* row, int x) {
    const int end = std::min(x + 8, to_.width());
    const auto first = static_cast<size_t>(across_[x].first / 8), last = static_cast<size_t>(across_[end - 1].last() / 8);
    const auto in_sight = [&](const std::vector<uint8_t>& bytes) {
      return std::span(bytes).subspan(first, last - first + 1);
    };
    uint8_t byte = 0;
    if (std::ranges::all_of(in_sight(all_), [](uint8_t b) { return b == 0xFF; })) {
      byte = static_cast<uint8_t>(0xFF << (8 - (end - x)));
    } else if (std::ranges::any_of(in_sight(any_), [](uint8_t b) { return b != 0; })) {
      byte = across_.has_few() ? few_counted(first, x, end) : counted(x, end);
    }
    row[x / 8] = byte;
  }

  // A word holds all old pixels under eight new ones.
  uint8_t few_counted(size_t first, int x, int end) {
    for (OldRow& row : rows_) row.word = pixels_at(row.pixels, first);
    uint32_t byte = 0;
    for (int i = x; i < end; ++i) {
      const int shift = across_[i].first - static_cast<int>(first) * 8;
      uint64_t sum = 0;
      for (const OldRow& row : rows_) sum += row.parts * across_.of_few(i, row.word << shift);
      byte |= (2 * sum + for_half_ > whole_ ? 0x80u : 0) >> (i - x);
    }
    return static_cast<uint8_t>(byte);
  }

  uint8_t counted(int x, int end) const {
    uint32_t byte = 0;
    for (int i = x; i < end; ++i)
      if (is_set(i)) byte |= 0x80u >> (i - x);
    return static_cast<uint8_t>(byte);
  }

  bool is_set(int x) const {
    const int first = across_[x].first, count = across_[x].pixels();
    if (count <= PartsAcross::kInWord) {
      if (PartsAcross::pixels_under(any_, first, count) == 0) return false;
      if (PartsAcross::pixels_under(all_, first, count) == first_of(~uint64_t{0}, count)) return true;
    }
    uint64_t sum = 0;
    for (const OldRow& row : rows_) sum += row.parts * across_.of(x, row.pixels);
    return 2 * sum + for_half_ > whole_;
  }

  DibView from_, to_;
  PartsAcross across_;
  std::vector<Cover> down_;
  std::vector<OldRow> rows_;        // under the new row
  std::vector<uint8_t> any_, all_;  // these rows combined: bits set in any of them, and in all of them
  uint64_t whole_, for_half_;
};

// The same for exactly half the size: 32 new pixels from a word of each of two rows. Each pair of pixels lies within a byte,
// the left one in the higher bit.
uint32_t majority_of_fours(uint64_t above, uint64_t below, bool twos_are_set) {
  const uint64_t both_above = above & above << 1, both_below = below & below << 1;
  const uint64_t one_above = above | above << 1, one_below = below | below << 1;
  const uint64_t three = (both_above & one_below) | (both_below & one_above);
  const uint64_t two = both_above | both_below | (one_above & one_below);
  uint64_t bits = (twos_are_set ? two : three) >> 1 & 0x5555555555555555;
  bits = (bits | bits >> 1) & 0x3333333333333333;
  bits = (bits | bits >> 2) & 0x0F0F0F0F0F0F0F0F;
  bits = (bits << 4 | bits >> 8) & 0x00FF00FF00FF00FF;
  bits = (bits | bits >> 8) & 0x0000FFFF0000FFFF;
  return static_cast<uint32_t>(bits | bits >> 16);
}

void halve_bits(const Picture& picture, const Picture& result) {
  const DibView from = picture.pixels(), to = result.pixels();
  const bool twos_are_set = set_wins_ties(picture);
  for (int y = 0; y < to.height(); ++y) {
    const std::span<const uint8_t> above = from.row_from_top(2 * y), below = from.row_from_top(2 * y + 1);
    const std::span<uint8_t> row = to.row_from_top(y);
    for (size_t at = 0; at < row.size(); at += 4) {
      const uint32_t pixels = majority_of_fours(word_at(above, 2 * at), word_at(below, 2 * at), twos_are_set);
      std::memcpy(row.data() + at, &pixels, std::min(row.size() - at, sizeof pixels));
    }
    if (to.width() % 8 != 0) row.back() &= static_cast<uint8_t>(0xFF00 >> to.width() % 8);
  }
}

Picture bits_by_area(const Picture& picture, Size size) {
  Picture result = blank_like(picture, size, 1);
  if (picture.width() == 2 * size.width && picture.height() == 2 * size.height)
    halve_bits(picture, result);
  else
    Majority(picture, result).make();
  return result;
}

// Mixes the colours of a table and takes the table's nearest colour to the mixture.
Picture colors_by_area(const Picture& picture, Size size) {
  const std::span<const Rgb> table = used_colors(picture);
  std::vector<uint8_t> samples(static_cast<size_t>(picture.width()) * 3);
  const auto unpacked = [&](const uint8_t* row) {
    with_depth(picture.depth(), [&](auto depth) {
      for (int x = 0; x < picture.width(); ++x)
        Pixel<24>::store(samples.data(), x, color_of(picture, Pixel<depth>::load(row, x)));
    });
    return samples.data();
  };
  const auto finish = [&, mean = Mean(parts_of(picture))](uint8_t* row, int x, const auto& sums) {
    const auto nearest = nearest_color(table, {mean(sums[0]), mean(sums[1]), mean(sums[2]), 0});
    with_depth(picture.depth(), [&](auto depth) { Pixel<depth>::store(row, x, static_cast<uint32_t>(nearest)); });
  };
  return by_area<3>(picture, size, unpacked, finish);
}

}  // namespace

Picture scaled_by_area(const Picture& picture, Size size) {
  if (picture.depth() == 24) return levels_by_area<3>(picture, size);
  if (has_gray_ramp(picture)) return levels_by_area<1>(picture, size);
  return picture.depth() == 1 ? bits_by_area(picture, size) : colors_by_area(picture, size);
}

}  // namespace vorel::programs
