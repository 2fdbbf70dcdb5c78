#include <algorithm>
#include <array>
#include <vector>

#include "core/gray.h"
#include "core/pixel.h"
#include "kernels/bilevel/diffusion.h"
#include "kernels/bilevel/functions.h"
#include "kernels/bilevel/plane_width.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

constexpr size_t kMatrixSide = 16;
using Matrix = std::array<std::array<uint8_t, kMatrixSide>, kMatrixSide>;

// Thresholds from 0 to 255, spread as evenly as can be (Bayer, 1973): each quadrant is the matrix of half the size, times four, plus
// a number of its own.
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

// The luminance of a source, as a plane of rows as long as the source's rows are: in bytes, at 4 bits in pixels.
class LuminancePlane {
 public:
  LuminancePlane(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness)
      : source_(source), memory_(memory), brightness_(brightness) {
    for (size_t i = 0; i < colors.size(); ++i) levels_[i] = level(colors[i]);
  }

  size_t row_length() const { return static_cast<size_t>(source_.stride()) * (source_.depth() == 4 ? 2 : 1); }

  // The first pixels of a row.
  void read(int y, std::span<uint8_t> row) const {
    const size_t begin = static_cast<size_t>(y) * row_length();
    if (source_.depth() == 24) return read_true_color(begin, row);
    const std::span<const uint8_t> bytes = memory_.subspan(static_cast<size_t>(y) * static_cast<size_t>(source_.stride()));
    if (source_.depth() == 8)
      for (size_t x = 0; x < row.size(); ++x) row[x] = levels_[bytes[x]];
    else
      for (size_t x = 0; x < row.size(); ++x) row[x] = levels_[Pixel<4>::load(bytes.data(), static_cast<int>(x))];
  }

 private:
  uint8_t level(Rgb color) const {
    return static_cast<uint8_t>(std::clamp<int64_t>(int64_t{luminance_of(color)} + brightness_, 0, kWhite));
  }

  uint8_t byte(size_t offset) const { return offset < memory_.size() ? memory_[offset] : 0; }

  // 24-bit pixels lie closer together than rows are long: as many to a row as it has, rounded up to four. So a row of the result
  // shows several rows of the source, and the picture ends early. Callers count on it.
  void read_true_color(size_t begin, std::span<uint8_t> row) const {
    const size_t per_row = plane_width(24, source_.width());
    size_t y = begin / per_row, x = begin % per_row;
    for (uint8_t& to : row) {
      if (y >= static_cast<size_t>(source_.height())) {
        to = level(Rgb{});
        continue;
      }
      const size_t offset = y * static_cast<size_t>(source_.stride()) + 3 * x;
      to = level(Rgb{byte(offset), byte(offset + 1), byte(offset + 2), 0});
      if (++x < per_row) continue;
      x = 0;
      ++y;
    }
  }

  ConstDibView source_;
  std::span<const uint8_t> memory_;
  int brightness_;
  std::array<uint8_t, 256> levels_{};
};

void pack(std::span<const uint8_t> levels, uint8_t* bits, auto&& is_white) {
  RowWriter<1> writer(bits, 0);
  for (size_t x = 0; x < levels.size(); ++x) writer.put(is_white(x, levels[x]) ? 1 : 0);
}

}  // namespace

void halftone(ConstDibView source, std::span<const uint8_t> memory, std::span<const Rgb> colors, int brightness,
              DibView result, HalftoneMethod method) {
  using Row = ErrorRow<int32_t>;
  const LuminancePlane plane(source, memory, colors, brightness);
  const int width = result.width();
  std::vector<uint8_t> levels(static_cast<size_t>(width));
  const size_t length = method == HalftoneMethod::kDiffusion ? plane.row_length() : 0;
  Row current(length), below(length), further(length);
  for (int y = 0; y < result.height(); ++y) {
    uint8_t* const bits = result.row(y).data();
    plane.read(y, levels);
    switch (method) {
      case HalftoneMethod::kThreshold: pack(levels, bits, [](size_t, int level) { return level > kThreshold; }); break;
      case HalftoneMethod::kOrdered: {
        const auto& thresholds = kThresholds[static_cast<size_t>(y) % kMatrixSide];
        pack(levels, bits, [&](size_t x, int level) { return level > thresholds[x % kMatrixSide]; });
        break;
      }
      case HalftoneMethod::kDiffusion:
        current.add(levels);
        threshold_row<JarvisJudiceNinke<3, 1>>(ErrorRows<int32_t>{current.data(), below.data(), further.data()}, width,
                                               bits);
        current.copy(below);
        below.copy(further);
        break;
    }
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
