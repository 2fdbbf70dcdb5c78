// Tone and filter kernels at every instruction set, beside pages without access, against the same done one pixel at a time.
#include "kernels/tone/tone.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

#include "kernels/filter/filter.h"
#include "kernels/tone/linear.h"
#include "support/guarded.h"
#include "support/plain_tone.h"

using namespace test;
using namespace vorel;

namespace {

// Around the widths of vectors and of what is done at a time.
constexpr Size kSizes[] = {{1, 1},  {2, 3},  {3, 3},   {9, 8},   {17, 7},  {31, 6},
                           {33, 9}, {66, 6}, {129, 7}, {515, 6}, {1100, 6}};
// Also written past the caches.
constexpr Size kLargeSize = {517, 5};

Bytes pixels_of(const Bytes& dib) { return GuardedRows(dib, 0, Edge::kEnd).pixels(); }

std::string text_of(Size size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

// A kernel that fills a result of some depth, at each level, with rows that lie anyhow.
void expect_pixels(const Bytes& dib, const Bytes& expected,
                   const std::function<void(CpuLevel, ConstDibView, DibView)>& kernel) {
  const BITMAPINFOHEADER header = header_of(expected);
  const Size size{header.biWidth, header.biHeight};
  SCOPED_TRACE(text_of(size));
  for_each_level([&](CpuLevel level) {
    for (const Edge edge : kEdges)
      for (size_t gap : {0u, 3u}) {
        const GuardedRows source(dib, gap, edge);
        if (gap != 0 && edge == Edge::kEnd && size.width == kLargeSize.width) gap = large_gap(size.height);
        const GuardedRows result(size, header.biBitCount, gap, edge);
        const Bytes gaps = result.gaps();
        kernel(level, source.view(), result.view());
        EXPECT_EQ(result.pixels(), pixels_of(expected));
        EXPECT_EQ(result.gaps(), gaps) << "written between the rows";
      }
  });
}

// The same for kernels whose result may be their source.
void expect_pixels_in_place(const Bytes& dib, const Bytes& expected,
                            const std::function<void(CpuLevel, ConstDibView, DibView)>& kernel) {
  expect_pixels(dib, expected, kernel);
  for_each_level([&](CpuLevel level) {
    const GuardedRows both(dib, 1, Edge::kEnd);
    kernel(level, both.view(), both.view());
    EXPECT_EQ(both.pixels(), pixels_of(expected)) << "in place";
  });
}

Bytes mapped(const Bytes& dib, const kernels::ComponentTable& table) {
  Picture picture(dib);
  for (size_t i = picture.head; i < dib.size(); ++i) picture.bytes[i] = table[dib[i]];
  return picture.bytes;
}

TEST(ToneKernels, MapBytes) {
  kernels::ComponentTable mixed;
  for (size_t i = 0; i < mixed.size(); ++i) mixed[i] = static_cast<uint8_t>(i * i * 31 + i / 7);
  for (const kernels::ComponentTable& table :
       {mixed, kernels::percentage_table(10, 20), kernels::percentage_table(-61, -77),
        kernels::contrast_table(2000, -300, 90), kernels::contrast_table(-400, 9, 128)})
    for (const Size size : {Size{1, 1}, {31, 3}, {97, 5}, {400, 170}})
      for (const int depth : {8, 24}) {
        const Bytes dib = noise(size.width, size.height, depth);
        expect_pixels_in_place(dib, mapped(dib, table), [&](CpuLevel level, ConstDibView source, DibView result) {
          kernels::tone(level).map_bytes(source, result, table);
        });
      }
}

// Brightness and contrast are lines for nearly all settings; whatever is taken for a line is one.
TEST(ToneKernels, LinesGiveTheirTablesExactly) {
  int lines = 0, tables = 0;
  const auto look_at = [&](const kernels::ComponentTable& table) {
    ++tables;
    const auto line = kernels::LinearTable::of(table);
    if (!line) return;
    ++lines;
    for (int i = 0; i < 256; ++i)
      ASSERT_EQ(std::clamp<int>((i * line->factor + line->offset) >> line->shift, line->least, line->most),
                table[static_cast<size_t>(i)]);
  };
  for (int brightness = -100; brightness <= 100; brightness += 8)
    for (int contrast = -100; contrast <= 100; contrast += 3) {
      look_at(kernels::percentage_table(brightness, contrast));
      look_at(kernels::contrast_table(contrast * 20, brightness, 117));
    }
  EXPECT_GT(lines, tables * 9 / 10);
  kernels::ComponentTable bent = kernels::percentage_table(0, 0);
  ++bent[100];
  EXPECT_FALSE(kernels::LinearTable::of(bent));
}

TEST(ToneKernels, LookUpColorsAndMakeThemGray) {
  std::vector<Size> sizes(std::begin(kSizes), std::end(kSizes));
  sizes.push_back(kLargeSize);
  for (const Size size : sizes) {
    const Bytes indices = noise(size.width, size.height, 8), colors = noise(size.width, size.height, 24);
    const auto* table = reinterpret_cast<const Rgb*>(indices.data() + 40);
    expect_pixels(indices, plain_24_bits(indices), [&](CpuLevel level, ConstDibView source, DibView result) {
      kernels::tone(level).look_up_colors(source, result, std::span<const Rgb, 256>(table, 256));
    });
    for (const auto rule : {kernels::GrayRule::kMean, kernels::GrayRule::kWeighted})
      expect_pixels(colors, plain_gray(colors, 0, rule == kernels::GrayRule::kWeighted),
                    [&](CpuLevel level, ConstDibView source, DibView result) {
                      kernels::tone(level).gray_rows(source, result, rule);
                    });
  }
}

TEST(ToneKernels, ExpandBits) {
  for (const Size size : kSizes)
    for (const int grade : {0, 1, 2})
      for (const bool inverted : {false, true}) {
        if (grade == 2 && size.height < 6) continue;
        Bytes dib = noise(size.width, size.height, 1);
        std::fill_n(dib.begin() + 40, 3, inverted ? 0 : 255);
        std::fill_n(dib.begin() + 44, 3, inverted ? 255 : 0);
        const auto smoothing = static_cast<kernels::Smoothing>(grade);
        expect_pixels(dib, plain_mono_gray(dib, grade), [&](CpuLevel level, ConstDibView source, DibView result) {
          const GuardedBytes scratch(kernels::expansion_scratch_bytes(smoothing, size.width), Edge::kEnd);
          kernels::tone(level).expand_bits(source, result, smoothing, inverted, scratch.bytes());
        });
      }
}

TEST(ToneKernels, CountSquares) {
  const Bytes dib = noise(700, 600, 8);
  const auto histogram = [](auto count) {
    Bytes block(512);
    count(kernels::Histogram(reinterpret_cast<uint16_t*>(block.data()), 256));
    return block;
  };
  for_each_level([&](CpuLevel level) {
    const auto& tone = kernels::tone(level);
    const GuardedRows source(dib, 0, Edge::kEnd);
    for (const kernels::Corner corner : {kernels::Corner{0, 0}, {444, 344}, {13, 7}}) {
      EXPECT_EQ(histogram([&](auto counters) { tone.count_square(source.view(), corner, counters); }),
                plain_histogram(dib, corner.x, corner.y));
      for (const kernels::Corner moved : {kernels::Corner{corner.x / 2 + 100, corner.y}, {corner.x, 111}, {130, 120}}) {
        if (!kernels::can_slide(corner, moved)) continue;
        EXPECT_EQ(histogram([&](auto counters) {
                    tone.count_square(source.view(), corner, counters);
                    tone.slide_square(source.view(), corner, moved, counters);
                  }),
                  plain_histogram(dib, moved.x, moved.y));
      }
    }
  });
}

struct Filter {
  PlainFilter plain;
  kernels::Kernel kernel;
};

std::vector<Filter> filters() {
  std::vector<Filter> all;
  for (const auto& [type, size] : {std::pair{3, 3}, {3, 5}, {3, 7}, {4, 3}, {4, 5}, {5, 3}, {6, 3}, {6, 5}})
    all.push_back({{type, size}, kernels::built_in_kernel(static_cast<kernels::FilterType>(type), size)});
  // Divisors that are shifts and products, with and without a limit, of sums that are never negative, always, or now and then.
  for (const int size : {3, 5, 7})
    for (const int divisor : {0, 2, 7, 64, 1000})
      for (const int least : {-2, -1, 0}) {
        std::vector<int> numbers;
        for (int i = 0; i < size * size; ++i) numbers.push_back((i * 7 + i / 5) % (least == -2 ? 3 : 4) + least);
        numbers.push_back(divisor);
        kernels::Kernel kernel{.size = size};
        EXPECT_TRUE(kernels::set_coefficients(kernel, numbers));
        all.push_back({{1, size, numbers}, kernel});
      }
  return all;
}

TEST(FilterKernels, Convolve) {
  for (const Filter& filter : filters())
    for (const Size size : {Size{1, 1}, {2, 4}, {3, 1}, {33, 9}, {515, 3}, {1100, 2}, kLargeSize}) {
      if (size.width == kLargeSize.width && filter.plain.type != 5) continue;  // once is enough
      SCOPED_TRACE(testing::Message() << "type " << filter.plain.type << ", size " << filter.plain.size << ", "
                                      << testing::PrintToString(filter.plain.kernel));
      const GuardedBytes scratch =
          guarded_scratch(kernels::convolution_scratch_bytes(filter.kernel, size.width), Edge::kEnd);
      const Bytes grays = noise(size.width, size.height, 8), colors = noise(size.width, size.height, 24);
      expect_pixels_in_place(grays, plain_convolution(grays, true, filter.plain),
                             [&](CpuLevel level, ConstDibView source, DibView result) {
                               kernels::filter(level).convolve_gray(source, result, filter.kernel, scratch.bytes());
                             });
      for (const int mode : {0, 1})
        expect_pixels_in_place(
            colors, plain_color_convolution(colors, true, mode, filter.plain),
            [&](CpuLevel level, ConstDibView source, DibView result) {
              const auto intensity = mode == 1 ? kernels::Intensity::kWeighted : kernels::Intensity::kMean;
              kernels::filter(level).convolve_color(source, result, filter.kernel, intensity, scratch.bytes());
            });
    }
}

// A grey picture whose first colour is black or white.
Bytes gray_noise(Size size, int depth, bool is_black_first) {
  Bytes dib = noise(size.width, size.height, depth);
  const int last = (1 << depth) - 1;
  for (int k = 0; k <= last; ++k)
    std::fill_n(dib.begin() + 40 + 4 * k, 3, static_cast<uint8_t>((is_black_first ? k : last - k) * 255 / last));
  return dib;
}

// Rows of a packed DIB: the bit to the right of a row is the next one in memory.
TEST(FilterKernels, CleanBits) {
  for (const Size size : kSizes)
    for (const int threshold : {1, 2, 3, 4, 5, 6, 7, 8})
      for (const bool full : {false, true}) {
        const Bytes dib = gray_noise(size, 1, false), expected = plain_cleaning(dib, threshold * 100 / 8 + 8, full);
        const Bytes rows(dib.begin() + 48, dib.end());
        for_each_level([&](CpuLevel level) {
          for (const Edge edge : kEdges) {
            const GuardedBytes source(rows, edge), result(rows, edge);
            const DibView view(result.bytes().data(), static_cast<std::ptrdiff_t>(stride_of(size.width, 1)), size.width,
                               size.height, 1);
            kernels::filter(level).clean_bits(source.bytes(), view, threshold,
                                              full ? kernels::Reach::kFull : kernels::Reach::kGentle);
            EXPECT_TRUE(std::ranges::equal(result.bytes(), std::span(expected).subspan(48)))
                << text_of(size) << ", threshold " << threshold << ", full " << full;
          }
        });
      }
}

TEST(FilterKernels, TakeRanks) {
  for (const Size size : kSizes)
    for (const int rank : {2, 3, 4, 5, 6, 7, 8})
      for (const bool full : {false, true}) {
        const Bytes dib = gray_noise(size, 8, true);
        SCOPED_TRACE(testing::Message() << "rank " << rank << ", full " << full);
        expect_pixels(
            dib, plain_cleaning(dib, rank * 100 / 9 + 1, full), [&](CpuLevel level, ConstDibView source, DibView result) {
              kernels::filter(level).take_rank(source, result, rank, full ? kernels::Reach::kFull : kernels::Reach::kGentle);
            });
      }
}

}  // namespace
