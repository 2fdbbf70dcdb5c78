// Run-length compression of an A4 page at 300 dots per inch: as text, which is mostly runs, and as noise, which is all literals.
#include <string>

#include "kernels/rle/rle.h"
#include "measure.h"
#include "page.h"

namespace {

using namespace vorel;

struct Page {
  int depth;
  std::ptrdiff_t stride = page_stride(depth);
  std::vector<uint8_t> pixels = std::vector<uint8_t>(static_cast<size_t>(stride) * kPageHeight + kernels::kBytesBehindRow);

  DibView view() { return {pixels.data(), stride, kPageWidth, kPageHeight, depth}; }
  const uint8_t* last_row() const { return pixels.data() + stride * (kPageHeight - 1); }
};

// Strokes of ink on paper some 40 bytes apart, or bytes without a pattern.
Page page_of(int depth, bool noise) {
  Page page{.depth = depth};
  uint32_t state = 1;
  int stroke = 0;
  for (uint8_t& byte : page.pixels) {
    state = state * 1'664'525 + 1'013'904'223;
    if (state >> 24 < 6) stroke = 6;
    byte = noise ? static_cast<uint8_t>(state >> 16) : stroke-- > 0 ? 0x11 : 0xFF;
  }
  return page;
}

std::vector<uint8_t> codes_of(Page& page) {
  std::vector<uint8_t> codes(static_cast<size_t>(kernels::most_code_bytes(page.depth, kPageWidth, kPageHeight).value()));
  codes.resize(kernels::rle().encode(page.view(), page.last_row(), codes));
  return codes;
}

void encoding(benchmark::State& state, int depth, bool noise) {
  Page page = page_of(depth, noise);
  std::vector<uint8_t> codes(static_cast<size_t>(kernels::most_code_bytes(depth, kPageWidth, kPageHeight).value()));
  measure_kernel(state, page.pixels, [&] {
    benchmark::DoNotOptimize(kernels::rle().encode(page.view(), page.last_row(), codes));
    benchmark::ClobberMemory();
  });
}

void decoding(benchmark::State& state, int depth, bool noise) {
  Page page = page_of(depth, noise);
  const std::vector<uint8_t> codes = codes_of(page);
  Page result{.depth = depth};
  measure_kernel(state, page.pixels, [&] {
    kernels::rle().decode(codes, result.view());
    benchmark::DoNotOptimize(result.pixels.data());
    benchmark::ClobberMemory();
  });
}

void exported(benchmark::State& state, int depth, bool noise, bool expands) {
  HGLOBAL dib = page_dib(depth, page_of(depth, noise).pixels);
  HGLOBAL codes = CompressDIB(dib);
  measure_export(state, expands ? codes : dib, expands ? ExpandCompressedDIB : CompressDIB, dib);
  GlobalFree(codes);
  GlobalFree(dib);
}

const bool registered = [] {
  for (int depth : {4, 8})
    for (bool noise : {false, true}) {
      const std::string suffix = std::string(noise ? "/noise/" : "/text/") + std::to_string(depth) + "bit";
      const auto add = [&](const char* name, auto run) { benchmark::RegisterBenchmark((name + suffix).c_str(), run); };
      add("encode_rle", [=](benchmark::State& s) { encoding(s, depth, noise); });
      add("decode_rle", [=](benchmark::State& s) { decoding(s, depth, noise); });
      add("CompressDIB", [=](benchmark::State& s) { exported(s, depth, noise, false); });
      add("ExpandCompressedDIB", [=](benchmark::State& s) { exported(s, depth, noise, true); });
    }
  return true;
}();

}  // namespace
