// Turns, mirrors, shears, scaling, cutting.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "common/area.h"
#include "common/forms.h"
#include "common/operations.h"
#include "common/problem.h"
#include "core/nearest_color.h"
#include "core/pixel.h"
#include "kernels/scale/scale.h"

namespace vorel::programs {
namespace {

// ---- Backgrounds ----

template <class Change>
void for_each_byte(const Picture& picture, Change change) {
  for_each_row(picture, [&](std::span<uint8_t> row) { std::ranges::transform(row, row.begin(), change); });
}

// Bits that only fill up rows.
void clear_padding(const Picture& picture) {
  const size_t used = row_bytes(picture.depth(), picture.width());
  const auto spare_bits = used * 8 - static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.depth());
  for_each_row(picture, [&](std::span<uint8_t> row) {
    row[used - 1] &= static_cast<uint8_t>(0xFF << spare_bits);
    std::ranges::fill(row.subspan(used), uint8_t{0});
  });
}

// Lets colour 0 and another one change places, in the table and in all pixels.
void exchange_with_first(const Picture& picture, int index) {
  if (index == 0) return;
  std::swap(picture.colors()[0], picture.colors()[static_cast<size_t>(index)]);
  const int depth = picture.depth(), mask = (1 << depth) - 1;
  std::array<uint8_t, 256> exchanged{};  // for all pixels of a byte at once
  for (int byte = 0; byte < 256; ++byte)
    for (int shift = 0; shift < 8; shift += depth) {
      const int pixel = byte >> shift & mask, other = pixel == 0 ? index : pixel == index ? 0 : pixel;
      exchanged[static_cast<size_t>(byte)] |= static_cast<uint8_t>(other << shift);
    }
  for_each_byte(picture, [&](uint8_t byte) { return exchanged[byte]; });
}

int nearest_index(const Picture& picture, Background background) {
  const uint8_t level = background == Background::kWhite ? 255 : 0;
  return nearest_color(used_colors(picture), {level, level, level, 0});
}

// Runs a change of a workable picture whose result is 0 where the picture does not reach, and makes that the background.
template <class Change>
Picture on_background(Picture picture, Background background, Change change) {
  const bool has_table = picture.depth() <= 8;
  const int index = has_table ? nearest_index(picture, background) : 0;
  const bool stays = has_table ? index == 0 : background == Background::kBlack;
  if (!stays) picture = made_own(std::move(picture));
  const auto prepare_or_undo = [&](const Picture& what) {
    if (has_table)
      exchange_with_first(what, index);
    else if (background == Background::kWhite)
      for_each_byte(what, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
  };
  prepare_or_undo(picture);
  Picture result = change(picture);
  prepare_or_undo(result);
  clear_padding(result);
  return result;
}

// ---- Turns ----

constexpr int kHalfTurn = 180, kFullTurn = 360;

// RotateDIB270 shifts the picture by one column. Two other turns together are exact.
Picture turned_by_quarters(Picture picture, int degrees) {
  if (degrees == 0) return picture;
  if (degrees == kHalfTurn) return Picture(RotateDIB180(picture.get()));
  Picture quarter(RotateDIB90(picture.get()));
  return degrees == 90 ? std::move(quarter) : Picture(RotateDIB180(quarter.get()));
}

// The resolutions change places bit by bit up to a quarter turn. What RotateDIB makes of them depends on the turn's direction.
void turn_resolution(Picture& picture, const DibHeader& before, int degrees) {
  if (before.x_per_metre <= 0 || before.y_per_metre <= 0) {
    picture.set_resolution(before.x_per_metre, before.y_per_metre);
    return;
  }
  const int from_level = degrees % kHalfTurn;
  const double part = std::min(from_level, kHalfTurn - from_level) / 90.0;
  const auto mixed = [part](int own, int other) { return static_cast<int>(std::lround(own * (1 - part) + other * part)); };
  picture.set_resolution(mixed(before.x_per_metre, before.y_per_metre), mixed(before.y_per_metre, before.x_per_metre));
}

Picture turned_by_any(const Picture& picture, int degrees) {
  constexpr int kExactPositions = 0, kUncountedSize = 501;
  int status = 0;
  const HGLOBAL dib = RotateDIB(picture.get(), -degrees, kExactPositions, &status, nullptr);
  if (status == kUncountedSize) {
    throw Problem(Fault::kFormat,
                  "pictures as wide or as high as a multiple of 65536 pixels are turned by quarters only; crop the picture");
  }
  Picture result(dib);
  turn_resolution(result, picture.header(), degrees);
  return result;
}

// ---- Scaling ----

// The library exports this for 1 bit per pixel alone, and its kernel leaves the last rows and columns empty where it magnifies.
Picture scaled_to_nearest(const Picture& picture, Size size) {
  Picture result = blank_like(picture, size, picture.depth());
  const DibView from = picture.pixels(), to = result.pixels();
  if (size.width <= from.width() && size.height <= from.height()) {
    std::vector<uint8_t> scratch(static_cast<size_t>(kernels::nearest_scratch(picture.depth(), size).value()));
    kernels::scale().scale_nearest(from, {0, 0, from.width(), from.height()}, to, scratch);
    clear_padding(result);
    return result;
  }
  const auto source_of = [](int at, int source, int count) {
    return std::min(source - 1, static_cast<int>((int64_t{4} * count + int64_t{8} * at * source) / (int64_t{8} * count)));
  };
  std::vector<int> columns;
  for (int x = 0; x < size.width; ++x) columns.push_back(source_of(x, from.width(), size.width));
  with_depth(picture.depth(), [&](auto depth) {
    for (int y = 0; y < size.height; ++y) {
      const uint8_t* const row = from.row_from_top(source_of(y, from.height(), size.height)).data();
      for (int x = 0; x < size.width; ++x)
        Pixel<depth>::store(to.row_from_top(y).data(), x, Pixel<depth>::load(row, columns[static_cast<size_t>(x)]));
    }
  });
  return result;
}

// The library takes black at the beginning of a row for colour 0, so that is made the colour nearest to black.
Picture interpolated(Picture picture, Size size, Resampling resampling) {
  if (picture.width() > kMostScaledPixels) {
    throw Problem(
        Fault::kLimit,
        fmt::format("pictures wider than {} pixels are scaled to the nearest pixel only; choose that", kMostScaledPixels));
  }
  return on_background(std::move(picture), Background::kBlack, [&](const Picture& source) {
    return Picture(ScaleDIB(source.get(), resampling == Resampling::kCubic ? 1 : 0, static_cast<unsigned>(size.width),
                            static_cast<unsigned>(size.height)));
  });
}

int resolution_after(int per_metre, int before, int after) {
  const double now = std::round(static_cast<double>(per_metre) * after / before);
  return static_cast<int>(std::clamp(now, per_metre > 0 ? 1.0 : 0.0, 2e9));
}

// ---- Cutting ----

// CutDIB gives both halves the number of bytes of the lower one.
Picture with_own_size(HGLOBAL half) {
  Picture picture(half);
  DibHeader header = picture.header();
  header.image_bytes = static_cast<uint32_t>(rows_bytes(header).value());
  write_header(picture.bytes(), header);
  return Picture(picture.release());
}

// Cuts off what lies above and below some rows.
Picture rows_of(Picture picture, int first, int count) {
  if (first > 0) picture = cut(std::move(picture), first).below;
  if (count < picture.height()) picture = cut(std::move(picture), count).above;
  return picture;
}

}  // namespace

Picture turned(Picture picture, int degrees, Background background) {
  picture = workable(std::move(picture));
  degrees = (degrees % kFullTurn + kFullTurn) % kFullTurn;
  if (degrees % 90 == 0) return turned_by_quarters(std::move(picture), degrees);
  return on_background(std::move(picture), background,
                       [&](const Picture& source) { return turned_by_any(source, degrees); });
}

Picture mirrored_left_right(Picture picture) {
  picture = workable(std::move(picture));
  return Picture(FlipDIBHorizontal(picture.get()));
}

Picture mirrored_top_bottom(Picture picture) {
  picture = upright(std::move(picture));
  return Picture(FlipDIBVertical(picture.get()));
}

Picture skewed(Picture picture, Shear shear, int pixels, Background background) {
  picture = made_own(workable(std::move(picture)));
  return on_background(std::move(picture), background, [&](const Picture& source) {
    clear_padding(source);  // the library moves whole bytes
    int corners[8];
    return Picture(SkewDIB(source.get(), shear == Shear::kRows ? 1 : 0, pixels, nullptr, corners));
  });
}

Picture scaled(Picture picture, Size size, Resampling resampling) {
  if (std::max(size.width, size.height) > kMostScaledPixels) {
    throw Problem(Fault::kLimit, fmt::format("a side would have {} pixels, and at most {} can be made; ask for less",
                                             std::max(size.width, size.height), kMostScaledPixels));
  }
  picture = workable(std::move(picture));
  const bool is_nearest = resampling == Resampling::kNearest || picture.depth() == 1;
  const DibHeader before = picture.header();
  Picture result = resampling == Resampling::kArea ? scaled_by_area(picture, size)
                   : is_nearest                    ? scaled_to_nearest(picture, size)
                                                   : interpolated(std::move(picture), size, resampling);
  result.set_resolution(resolution_after(before.x_per_metre, before.width, size.width),
                        resolution_after(before.y_per_metre, before.height, size.height));
  return result;
}

Halves cut(Picture picture, int line) {
  picture = workable(std::move(picture));
  HGLOBAL below = nullptr, above = nullptr;
  if (!CutDIB(picture.get(), line, &below, &above)) below = above = nullptr;
  Picture upper = with_own_size(above);  // null tells that memory is short
  return {std::move(upper), with_own_size(below)};
}

// Columns are cut while they are rows: a quarter turn clockwise puts the left one on top.
Picture cropped(Picture picture, Rect piece) {
  picture = workable(std::move(picture));
  const bool is_whole_width = piece.width == picture.width();
  picture = rows_of(std::move(picture), piece.y, piece.height);
  if (is_whole_width) return picture;
  picture = rows_of(turned_by_quarters(std::move(picture), 90), piece.x, piece.width);
  return turned_by_quarters(std::move(picture), 270);
}

}  // namespace vorel::programs
