// Error diffusion and halftoning at every instruction set, beside pages without access.
#include "kernels/bilevel/bilevel.h"

#include <gtest/gtest.h>

#include "support/guarded.h"
#include "support/plain_bilevel.h"

using namespace test;
using namespace vorel;

namespace {

// Fewer and more rows than go at a time, widths that fill their rows and that do not, and one of several tiles.
// The 49 x 18 one has a 24-bit row that begins behind the last pixel of the source.
constexpr Size kSizes[] = {{1, 1}, {3, 2}, {8, 17}, {37, 16}, {49, 18}, {64, 5}, {131, 35}, {300, 18}};

std::span<const Rgb> colors_of(const Bytes& dib) {
  const int depth = header_of(dib).biBitCount;
  return {reinterpret_cast<const Rgb*>(dib.data() + 40), depth == 24 ? 0 : size_t{1} << depth};
}

// Rows of the source are whole, padding included, and begin where memory does or end where it does.
void expect_at_every_level(const Bytes& dib, int bits, ByteCount scratch_bytes, const Bytes& expected, auto&& run,
                           const std::string& what) {
  const Size size{header_of(dib).biWidth, header_of(dib).biHeight};
  const int depth = header_of(dib).biBitCount;
  const size_t stride = stride_of(size.width, depth);
  const Bytes rows(dib.end() - static_cast<std::ptrdiff_t>(stride) * size.height, dib.end());
  for_each_level([&](CpuLevel level) {
    for (const Edge edge : kEdges) {
      const GuardedBytes memory(rows, edge);
      const ConstDibView source(memory.bytes().data(), static_cast<std::ptrdiff_t>(stride), size.width, size.height, depth);
      const GuardedRows result(size, bits, 1, edge);
      for (int y = 0; y < size.height; ++y) std::ranges::fill(result.view().row(y), uint8_t{0});
      const GuardedBytes scratch = guarded_scratch(scratch_bytes, edge);
      run(kernels::bilevel(level), source, memory.bytes(), result.view(), scratch.bytes());
      EXPECT_EQ(result.pixels(), GuardedRows(expected, 0, Edge::kEnd).pixels())
          << what << ", " << size.width << " x " << size.height << " at " << depth << " bits to " << bits;
    }
  });
}

TEST(BilevelKernels, DiffuseTheSameAtEveryLevel) {
  for (const Size& size : kSizes)
    for (const int depth : {4, 8, 24})
      for (const int bits : {1, 4, 8})
        for (const auto kind :
             {PlainDither::floyd_steinberg, PlainDither::jarvis, PlainDither::smooth, PlainDither::sharp}) {
          const auto method = static_cast<kernels::Dithering>(kind);
          const bool makes_blocks = kind == PlainDither::smooth || kind == PlainDither::sharp;
          if (bits >= depth || (makes_blocks && bits == 8)) continue;
          const Bytes dib = noise(size.width, size.height, depth);
          expect_at_every_level(
              dib, bits, kernels::dithering_scratch(size, bits, method), plain_dither(dib, kind, bits),
              [&](const kernels::BilevelTable& table, ConstDibView source, auto, DibView result, auto scratch) {
                table.dither(source, colors_of(dib), result, method, scratch);
              },
              "method " + std::to_string(static_cast<int>(kind)));
        }
}

TEST(BilevelKernels, HalftoneTheSameAtEveryLevel) {
  for (const Size& size : kSizes)
    for (const int depth : {4, 8, 24})
      for (const int method : {0, 1, 2}) {
        const Bytes dib = noise(size.width, size.height, depth);
        expect_at_every_level(
            dib, 1, kernels::halftone_scratch(size, static_cast<kernels::HalftoneMethod>(method)),
            plain_halftone(dib, method, 20),
            [&](const kernels::BilevelTable& table, ConstDibView source, std::span<const uint8_t> memory, DibView result,
                auto scratch) {
              table.halftone(source, memory, colors_of(dib), 20, result, static_cast<kernels::HalftoneMethod>(method),
                             scratch);
            },
            "halftone " + std::to_string(method));
      }
}

}  // namespace
