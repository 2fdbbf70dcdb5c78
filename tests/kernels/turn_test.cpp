// The turn kernels at each level, against the same done one pixel at a time.
#include "kernels/turn/turn.h"

#include <functional>
#include <gtest/gtest.h>

#include "support/guarded.h"
#include "support/plain_geometry.h"

using namespace test;
using namespace vorel;

namespace {

// Sides around the widths of words, vectors and tiles.
constexpr Size kSizes[] = {{1, 1}, {2, 1}, {1, 2}, {7, 9}, {8, 8}, {33, 17}, {64, 31}, {129, 40}, {15, 150}, {300, 70}};
constexpr int kDepths[] = {1, 4, 8, 24};

using Mapping = std::function<std::pair<int, int>(int x, int y)>;

// The pixels of a picture moved one at a time; those that leave the result are dropped.
Bytes moved(const Bytes& dib, Size size, const Mapping& to) {
  const Picture source(dib);
  Picture result = Picture::like(source, header_for(size.width, size.height, source.depth));
  for (int y = 0; y < source.height; ++y)
    for (int x = 0; x < source.width; ++x) {
      const auto [column, row] = to(x, y);
      if (column >= 0 && column < size.width) result.set(column, row, source.pixel(x, y));
    }
  return result.bytes;
}

Bytes pixels_of(const Bytes& dib) { return GuardedRows(dib, 0, Edge::kEnd).pixels(); }

// Also written past the caches, in more than one piece.
constexpr Size kLargeSize = {2100, 3};

// Runs a kernel at each level, with all gaps and edges, into a result of noise.
template <class Kernel>
void expect_pixels(const Bytes& dib, const Bytes& expected, Kernel kernel) {
  const Picture picture(dib), turned(expected);
  const Bytes pixels = pixels_of(expected);
  for_each_level([&](CpuLevel level) {
    for (const Edge edge : kEdges)
      for (size_t gap : {0u, 1u, 6u}) {
        if (gap == 6 && edge == Edge::kEnd && turned.width == kLargeSize.width) gap = large_gap(turned.height);
        SCOPED_TRACE(testing::Message() << picture.width << " x " << picture.height << " x " << picture.depth << ", gap "
                                        << gap << (edge == Edge::kBegin ? ", at the begin" : ", at the end"));
        const GuardedRows source(dib, std::min<size_t>(gap, 6), edge);
        const GuardedRows result({turned.width, turned.height}, turned.depth, gap, edge);
        const Bytes gaps = result.gaps();
        kernel(kernels::turn(level), source.view(), result.view());
        ASSERT_TRUE(result.pixels() == pixels);
        ASSERT_TRUE(result.gaps() == gaps) << "written between the rows";
      }
  });
}

TEST(TurnKernels, TurnAndMirror) {
  std::vector<Size> sizes(std::begin(kSizes), std::end(kSizes));
  sizes.push_back(kLargeSize);
  for (const int depth : kDepths)
    for (const Size size : sizes) {
      const auto [width, height] = size;
      const Bytes dib = noise(width, height, depth);
      const Size turned{height, width};
      const auto expect = [&](Size result, const Mapping& to, auto kernel) {
        expect_pixels(dib, moved(dib, result, to), kernel);
      };
      expect(
          size, [&](int x, int y) { return std::pair(width - 1 - x, height - 1 - y); },
          [](const auto& turn, auto source, auto result) { turn.half_turn(source, result); });
      expect(
          size, [&](int x, int y) { return std::pair(width - 1 - x, y); },
          [](const auto& turn, auto source, auto result) { turn.mirror_left_right(source, result); });
      if (depth * width % 8 == 0)  // whole bytes are moved
        expect(
            size, [&](int x, int y) { return std::pair(x, height - 1 - y); },
            [](const auto& turn, auto source, auto result) { turn.mirror_top_bottom(source, result); });
      // Each way round, and moved so that some columns get no row and some rows no column.
      for (const int step : {1, -1})
        for (const int moved_by : {0, 1, -1, 5}) {
          const kernels::QuarterTurn way{.first_column = (step > 0 ? 0 : height - 1) + moved_by,
                                         .column_step = step,
                                         .first_row = step > 0 ? width - 1 : 0,
                                         .row_step = -step};
          expect(
              turned, [&](int x, int y) { return std::pair(way.column_of(y), way.row_of(x)); },
              [&](const auto& turn, auto source, auto result) { turn.quarter_turn(source, result, way); });
        }
    }
}

// Rows that lie as in a packed DIB: where every byte up to the stride may be written.
void expect_whole_rows(const Bytes& dib, const Bytes& expected,
                       const std::function<void(const kernels::TurnTable&, ConstDibView, DibView)>& kernel) {
  const Picture turned(expected);
  for_each_level([&](CpuLevel level) {
    for (const Edge edge : kEdges) {
      SCOPED_TRACE(edge == Edge::kBegin ? "at the begin" : "at the end");
      const GuardedRows source(dib, 1, edge);
      const GuardedBytes rows(expected.size() - turned.head, edge);
      kernel(kernels::turn(level), source.view(),
             {rows.bytes().data(), static_cast<std::ptrdiff_t>(turned.stride), turned.width, turned.height, turned.depth});
      ASSERT_TRUE(std::ranges::equal(rows.bytes(), std::span(expected).subspan(turned.head)));
    }
  });
}

TEST(TurnKernels, Skew) {
  for (const int depth : kDepths)
    for (const Size size : kSizes)
      for (const int offset : {0, 1, -1, 9, -30, 200}) {
        const Bytes dib = noise(size.width, size.height, depth);
        SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << " x " << depth << " by " << offset);
        expect_whole_rows(dib, plain_skew(dib, true, offset),
                          [&](const auto& turn, auto source, auto result) { turn.skew_rows(source, result, offset); });
        expect_pixels(dib, plain_skew(dib, false, offset),
                      [&](const auto& turn, auto source, auto result) { turn.skew_columns(source, result, offset); });
      }
}

TEST(TurnKernels, RotateByAnyAngle) {
  for (const int depth : kDepths)
    for (const Size size : kSizes)
      for (const int angle : {0, 1, 17, 45, 90, 120, 179, 200, 270, 333}) {
        const Bytes dib = noise(size.width, size.height, depth);
        const kernels::Rotation rotation(size.width, size.height, angle);
        for (const int method : {0, 1}) {
          SCOPED_TRACE(testing::Message() << angle << " degrees, method " << method);
          const auto stepping = method == 1 ? kernels::Stepping::kInteger : kernels::Stepping::kExact;
          expect_pixels(dib, plain_rotation(dib, angle, method), [&](const auto& turn, auto source, auto result) {
            turn.rotate(source, result, rotation, stepping);
          });
        }
      }
}

}  // namespace
