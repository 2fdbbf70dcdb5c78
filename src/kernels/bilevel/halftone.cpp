#include <algorithm>
#include <array>
#include <cstring>

#include "core/gray.h"
#include "core/pixel.h"
#include "kernels/bilevel/diffusion.h"
#include "kernels/bilevel/functions.h"
#include "kernels/bilevel/plane_width.h"
#include "kernels/cache.h"
#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr size_t kMatrixSide = kHalftonePeriod;
using Matrix = std::array<std::array<uint8_t, kMatrixSide>, kMatrixSide>;

// Thresholds from 0 to 255, spread as evenly as possible (Bayer, 1973): each quadrant is the matrix of half the size, times
// four, plus a constant of its own.
constexpr Matrix matrix() {
  constexpr int kBase[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  constexpr int kQuadrants[2][2] = {{0, 2}, {3, 1}};
  Matrix whole{};
  for (size_t y = 0; y < kMatrixSide; ++y)
    for (size_t x = 0; x < kMatrixSide; ++x) {
      const int of_8 = 4 * kBase[y % 4][x % 4] + kQuadrants[y % 8 / 4][x % 8 / 4];
      whole[y][x] = static_cast<uint8_t>(4 * of_8 + kQuadrants[y / 8][x / 8]);
    }
  return whole;
}
constexpr Matrix kThresholds = matrix();

// A brightness from -255 to 255 added to levels, which stay from 0 to 255.
class Brightening {
 public:
  explicit Brightening(int brightness)
      : least_(static_cast<uint8_t>(brightness < 0 ? -brightness : 0)),
        most_(static_cast<uint8_t>(brightness > 0 ? kWhite - brightness : kWhite)),
        added_(static_cast<uint8_t>(brightness)) {}

  uint8_t operator()(uint8_t level) const {
    const uint8_t kept = level < least_ ? least_ : level > most_ ? most_ : level;
    return static_cast<uint8_t>(kept + added_);
  }

 private:
  uint8_t least_, most_, added_;
};

// The brightened luminance of a source as a plane. Rows have the length of the source's: in bytes, at 4 bits in pixels.
class LuminancePlane {
 public:
  LuminancePlane(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness)
      : source_(source), memory_(memory), brightened_(std::clamp(brightness, -kWhite, +kWhite)) {
    for (size_t i = 0; i < colors.size(); ++i) {
      levels_[i] = brightened_(luminance_of(colors[i]));
      is_ramp_ = is_ramp_ && luminance_of(colors[i]) == i;
    }
  }

  // Pixels of a row of the result, from x on.
  void read(int y, int x, std::span<uint8_t> levels) const {
    if (source_.depth() == 24) return read_true_color(y, x, levels);
    const uint8_t* const row = source_.row(y).data();
    if (source_.depth() == 8 && is_ramp_) {
      read_row_ahead(row + source_.stride() + static_cast<size_t>(x), levels.size());  // in the next row
      const Brightening brightened = brightened_;                                      // a copy, which levels cannot overlap
      for (size_t i = 0; i < levels.size(); ++i) levels[i] = brightened(row[static_cast<size_t>(x) + i]);
    } else if (source_.depth() == 8)
      for (size_t i = 0; i < levels.size(); ++i) levels[i] = levels_[row[static_cast<size_t>(x) + i]];
    else
      for (size_t i = 0; i < levels.size(); ++i) levels[i] = levels_[Pixel<4>::load(row, x + static_cast<int>(i))];
  }

 private:
  // A quirk that is kept: at 24 bits the plane has a row's pixels, rounded up to four, but is read in steps of the source's
  // stride. So a row of the result shows several rows of the source, and the picture ends early.
  void read_true_color(int y, int x, std::span<uint8_t> levels) const {
    const size_t per_row = plane_width(24, source_.width());
    const auto stride = static_cast<size_t>(source_.stride());
    const size_t position = static_cast<size_t>(y) * stride + static_cast<size_t>(x);
    for (size_t row = position / per_row, column = position % per_row; !levels.empty(); ++row, column = 0) {
      const size_t count =
          row < static_cast<size_t>(source_.height()) ? std::min(per_row - column, levels.size()) : levels.size();
      read_pixels(row < static_cast<size_t>(source_.height()) ? row * stride + 3 * column : memory_.size(),
                  levels.first(count));
      levels = levels.subspan(count);
    }
  }

  // Pixels from an offset on; black behind the end of the memory.
  void read_pixels(size_t offset, std::span<uint8_t> levels) const {
    if (offset > memory_.size() || memory_.size() - offset < 3 * levels.size()) {
      for (uint8_t& level : levels) {
        const auto byte = [&] { return offset < memory_.size() ? memory_[offset++] : uint8_t{0}; };
        const uint8_t blue = byte(), green = byte(), red = byte();
        level = brightened_(luminance_of({blue, green, red, 0}));
      }
      return;
    }
    const uint8_t* pixel = memory_.data() + offset;
    const Brightening brightened = brightened_;
    for (size_t i = 0; i < levels.size(); ++i, pixel += 3)
      levels[i] = brightened(luminance_of({pixel[0], pixel[1], pixel[2], 0}));
  }

  ConstDibView source_;
  std::span<const uint8_t> memory_;
  Brightening brightened_;
  bool is_ramp_ = true;
  std::array<uint8_t, 256> levels_{};
};

// A bit for each of a vector's levels that is above its threshold, in the order of 1-bit pixels in memory.
Mask white_pixels(Bytes levels, Bytes thresholds) {
  const auto is_black = (Bytes)(larger(levels, thresholds) == thresholds);
#ifdef __SSE4_1__
  // The first pixel of each eight is the highest bit.
  constexpr auto kOrder = [] {
    std::array<uint8_t, kVectorBytes> places{};
    for (size_t i = 0; i < places.size(); ++i) places[i] = static_cast<uint8_t>(i % 16 ^ 7);
    return places;
  }();
  return ~mask_of(shuffle(is_black, load<Bytes>(kOrder.data())));
#else
  const Mask white = ~mask_of(is_black);
  return static_cast<Mask>(kReversed[white & 0xFF] | kReversed[white >> 8 & 0xFF] << 8);
#endif
}

void compare_row(const LuminancePlane& plane, int y, const std::array<uint8_t, kMatrixSide>& thresholds,
                 std::span<uint8_t> bits, int width) {
  constexpr int kRun = 512;
  alignas(kVectorBytes) uint8_t levels[kRun];
  Bytes limits;
  for (size_t i = 0; i < kVectorBytes; i += kMatrixSide)
    std::memcpy(reinterpret_cast<uint8_t*>(&limits) + i, thresholds.data(), kMatrixSide);
  for (int x = 0; x < width; x += kRun) {
    const auto count = static_cast<size_t>(std::min(kRun, width - x));
    plane.read(y, x, {levels, count});
    std::memset(levels + count, 0, (0 - count) % kVectorBytes);
    for (size_t i = 0; i < count; i += kVectorBytes) {
      const Mask white = white_pixels(load<Bytes>(levels + i), limits);
      const auto to = bits.subspan((static_cast<size_t>(x) + i) / 8);
      store_mask(white, to.data(), to.size());
    }
  }
}

void diffuse(const LuminancePlane& plane, DibView result, Arena arena) {
  using Method = JarvisJudiceNinke<ToBits, 1, 3, 1>;
  Wavefront<Method> front(result.width(), result.width(), arena);
  for (int first = 0; first < result.height(); first += kLanes) {
    const int rows = std::min(kLanes, result.height() - first);
    front.run(
        Method(), rows,
        [&](auto& to, int lane, int x, int count) {
          plane.read(first + lane, x, {to[0], static_cast<size_t>(count)});
        },
        [](int, int, std::span<const uint8_t>) {});
    for (int lane = 0; lane < rows; ++lane) front.write_bits(0, lane, result.row(first + lane));
  }
}

}  // namespace

void halftone(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness,
              DibView result, HalftoneMethod method, std::span<uint8_t> scratch) {
  const LuminancePlane plane(source, memory, colors, brightness);
  if (method == HalftoneMethod::kDiffusion) return diffuse(plane, result, Arena(scratch));
  std::array<uint8_t, kMatrixSide> alike;
  alike.fill(static_cast<uint8_t>(kThreshold));
  for (int y = 0; y < result.height(); ++y) {
    const bool is_ordered = method == HalftoneMethod::kOrdered;
    compare_row(plane, y, is_ordered ? kThresholds[static_cast<size_t>(y) % kMatrixSide] : alike, result.row(y),
                result.width());
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
