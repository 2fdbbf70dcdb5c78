#include <cstring>

#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/row_writer.h"
#include "kernels/scale/resample.h"
#include "kernels/scale/scale.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr uint8_t kUnlisted = 0;  // the level of an index past the colours: black

// Runs a picture through the engine. read_row(row, samples) takes a stored row apart, write_row(samples, row) puts one together.
template <class Method, int kChannels>
void resample(ConstDibView source, DibView result, auto&& read_row, auto&& write_row) {
  Resampler<Method, kChannels> resampler(source.size(), result.size());
  const auto read = [&](int y, std::span<uint8_t> samples) { read_row(source.row(y).data(), samples); };
  for (int y = 0; y < result.height(); ++y) write_row(resampler.row(y, read), result.row(y).data());
}

template <int kChannels>
void resample(Interpolation interpolation, ConstDibView source, DibView result, auto&& read_row, auto&& write_row) {
  if (interpolation == Interpolation::kLinear)
    resample<Linear, kChannels>(source, result, read_row, write_row);
  else
    resample<Cubic, kChannels>(source, result, read_row, write_row);
}

void scale_true_color(ConstDibView source, DibView result, Interpolation interpolation) {
  const auto copy = [](const uint8_t* row, std::span<uint8_t> samples) { std::memcpy(samples.data(), row, samples.size()); };
  resample<3>(interpolation, source, result, copy,
              [](std::span<const uint8_t> samples, uint8_t* row) { std::memcpy(row, samples.data(), samples.size()); });
}

using Levels = std::array<uint8_t, 256>;

Levels levels_of(std::span<const Rgb> colors) {
  Levels levels;
  levels.fill(kUnlisted);
  for (size_t i = 0; i < std::min(colors.size(), levels.size()); ++i) levels[i] = level_of(colors[i]);
  return levels;
}

// For each level the index of the colour nearest to that grey.
Levels indices_of_levels(std::span<const Rgb> colors) {
  NearestColor nearest(colors);
  Levels indices;
  for (size_t level = 0; level < indices.size(); ++level) {
    const auto gray = static_cast<uint8_t>(level);
    indices[level] = nearest.index_of(gray, gray, gray);
  }
  return indices;
}

// Where black at the beginning of a row goes unlooked-up to colour 0.
enum class RowStart { kBlackIsColor0, kAsElsewhere };

template <int kDepth>
void scale_gray(ConstDibView source, std::span<const Rgb> colors, DibView result, Interpolation interpolation,
                RowStart row_start) {
  const Levels levels = levels_of(colors), indices = indices_of_levels(colors);
  const auto read = [&](const uint8_t* row, std::span<uint8_t> samples) {
    for (int x = 0; x < source.width(); ++x) samples[static_cast<size_t>(x)] = levels[Pixel<kDepth>::load(row, x)];
  };
  resample<1>(interpolation, source, result, read, [&](std::span<const uint8_t> samples, uint8_t* row) {
    size_t x = 0;
    if (row_start == RowStart::kBlackIsColor0)
      while (x < samples.size() && samples[x] == 0) ++x;
    for (; x < samples.size(); ++x) Pixel<kDepth>::store(row, static_cast<int>(x), indices[samples[x]]);
  });
}

template <int kDepth>
void scale_indexed(ConstDibView source, std::span<const Rgb> colors, DibView result, Interpolation interpolation) {
  std::array<Rgb, 256> table{};
  std::ranges::copy(colors.first(std::min(colors.size(), table.size())), table.begin());
  const auto read = [&](const uint8_t* row, std::span<uint8_t> samples) {
    uint8_t* to = samples.data();
    for (int x = 0; x < source.width(); ++x) {
      const Rgb color = table[Pixel<kDepth>::load(row, x)];
      *to++ = color.blue;
      *to++ = color.green;
      *to++ = color.red;
    }
  };
  NearestColor nearest(colors);
  resample<3>(interpolation, source, result, read, [&](std::span<const uint8_t> samples, uint8_t* row) {
    const uint8_t* from = samples.data();
    int x = 0;
    while (x < result.width() && (from[0] | from[1] | from[2]) == 0) from += 3, ++x;
    for (; x < result.width(); ++x, from += 3) Pixel<kDepth>::store(row, x, nearest.index_of(from[0], from[1], from[2]));
  });
}

// i * source / result, rounded to nearest with halves up.
int nearest(int i, int source, int result) {
  return static_cast<int>((int64_t{4} * result + int64_t{8} * i * source) / (int64_t{8} * result));
}

// The source column of each column of the result, as far as the rectangle and the picture go.
std::span<const int> columns_of(ConstDibView source, Rect rect, std::span<int> columns) {
  const int end = std::min(rect.width, source.width() - rect.x), count = static_cast<int>(columns.size());
  int x = 0;
  for (; x < count; ++x) {
    const int column = nearest(x, rect.width, count);
    if (column >= end) break;
    columns[static_cast<size_t>(x)] = rect.x + column;
  }
  return columns.first(static_cast<size_t>(x));
}

template <int kDepth>
void pick(const uint8_t* source, std::span<const int> columns, uint8_t* result) {
  RowWriter<kDepth> writer(result, 0);
  for (const int column : columns) writer.put(Pixel<kDepth>::load(source, column));
}

// A 1-bit row at its own width. Bits behind the last pixel come along, and of one more byte as many as the last byte has pixels;
// callers count on the bytes.
void copy_bits(std::span<const uint8_t> source, int x, int width, std::span<uint8_t> result) {
  source = source.subspan(static_cast<size_t>(x / 8));
  const size_t pixel_bytes = row_bytes(1, width);
  const auto byte = [&](size_t at) { return at <= pixel_bytes && at < source.size() ? source[at] : 0; };
  const size_t end = std::min(result.size(), pixel_bytes + 1);
  for (size_t i = 0; i < end; ++i) result[i] = static_cast<uint8_t>(byte(i) << x % 8 | byte(i + 1) >> (8 - x % 8));
  if (width % 8 != 0 && pixel_bytes < end) result[pixel_bytes] &= static_cast<uint8_t>(0xFF00 >> width % 8);
}

template <class Byte>
std::span<Byte> whole_row_from_top(BasicView<Byte> view, int y) {
  return {view.row_from_top(y).data(), static_cast<size_t>(view.stride())};
}

// Calls fill(source row, result row) for rows of the result from the top on, each of them zero, as far as there are rows to fill
// it from, and repeats the row before where that has the same source.
void for_each_row(ConstDibView source, Rect rect, DibView result, auto&& fill) {
  int previous = -1;
  for (int y = 0; y < result.height(); ++y) {
    const int in_rect = nearest(y, rect.height, result.height());
    if (in_rect >= rect.height || in_rect >= source.height() - rect.y) break;
    const int row = rect.y + in_rect;
    if (row == previous)
      std::ranges::copy(whole_row_from_top(result, y - 1), whole_row_from_top(result, y).begin());
    else
      fill(whole_row_from_top(source, row), whole_row_from_top(result, y));
    previous = row;
  }
}

void scale_colors(ConstDibView source, std::span<const Rgb> colors, DibView result, Interpolation interpolation) {
  with_depth(source.depth(), [&](auto depth) {
    if constexpr (depth == 24) {
      scale_true_color(source, result, interpolation);
    } else if (is_gray(colors)) {  // the same for a third of the work
      scale_gray<depth>(source, colors, result, interpolation, RowStart::kBlackIsColor0);
    } else {
      scale_indexed<depth>(source, colors, result, interpolation);
    }
  });
}

void scale_levels(ConstDibView source, std::span<const Rgb> colors, DibView result, Interpolation interpolation) {
  with_depth(source.depth(), [&](auto depth) {
    if constexpr (depth == 24)
      scale_true_color(source, result, interpolation);
    else
      scale_gray<depth>(source, colors, result, interpolation, RowStart::kAsElsewhere);
  });
}

void scale_nearest(ConstDibView source, Rect rect, DibView result, std::span<int> columns) {
  const bool is_whole = rect.width <= source.width() - rect.x;
  if (source.depth() == 1 && rect.width == result.width() && is_whole) {
    for_each_row(source, rect, result,
                 [&](std::span<const uint8_t> from, std::span<uint8_t> to) { copy_bits(from, rect.x, rect.width, to); });
    return;
  }
  const std::span<const int> picked = columns_of(source, rect, columns);
  with_depth(source.depth(), [&](auto depth) {
    for_each_row(source, rect, result,
                 [&](std::span<const uint8_t> from, std::span<uint8_t> to) { pick<depth>(from.data(), picked, to.data()); });
  });
}

}  // namespace

extern const ScaleTable scale_table;
const ScaleTable scale_table = {scale_colors, scale_levels, scale_nearest};

}  // namespace vorel::kernels::VOREL_LEVEL
