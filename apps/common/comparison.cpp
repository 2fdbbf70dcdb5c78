// Two pictures compared by the colours that are seen, whatever form they are stored in.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "common/forms.h"
#include "common/operations.h"
#include "core/gray.h"
#include "core/pixel.h"
#include "core/row_bits.h"

namespace vorel::programs {
namespace {

using Colors = std::vector<uint32_t>;  // as pixels of 24 bits

// The rows of a picture from the top, in whatever order it stores them.
class Rows {
 public:
  explicit Rows(const Picture& picture) : pixels_(picture.pixels()), is_top_down_(picture.is_top_down()) {
    if (picture.depth() > 8) return;
    for (uint32_t i = 0; i < implied_colors(static_cast<uint32_t>(picture.depth())); ++i)
      table_.push_back(color_of(picture, i));
  }

  int depth() const { return pixels_.depth(); }
  const Colors& table() const { return table_; }

  // The bytes of a row's first pixels.
  std::span<const uint8_t> bytes(int y, int width) const {
    return (is_top_down_ ? pixels_.row(y) : pixels_.row_from_top(y)).first(row_bytes(depth(), width));
  }

  void read(int y, Colors& colors) const {
    const auto width = static_cast<int>(colors.size());
    const auto row = bytes(y, width);
    if (depth() == 16 || depth() == 32) return read_wide(row, colors);
    with_depth(depth(), [&](auto depth) {
      for (int x = 0; x < width; ++x) {
        const uint32_t pixel = Pixel<depth>::load(row.data(), x);
        colors[static_cast<size_t>(x)] = depth == 24 ? pixel : table_[pixel];
      }
    });
  }

 private:
  void read_wide(std::span<const uint8_t> row, Colors& colors) const {
    std::vector<uint8_t> narrow(colors.size() * 3);
    row_in_true_color(row, narrow.data(), static_cast<int>(colors.size()), depth());
    for (size_t x = 0; x < colors.size(); ++x) colors[x] = Pixel<24>::load(narrow.data(), static_cast<int>(x));
  }

  DibView pixels_;
  bool is_top_down_;
  Colors table_;
};

// Of the component that differs most.
int distance(uint32_t a, uint32_t b) {
  const auto component = [&](int shift) {
    return std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255));
  };
  return std::max({component(0), component(8), component(16)});
}

// Of rows of 1 bit per pixel. Bits past the width do not count.
uint64_t differing_bits(std::span<const uint8_t> a, std::span<const uint8_t> b, int width) {
  uint64_t count = 0;
  for (size_t at = 0; at < a.size(); at += kWordBytes) {
    const uint64_t differing = first_of(pixels_at(a, at) ^ pixels_at(b, at), width - static_cast<int>(8 * at));
    count += static_cast<uint64_t>(count_ones(differing));
  }
  return count;
}

// What the drawing shows: the first picture in pale greys and, where the two differ, reds that are the stronger the more they do.
constexpr int kShades = 128;

constexpr std::array<Rgb, 256> drawing_colors() {
  std::array<Rgb, 256> colors{};
  for (int i = 0; i < kShades; ++i) {
    const auto pale = static_cast<uint8_t>(kShades + i), beside_red = static_cast<uint8_t>(kShades + 16 - i * 144 / 127);
    colors[static_cast<size_t>(i)] = {pale, pale, pale, 0};
    colors[static_cast<size_t>(kShades + i)] = {beside_red, beside_red, 255, 0};
  }
  return colors;
}

uint8_t shade_of(uint32_t color, int distance, int threshold) {
  return static_cast<uint8_t>(distance > threshold ? kShades + distance / 2 : vorel::luminance_of(rgb_of(color)) / 2);
}

Size common_part(const Picture& a, const Picture& b) {
  return {std::min(a.width(), b.width()), std::min(a.height(), b.height())};
}

class Comparer {
 public:
  Comparer(const Picture& a, const Picture& b, int threshold, const Picture* drawing)
      : a_(a), b_(b), threshold_(threshold), drawing_(drawing) {
    result_.size = common_part(a, b);
    first_.resize(static_cast<size_t>(result_.size.width));
    second_.resize(first_.size());
    is_same_form_ = a_.depth() == b_.depth() && a_.table() == b_.table();
  }

  Comparison compare() {
    for (int y = 0; y < result_.size.height; ++y) compare_row(y);
    return result_;
  }

 private:
  void compare_row(int y) {
    const int width = result_.size.width;
    const auto first = a_.bytes(y, width), second = b_.bytes(y, width);
    const bool is_same = is_same_form_ && std::memcmp(first.data(), second.data(), first.size()) == 0;
    if (is_same && drawing_ == nullptr) return;
    if (is_same_form_ && a_.depth() == 1 && drawing_ == nullptr)
      return add(distance(a_.table()[0], a_.table()[1]), differing_bits(first, second, width));
    a_.read(y, first_);
    b_.read(y, second_);
    for (size_t x = 0; x < first_.size(); ++x)
      if (first_[x] != second_[x]) add(distance(first_[x], second_[x]), 1);
    if (drawing_ != nullptr) draw(drawing_->pixels().row_from_top(y));
  }

  void add(int distance, uint64_t pixels) {
    if (pixels == 0) return;
    result_.largest = std::max(result_.largest, distance);
    if (distance > threshold_) result_.different += pixels;
  }

  void draw(std::span<uint8_t> to) const {
    for (size_t x = 0; x < to.size(); ++x) to[x] = shade_of(first_[x], distance(first_[x], second_[x]), threshold_);
  }

  Rows a_, b_;
  int threshold_;
  const Picture* drawing_;
  bool is_same_form_ = false;
  Colors first_, second_;
  Comparison result_;
};

Picture blank_drawing(const Picture& like, Size size) {
  DibHeader header = like.header();
  header.width = size.width;
  header.height = size.height;
  header.depth = 8;
  static constexpr auto kColors = drawing_colors();
  return Picture::blank(header, kColors);
}

}  // namespace

Comparison compared(const Picture& a, const Picture& b, int threshold, Picture* drawing) {
  if (a.is_compressed()) return compared(expanded(a.lent()), b, threshold, drawing);
  if (b.is_compressed()) return compared(a, expanded(b.lent()), threshold, drawing);
  if (drawing != nullptr) *drawing = blank_drawing(a, common_part(a, b));
  return Comparer(a, b, threshold, drawing).compare();
}

}  // namespace vorel::programs
