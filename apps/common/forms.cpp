#include "common/forms.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/gray.h"
#include "core/pixel.h"
#include "kernels/rle/rle.h"

namespace vorel::programs {
namespace {

std::vector<Rgb> whole_table_of(const Picture& picture) {
  const std::span<const Rgb> colors = picture.colors();
  std::vector<Rgb> table(colors.begin(), colors.end());
  table.resize(std::max<size_t>(table.size(), implied_colors(static_cast<uint32_t>(picture.depth()))));
  return table;
}

// Five bits as eight: the upper ones again below them.
constexpr uint8_t widened(uint32_t five_bits) { return static_cast<uint8_t>(five_bits << 3 | five_bits >> 2); }

Picture narrowed(const Picture& picture) {
  Picture result = blank_like(picture, {picture.width(), picture.height()}, 24);
  const DibView from = picture.pixels(), to = result.pixels();
  for (int y = 0; y < from.height(); ++y) row_in_true_color(from.row(y), to.row(y).data(), from.width(), from.depth());
  return result;
}

}  // namespace

void row_in_true_color(std::span<const uint8_t> from, uint8_t* to, int width, int depth) {
  for (int x = 0; x < width; ++x, to += 3) {
    if (depth == 32) {
      std::copy_n(from.data() + size_t{4} * static_cast<size_t>(x), 3, to);
      continue;
    }
    const uint8_t* const pixel = from.data() + size_t{2} * static_cast<size_t>(x);
    const uint32_t value = pixel[0] | uint32_t{pixel[1]} << 8;
    to[0] = widened(value & 31);
    to[1] = widened(value >> 5 & 31);
    to[2] = widened(value >> 10 & 31);
  }
}

Picture expanded(Picture picture) {
  if (!picture.is_compressed()) return picture;
  Picture result = Picture::blank(picture.header(), whole_table_of(picture));
  kernels::rle().decode(picture.image_bytes(), result.pixels());
  return result;
}

Picture upright(Picture picture) {
  picture = expanded(std::move(picture));
  if (!picture.is_top_down()) return picture;
  picture = made_own(std::move(picture));
  const DibView rows = picture.pixels();
  for (int y = 0; y < rows.height() / 2; ++y) std::ranges::swap_ranges(rows.row(y), rows.row_from_top(y));
  picture.set_rows_order(false);
  return picture;
}

Picture workable(Picture picture) {
  picture = upright(std::move(picture));
  return picture.depth() == 16 || picture.depth() == 32 ? narrowed(picture) : std::move(picture);
}

Picture with_whole_table(Picture picture) {
  const uint32_t implied = implied_colors(static_cast<uint32_t>(picture.depth()));
  if (picture.is_compressed() || picture.colors().size() >= implied) return picture;
  Picture result = Picture::blank(picture.header(), whole_table_of(picture));
  std::ranges::copy(picture.image_bytes().first(result.image_bytes().size()), result.image_bytes().begin());
  return result;
}

Picture in_true_color(Picture picture) {
  picture = workable(std::move(picture));
  if (picture.depth() == 24) return picture;
  Picture result = blank_like(picture, {picture.width(), picture.height()}, 24);
  const DibView from = picture.pixels(), to = result.pixels();
  std::array<uint32_t, 256> colors{};
  for (uint32_t i = 0; i < colors.size(); ++i) colors[i] = color_of(picture, i);
  with_depth(picture.depth(), [&](auto depth) {
    for (int y = 0; y < from.height(); ++y)
      for (int x = 0; x < from.width(); ++x)
        Pixel<24>::store(to.row(y).data(), x, colors[Pixel<depth>::load(from.row(y).data(), x) & 255]);
  });
  return result;
}

Picture luminance_of(const Picture& picture) {
  std::array<Rgb, 256> ramp;
  write_gray_ramp(ramp);
  DibHeader header = picture.header();
  header.depth = 8;
  Picture result = Picture::blank(header, ramp);
  const DibView from = picture.pixels(), to = result.pixels();
  with_depth(picture.depth(), [&](auto depth) {
    for (int y = 0; y < from.height(); ++y)
      for (int x = 0; x < from.width(); ++x) {
        const uint32_t color = color_of(picture, Pixel<depth>::load(from.row(y).data(), x));
        to.row(y)[static_cast<size_t>(x)] = vorel::luminance_of(rgb_of(color));
      }
  });
  return result;
}

bool has_gray_ramp(const Picture& picture) {
  const std::span<const Rgb> colors = picture.colors();
  if (picture.depth() != 8 || colors.size() != 256) return false;
  for (size_t i = 0; i < colors.size(); ++i)
    if (!is_gray(colors[i]) || colors[i].red != i) return false;
  return true;
}

}  // namespace vorel::programs
