// Turns and mirrors of an A4 page at 300 dots per inch.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <vorel32.h>

#include "dib/header.h"
#include "geometry/turn.h"
#include "measure.h"

namespace {

using namespace vorel;

constexpr int kWidth = 2480, kHeight = 3508;

struct Page {
  int width, height, depth;
  std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(row_stride(static_cast<uint32_t>(depth), width).value());
  std::vector<uint8_t> bytes = std::vector<uint8_t>(static_cast<size_t>(stride) * static_cast<size_t>(height));

  Page(int w, int h, int d) : width(w), height(h), depth(d) {}
  DibView view() { return {bytes.data(), stride, width, height, depth}; }
};

// Text-like bytes: mostly paper, some ink.
void fill(std::vector<uint8_t>& bytes) {
  uint32_t state = 1;
  for (uint8_t& byte : bytes) {
    state = state * 1'664'525 + 1'013'904'223;
    byte = state >> 28 == 0 ? static_cast<uint8_t>(state >> 16) : 0xFF;
  }
}

void kernel(benchmark::State& state, int depth, bool quarter, void (*turn)(ConstDibView, DibView)) {
  Page source(kWidth, kHeight, depth);
  Page result(quarter ? kHeight : kWidth, quarter ? kWidth : kHeight, depth);
  fill(source.bytes);
  measure_kernel(state, source.bytes, [&] {
    turn(source.view(), result.view());
    benchmark::DoNotOptimize(result.bytes.data());
    benchmark::ClobberMemory();
  });
}

void exported(benchmark::State& state, int depth, HGLOBAL(VORELCALL* turn)(HGLOBAL)) {
  const Page page(kWidth, kHeight, depth);
  DibHeader header{.width = kWidth, .height = kHeight, .depth = static_cast<uint16_t>(depth)};
  const size_t size = static_cast<size_t>(bits_offset(header).value()) + page.bytes.size();
  HGLOBAL dib = GlobalAlloc(GHND, size);
  auto* bytes = static_cast<uint8_t*>(GlobalLock(dib));
  std::vector<uint8_t> pixels(page.bytes.size());
  fill(pixels);
  std::memcpy(bytes, &header, sizeof header);
  std::memcpy(bytes + size - pixels.size(), pixels.data(), pixels.size());
  GlobalUnlock(dib);
  measure_export(state, dib, turn);
  GlobalFree(dib);
}

void clockwise(ConstDibView source, DibView result) {
  quarter_turn(source, result, {.first_column = 0, .column_step = 1, .first_row = source.width() - 1, .row_step = -1});
}

struct Kernel {
  const char* name;
  bool quarter;
  void (*turn)(ConstDibView, DibView);
};
struct Export {
  const char* name;
  HGLOBAL(VORELCALL* turn)(HGLOBAL);
};

const bool registered = [] {
  const Kernel kernels[] = {{"quarter_turn", true, clockwise},
                            {"half_turn", false, half_turn},
                            {"mirror_left_right", false, mirror_left_right},
                            {"mirror_top_bottom", false, mirror_top_bottom}};
  const Export exports[] = {{"RotateDIB90", RotateDIB90},
                            {"RotateDIB180", RotateDIB180},
                            {"RotateDIB270", RotateDIB270},
                            {"FlipDIBHorizontal", FlipDIBHorizontal},
                            {"FlipDIBVertical", FlipDIBVertical}};
  for (int depth : {1, 8, 24}) {
    const std::string suffix = "/" + std::to_string(depth) + "bit";
    for (const Kernel& k : kernels)
      benchmark::RegisterBenchmark((k.name + suffix).c_str(),
                                   [=](benchmark::State& s) { kernel(s, depth, k.quarter, k.turn); });
    for (const Export& e : exports)
      benchmark::RegisterBenchmark((e.name + suffix).c_str(), [=](benchmark::State& s) { exported(s, depth, e.turn); });
  }
  return true;
}();

}  // namespace
