// Scaling at every instruction set, beside pages without access.
#include "kernels/scale/scale.h"

#include <gtest/gtest.h>

#include "support/guarded.h"
#include "support/plain_geometry.h"

using namespace test;
using namespace vorel;

namespace {

// Magnified, reduced a little and by much: positions lie within one, several and too many bytes for a shuffle. 700 columns become
// 1400 or 525 by weights that repeat, 333 or 171 by neighbours that are just too far apart for a window of 16 or 128 bytes.
constexpr Size kSources[] = {{1, 1}, {5, 3}, {131, 6}, {700, 4}};
constexpr Size kTargets[] = {{1, 2}, {33, 7}, {97, 5}, {171, 2}, {203, 9}, {333, 2}, {525, 3}, {1400, 5}, {1500, 11}};

Bytes with_gray_ramp(Bytes dib) {
  for (size_t i = 0; i < 1024; ++i) dib[40 + i] = static_cast<uint8_t>(i % 4 == 3 ? 0 : i / 4);
  return dib;
}

std::span<const Rgb> colors_of(const Bytes& dib) {
  return {reinterpret_cast<const Rgb*>(dib.data() + 40), header_of(dib).biBitCount == 24 ? 0 : size_t{256}};
}

TEST(ScaleKernels, MixTheSameAtEveryLevel) {
  for (const Size& from : kSources)
    for (const Bytes& dib : {with_gray_ramp(noise(from.width, from.height, 8)), noise(from.width, from.height, 24)})
      for (const Size& to : kTargets)
        for (const bool cubic : {false, true}) {
          const int depth = header_of(dib).biBitCount;
          const Bytes expected = GuardedRows(plain_scaling(dib, cubic, to.width, to.height), 0, Edge::kEnd).pixels();
          const auto interpolation = cubic ? kernels::Interpolation::kCubic : kernels::Interpolation::kLinear;
          for_each_level([&](CpuLevel level) {
            for (const Edge edge : kEdges) {
              const GuardedRows source(dib, 1, edge);
              const bool is_large = to.width == 1500 && from.width == 131 && edge == Edge::kEnd;  // written past the caches
              const GuardedRows result(to, depth, is_large ? large_gap(to.height) : 3, edge);
              const Bytes gaps = result.gaps();
              const GuardedBytes scratch = guarded_scratch(kernels::interpolation_scratch(from, to), edge);
              kernels::scale(level).scale_colors(source.view(), from.height, colors_of(dib), result.view(), interpolation,
                                                 scratch.bytes());
              EXPECT_EQ(result.pixels(), expected) << from.width << " x " << from.height << " to " << to.width << " x "
                                                   << to.height << ", " << depth << " bits, cubic " << cubic;
              EXPECT_EQ(result.gaps(), gaps);
            }
          });
        }
}

TEST(ScaleKernels, PickTheSameBitsAtEveryLevel) {
  for (const Size& from : kSources)
    for (const Size& to : kTargets) {
      const Bytes dib = noise(from.width, from.height, 1);
      const Rect rect{from.width / 3, from.height / 2, from.width, from.height - from.height / 2};
      const Bytes expected = plain_nearest(dib, rect.x, rect.y, rect.width, rect.height, to.width, to.height);
      for_each_level([&](CpuLevel level) {
        for (const Edge edge : kEdges) {
          const GuardedRows source(dib, 0, edge), result(to, 1, 0, edge);
          for (int y = 0; y < to.height; ++y) std::ranges::fill(result.view().row(y), uint8_t{0});
          const GuardedBytes scratch = guarded_scratch(kernels::nearest_scratch(1, to), edge);
          kernels::scale(level).scale_nearest(source.view(), rect, result.view(), scratch.bytes());
          EXPECT_EQ(result.pixels(), GuardedRows(expected, 0, Edge::kEnd).pixels())
              << from.width << " x " << from.height << " to " << to.width << " x " << to.height;
        }
      });
    }
}

}  // namespace
