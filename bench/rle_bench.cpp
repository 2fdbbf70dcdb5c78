// Run-length compression of an A4 page at 300 dots per inch: as text, which is mostly runs, and as noise, which is all literals.
#include <string>

#include "dib/header.h"
#include "formats/rle.h"
#include "measure.h"

namespace {

using namespace vorel;

constexpr int kWidth = 2480, kHeight = 3508;

struct Page {
  int depth;
  std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(row_stride(static_cast<uint32_t>(depth), kWidth).value());
  std::vector<uint8_t> pixels = std::vector<uint8_t>(static_cast<size_t>(stride) * kHeight + kBytesBehindRow);

  DibView view() { return {pixels.data(), stride, kWidth, kHeight, depth}; }
  const uint8_t* last_row() const { return pixels.data() + stride * (kHeight - 1); }
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
  std::vector<uint8_t> codes(static_cast<size_t>(most_code_bytes(page.depth, kWidth, kHeight).value()));
  codes.resize(encode_rle(page.view(), page.last_row(), codes));
  return codes;
}

void encoding(benchmark::State& state, int depth, bool noise) {
  Page page = page_of(depth, noise);
  std::vector<uint8_t> codes(static_cast<size_t>(most_code_bytes(depth, kWidth, kHeight).value()));
  measure_kernel(state, page.pixels, [&] {
    benchmark::DoNotOptimize(encode_rle(page.view(), page.last_row(), codes));
    benchmark::ClobberMemory();
  });
}

void decoding(benchmark::State& state, int depth, bool noise) {
  Page page = page_of(depth, noise);
  const std::vector<uint8_t> codes = codes_of(page);
  Page result{.depth = depth};
  measure_kernel(state, page.pixels, [&] {
    decode_rle(codes, result.view());
    benchmark::DoNotOptimize(result.pixels.data());
    benchmark::ClobberMemory();
  });
}

HGLOBAL dib_of(const Page& page) {
  const DibHeader header{.width = kWidth, .height = kHeight, .depth = static_cast<uint16_t>(page.depth)};
  const auto begin = static_cast<size_t>(bits_offset(header).value());
  HGLOBAL dib = GlobalAlloc(GHND, begin + page.pixels.size());
  auto* bytes = static_cast<uint8_t*>(GlobalLock(dib));
  std::memcpy(bytes, &header, sizeof header);
  std::memcpy(bytes + begin, page.pixels.data(), page.pixels.size());
  GlobalUnlock(dib);
  return dib;
}

void exported(benchmark::State& state, int depth, bool noise, bool expands) {
  HGLOBAL dib = dib_of(page_of(depth, noise));
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
