// Tone and colour of an A4 page at 300 dots per inch.
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include <vorel32.h>

#include "beside_plain.h"
#include "support/plain_tone.h"

namespace {

using test::Block;
using test::Bytes;
using test::PlainFilter;

// Compared with copying the pixels of a square, and with counting it anew. The square moves to and fro by `pixels`.
void drag_square(benchmark::State& state, int pixels, double& plain_seconds) {
  const Block dib(page_dib(8, page_pixels(8)));
  const Block histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, nullptr));
  int origin[] = {500, 500};
  const std::vector<uint8_t> square(size_t{256} * 256);
  std::vector<uint8_t> target(square.size());
  const double worked = measure(
      state, square.size(),
      [&] {
        origin[0] = origin[1] = 1000 - pixels - origin[0];
        ComputeHistogram(dib.get(), IMG_COMPUTE, histogram.get(), origin, nullptr);
      },
      [&] {
        std::memcpy(target.data(), square.data(), square.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
      });
  if (plain_seconds == 0) {
    const Bytes bytes = test::bytes_of(dib.get());
    plain_seconds = seconds([&] { benchmark::DoNotOptimize(test::plain_histogram(bytes, 500, 500).data()); });
  }
  state.counters["plain"] = plain_seconds / worked;
}

void add_filter(const std::string& name, const PlainFilter& filter) {
  add_beside_plain(
      "Convolve_" + name, 8,
      {[=](HGLOBAL dib) { return Convolve(dib, 1, filter.type, filter.size, nullptr, filter.kernel.data(), nullptr); },
       [=](const Bytes& dib) { return test::plain_convolution(dib, true, filter); }});
  const std::vector<short> kernel(filter.kernel.begin(), filter.kernel.end());
  add_beside_plain("ColorConvolution_" + name, 24,
                   {[=](HGLOBAL dib) {
                      return ColorConvolution(dib, 1, 0, static_cast<short>(filter.type), filter.size, nullptr,
                                              kernel.data(), nullptr);
                    },
                    [=](const Bytes& dib) { return test::plain_color_convolution(dib, true, 0, filter); }});
}

void add_tables() {
  const Bytes table = test::plain_table({}, 90, -20);
  add_beside_plain("ApplyLUT", 8,
                   {[=](HGLOBAL dib) { return ApplyLUT(dib, test::block_of(table).get(), 1, nullptr); },
                    [=](const Bytes& dib) { return test::plain_lookup(dib, table, true); }},
                   true);
  add_beside_plain("Convert8to24", 8, {[](HGLOBAL dib) { return Convert8to24(dib); }, test::plain_24_bits}, true);
  for (int depth : {8, 24})
    add_beside_plain("ColorBrightnessContrast", depth,
                     {[](HGLOBAL dib) { return ColorBrightnessContrast(dib, 30, -20); },
                      [](const Bytes& dib) { return test::plain_brightness(dib, 30, -20); }});
}

void add_grays() {
  for (int depth : {8, 24})
    add_beside_plain("ConvColorDIBtoGrayscale", depth,
                     {[](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, 0, 1); },
                      [](const Bytes& dib) { return test::plain_gray(dib, 0, true); }},
                     true);
  for (int grade : {0, 1, 2})
    add_beside_plain("ConvMonoDIBtoGrayscale_" + std::to_string(grade), 1,
                     {[=](HGLOBAL dib) { return ConvMonoDIBtoGrayscale(dib, grade); },
                      [=](const Bytes& dib) { return test::plain_mono_gray(dib, grade); }});
  for (int depth : {1, 8})
    add_beside_plain("CleanImage", depth,
                     {[](HGLOBAL dib) { return CleanImage(dib, 50, 1); },
                      [](const Bytes& dib) { return test::plain_cleaning(dib, 50, true); }});
}

const bool registered = [] {
  for (int pixels : {10, 128, 200})
    benchmark::RegisterBenchmark(
        ("ComputeHistogram_" + std::to_string(pixels)).c_str(),
        [=, plain_seconds = 0.0](benchmark::State& state) mutable { drag_square(state, pixels, plain_seconds); });
  add_tables();
  for (int size : {3, 5, 7}) add_filter("box_" + std::to_string(size), {3, size});
  for (int size : {3, 5}) add_filter("sharpen_" + std::to_string(size), {6, size});
  add_filter("sobel", {1, 3, {-1, 0, 1, -2, 0, 2, -1, 0, 1, 3}});
  add_grays();
  return true;
}();

}  // namespace
