// Turns and mirrors of an A4 page at 300 dots per inch.
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include <vorel32.h>

#include "kernels/turn/turn.h"
#include "measure.h"
#include "page.h"

namespace {

using namespace vorel;

void kernel(benchmark::State& state, int depth, bool quarter, void (*turn)(ConstDibView, DibView)) {
  const std::vector<uint8_t> page = page_pixels(depth);
  const int width = quarter ? kPageHeight : kPageWidth, height = quarter ? kPageWidth : kPageHeight;
  std::vector<uint8_t> turned(static_cast<size_t>(page_stride(depth, width) * height));
  const ConstDibView source(page.data(), page_stride(depth), kPageWidth, kPageHeight, depth);
  const DibView result(turned.data(), page_stride(depth, width), width, height, depth);
  measure_kernel(state, page, [&] {
    turn(source, result);
    benchmark::DoNotOptimize(turned.data());
    benchmark::ClobberMemory();
  });
}

void exported(benchmark::State& state, int depth, HGLOBAL(VORELCALL* turn)(HGLOBAL)) {
  HGLOBAL dib = page_dib(depth, page_pixels(depth));
  measure_export(state, dib, turn);
  GlobalFree(dib);
}

void clockwise(ConstDibView source, DibView result) {
  kernels::turn().quarter_turn(source, result,
                               {.first_column = 0, .column_step = 1, .first_row = source.width() - 1, .row_step = -1});
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
  const kernels::TurnTable& turn = kernels::turn();
  const Kernel all[] = {{"quarter_turn", true, clockwise},
                        {"half_turn", false, turn.half_turn},
                        {"mirror_left_right", false, turn.mirror_left_right},
                        {"mirror_top_bottom", false, turn.mirror_top_bottom}};
  const Export exports[] = {{"RotateDIB90", RotateDIB90},
                            {"RotateDIB180", RotateDIB180},
                            {"RotateDIB270", RotateDIB270},
                            {"FlipDIBHorizontal", FlipDIBHorizontal},
                            {"FlipDIBVertical", FlipDIBVertical}};
  for (int depth : {1, 8, 24}) {
    const std::string suffix = "/" + std::to_string(depth) + "bit";
    for (const Kernel& k : all)
      benchmark::RegisterBenchmark((k.name + suffix).c_str(),
                                   [=](benchmark::State& s) { kernel(s, depth, k.quarter, k.turn); });
    for (const Export& e : exports)
      benchmark::RegisterBenchmark((e.name + suffix).c_str(), [=](benchmark::State& s) { exported(s, depth, e.turn); });
  }
  return true;
}();

}  // namespace
