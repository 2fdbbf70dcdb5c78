#include "common/page/threshold.h"

#include <algorithm>
#include <array>
#include <vector>

#include "common/forms.h"
#include "core/gray.h"

namespace vorel::programs {
namespace {

Picture blank_page(const Picture& like) {
  DibHeader header = like.header();
  header.depth = 1;
  std::array<Rgb, 2> black_and_white;
  write_even_grays(black_and_white);
  return Picture::blank(header, black_and_white);
}

// Eight pixels at a time: is_white(x) of each.
template <class IsWhite>
void write_row(std::span<uint8_t> row, int width, IsWhite is_white) {
  for (int x = 0; x < width; x += 8) {
    uint32_t byte = 0;
    for (int i = 0; i < std::min(8, width - x); ++i) byte |= (is_white(x + i) ? 0x80u : 0u) >> i;
    row[static_cast<size_t>(x / 8)] = static_cast<uint8_t>(byte);
  }
}

Picture levels_of(Picture picture) {
  picture = workable(std::move(picture));
  return has_gray_ramp(picture) ? std::move(picture) : luminance_of(picture);
}

// Sums over a window that is cut off at the edges. They stay below 2^53, up to which whole numbers in doubles are exact, and the
// compiler can work on several pixels at a time.
class WindowSums {
 public:
  WindowSums(ConstDibView levels, int window)
      : levels_(levels),
        half_(window / 2),
        column_sums_(static_cast<size_t>(levels.width())),
        column_squares_(column_sums_),
        sums_(column_sums_),
        squares_(column_sums_),
        counts_(column_sums_),
        before_(column_sums_.size() + 1),
        squares_before_(before_) {
    for (int y = 0; y < std::min(half_, levels.height()); ++y) add(y, 1);
  }

  // To be called for each row from the top.
  void go_to(int y) {
    if (y + half_ < levels_.height()) add(y + half_, 1);
    if (y - half_ - 1 >= 0) add(y - half_ - 1, -1);
    const int width = levels_.width(), rows = std::min(y + half_, levels_.height() - 1) - std::max(y - half_, 0) + 1;
    for (size_t x = 0; x < column_sums_.size(); ++x) {
      before_[x + 1] = before_[x] + column_sums_[x];
      squares_before_[x + 1] = squares_before_[x] + column_squares_[x];
    }
    for (int x = 0; x < width; ++x) {
      const auto at = static_cast<size_t>(x), first = static_cast<size_t>(std::max(x - half_, 0)),
                 end = static_cast<size_t>(std::min(x + half_ + 1, width));
      sums_[at] = before_[end] - before_[first];
      squares_[at] = squares_before_[end] - squares_before_[first];
      counts_[at] = static_cast<double>(end - first) * rows;
    }
  }

  double sum(int x) const { return sums_[static_cast<size_t>(x)]; }
  double squares(int x) const { return squares_[static_cast<size_t>(x)]; }
  double count(int x) const { return counts_[static_cast<size_t>(x)]; }

 private:
  void add(int y, int sign) {
    const uint8_t* const row = levels_.row_from_top(y).data();
    for (size_t x = 0; x < column_sums_.size(); ++x) {
      const int level = row[x];
      column_sums_[x] += sign * level;
      column_squares_[x] += sign * level * level;
    }
  }

  ConstDibView levels_;
  int half_;
  std::vector<double> column_sums_, column_squares_, sums_, squares_, counts_, before_, squares_before_;
};

}  // namespace

Picture thresholded(Picture picture, int level) {
  if (picture.depth() == 1) return picture;
  const Picture levels = levels_of(std::move(picture));
  Picture page = blank_page(levels);
  for (int y = 0; y < levels.height(); ++y) {
    const uint8_t* const row = levels.pixels().row(y).data();
    write_row(page.pixels().row(y), levels.width(), [&](int x) { return row[x] >= level; });
  }
  return page;
}

int otsu_level(const Picture& picture) {
  const Picture levels = levels_of(picture.lent());
  std::array<uint64_t, 256> counts{};
  for (int y = 0; y < levels.height(); ++y)
    for (const uint8_t level : levels.pixels().row(y)) ++counts[level];
  double pixels = 0, sum = 0;
  for (size_t level = 0; level < counts.size(); ++level) {
    pixels += static_cast<double>(counts[level]);
    sum += static_cast<double>(counts[level]) * static_cast<double>(level);
  }
  double below = 0, sum_below = 0, best = -1;
  int first = 128, last = 128;
  for (int level = 1; level < 256; ++level) {
    const auto count = static_cast<double>(counts[static_cast<size_t>(level - 1)]);
    below += count;
    sum_below += count * (level - 1);
    const double above = pixels - below;
    if (below == 0 || above == 0) continue;
    const double apart = sum_below / below - (sum - sum_below) / above, variance = below * above * apart * apart;
    if (variance > best) best = variance, first = level;
    if (variance >= best) last = level;
  }
  return (first + last + 1) / 2;
}

Picture thresholded(Picture picture, const Sauvola& local) {
  if (picture.depth() == 1) return picture;
  constexpr double kDeviations = 128;
  const Picture levels = levels_of(std::move(picture));
  Picture page = blank_page(levels);
  WindowSums window(levels.pixels(), local.window);
  std::vector<uint8_t> is_white(static_cast<size_t>(levels.width()));
  for (int y = 0; y < levels.height(); ++y) {
    window.go_to(y);
    const uint8_t* const row = levels.pixels().row_from_top(y).data();
    for (int x = 0; x < levels.width(); ++x) {
      // level >= mean * (1 - k) + mean * k / 128 * deviation, times the count and without the root.
      const double count = window.count(x), sum = window.sum(x);
      const double over = row[x] * count - sum * (1 - local.k);
      // Products of windows beyond some 600 pixels are rounded, which may leave even light less than no variance.
      const double part = sum * local.k / (kDeviations * count),
                   variance = std::max(0.0, window.squares(x) * count - sum * sum);
      is_white[static_cast<size_t>(x)] =
          static_cast<uint8_t>(over >= 0) & static_cast<uint8_t>(over * over >= part * part * variance);
    }
    write_row(page.pixels().row_from_top(y), levels.width(), [&](int x) { return is_white[static_cast<size_t>(x)] != 0; });
  }
  return page;
}

}  // namespace vorel::programs
