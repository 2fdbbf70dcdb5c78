#include <array>
#include <cstring>

#include "core/gray.h"
#include "core/nearest_color.h"
#include "core/pixel.h"
#include "kernels/scale/functions.h"
#include "kernels/scale/nearest_color_map.h"
#include "kernels/scale/resampler.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

using Table = std::array<uint8_t, 256>;

// Rows that are mixed from equal rows of the source depend only on their weights.
class RowsByWeights {
 public:
  // An earlier row with these weights. There is none if the result is `y`, which counts as earlier from then on.
  int like(uint32_t weights, int y) {
    Row& row = rows_[weights * 0x9E3779B1u >> 22];
    if (row.y < 0 || row.weights != weights) row = {weights, y};
    return row.y;
  }

 private:
  struct Row {
    uint32_t weights;
    int y = -1;
  };
  Row rows_[1024];
};

// Resamples a picture. read_row(row, samples) unpacks a stored row, write_row(row, fill) packs a row from the samples that
// fill(to, output) makes.
void resample(Interpolation interpolation, ConstDibView source, int height, DibView result, int channels, Arena arena,
              auto&& read_row, auto&& write_row) {
  const auto run = [&](auto resampler) {
    RowsByWeights repeated;
    for (int y = 0; y < result.height(); ++y) {
      const auto taps = resampler.taps_of(y);
      uint32_t weights = 0;
      std::memcpy(&weights, taps.weights.data(), taps.weights.size());
      const int like = resampler.repeats(taps) ? repeated.like(weights, y) : y;
      if (like != y)
        std::memcpy(result.row(y).data(), result.row(like).data(), result.row(y).size());
      else
        write_row(result.row(y).data(),
                  [&](uint8_t* to, const RowOutput& output) { resampler.row(taps, to, output, read_row); });
    }
  };
  if (interpolation == Interpolation::kLinear)
    run(Resampler<Linear>(source, height, result.size(), channels, arena));
  else
    run(Resampler<Cubic>(source, height, result.size(), channels, arena));
}

// Samples as they are stored.
void resample_bytes(Interpolation interpolation, ConstDibView source, int height, DibView result, int channels,
                    Arena arena) {
  const RowOutput output(source, result);
  resample(interpolation, source, height, result, channels, arena, StoredSamples(),
           [&](uint8_t* row, auto fill) { fill(row, output); });
}

// Levels of the colours; black for indices past them.
Table levels_of(std::span<const Rgb> colors) {
  Table levels{};
  for (size_t i = 0; i < colors.size() && i < levels.size(); ++i) levels[i] = level_of(colors[i]);
  return levels;
}

// For each level, the index of the colour nearest to that grey.
Table indices_of_levels(std::span<const Rgb> colors) {
  Table indices;
  for (size_t level = 0; level < indices.size(); ++level) {
    const auto gray = static_cast<uint8_t>(level);
    indices[level] = nearest_color(colors, {gray, gray, gray, 0});
  }
  return indices;
}

bool is_identity(const Table& table) {
  for (size_t i = 0; i < table.size(); ++i)
    if (table[i] != i) return false;
  return true;
}

// Whether black at the beginning of a row becomes colour 0 without a lookup.
enum class RowStart { kBlackIsColor0, kAsElsewhere };

template <int kDepth>
void scale_gray(ConstDibView source, int height, std::span<const Rgb> colors, DibView result, Interpolation interpolation,
                Arena arena, RowStart row_start) {
  const Table levels = levels_of(colors);
  // Every grey of a ramp is nearest to itself.
  if (kDepth == 8 && is_gray(colors) && is_identity(levels))
    return resample_bytes(interpolation, source, height, result, 1, arena);
  const Table indices = indices_of_levels(colors);
  const auto row = arena.take<uint8_t>(static_cast<size_t>(result.width()));
  const auto read = [&](const uint8_t* from, std::span<uint8_t> samples) {
    for (int x = 0; x < source.width(); ++x) samples[static_cast<size_t>(x)] = levels[Pixel<kDepth>::load(from, x)];
  };
  const RowOutput in_caches;
  resample(interpolation, source, height, result, 1, arena, read, [&](uint8_t* to, auto fill) {
    fill(row.data(), in_caches);
    size_t x = 0;
    if (row_start == RowStart::kBlackIsColor0)
      for (; x < row.size() && row[x] == 0; ++x) Pixel<kDepth>::store(to, static_cast<int>(x), 0);
    for (; x < row.size(); ++x) Pixel<kDepth>::store(to, static_cast<int>(x), indices[row[x]]);
  });
}

template <int kDepth>
void scale_indexed(ConstDibView source, int height, std::span<const Rgb> colors, DibView result, Interpolation interpolation,
                   Arena arena) {
  std::array<Rgb, 256> table{};
  for (size_t i = 0; i < colors.size() && i < table.size(); ++i) table[i] = colors[i];
  const auto row = arena.take<uint8_t>(static_cast<size_t>(result.width()) * 3);
  const auto read = [&](const uint8_t* from, std::span<uint8_t> samples) {
    uint8_t* to = samples.data();
    for (int x = 0; x < source.width(); ++x) {
      const Rgb color = table[Pixel<kDepth>::load(from, x)];
      *to++ = color.blue;
      *to++ = color.green;
      *to++ = color.red;
    }
  };
  // An empty table counts as entry 0 alone, which is black.
  NearestColorMap nearest(colors.empty() ? std::span<const Rgb>(table).first(1) : colors, arena);
  const RowOutput in_caches;
  resample(interpolation, source, height, result, 3, arena, read, [&](uint8_t* to, auto fill) {
    fill(row.data(), in_caches);
    const uint8_t* from = row.data();
    int x = 0;
    for (; x < result.width() && (from[0] | from[1] | from[2]) == 0; from += 3, ++x) Pixel<kDepth>::store(to, x, 0);
    for (; x < result.width(); ++x, from += 3) Pixel<kDepth>::store(to, x, nearest.index_of(from[0], from[1], from[2]));
  });
}

}  // namespace

void scale_colors(ConstDibView source, int height, std::span<const Rgb> colors, DibView result, Interpolation interpolation,
                  std::span<uint8_t> scratch) {
  const Arena arena(scratch);
  with_depth(source.depth(), [&](auto depth) {
    if constexpr (depth == 24) {
      resample_bytes(interpolation, source, height, result, 3, arena);
    } else if constexpr (depth != 1) {
      if (is_gray(colors))  // the same for a third of the work
        scale_gray<depth>(source, height, colors, result, interpolation, arena, RowStart::kBlackIsColor0);
      else
        scale_indexed<depth>(source, height, colors, result, interpolation, arena);
    }
  });
}

void scale_levels(ConstDibView source, int height, std::span<const Rgb> colors, DibView result, Interpolation interpolation,
                  std::span<uint8_t> scratch) {
  const Arena arena(scratch);
  with_depth(source.depth(), [&](auto depth) {
    if constexpr (depth == 24)
      resample_bytes(interpolation, source, height, result, 3, arena);
    else if constexpr (depth != 1)
      scale_gray<depth>(source, height, colors, result, interpolation, arena, RowStart::kAsElsewhere);
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
