// Turning by any angle, skewing and scaling an A4 page at 300 dots per inch. "copies" counts copies of the source or the result,
// whichever is larger; "plain" says how many times as long the same takes one pixel at a time.
#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <vector>

#include <vorel32.h>

#include "measure.h"
#include "page.h"
#include "support/plain_geometry.h"

namespace {

using test::Block;
using test::Bytes;

struct Operation {
  std::function<HGLOBAL(HGLOBAL)> work;
  std::function<Bytes(const Bytes&)> plain;
};

// The plain version takes seconds: it is timed once, however often the benchmark is called to find its number of rounds.
void run(benchmark::State& state, int depth, bool is_colored, const Operation& operation, double& plain_seconds) {
  const Block source(page_dib(depth, page_pixels(depth), is_colored)), result(operation.work(source.get()));
  const bool grows = GlobalSize(result.get()) > GlobalSize(source.get());
  const double worked = measure_export(state, source.get(), operation.work, grows ? result.get() : source.get());
  if (plain_seconds == 0) {
    const Bytes dib = test::bytes_of(source.get());
    plain_seconds = seconds([&] { benchmark::DoNotOptimize(operation.plain(dib).data()); });
  }
  state.counters["plain"] = plain_seconds / worked;
}

void add(const std::string& name, int depth, const Operation& operation, bool is_colored = false) {
  const std::string full = name + "/" + std::to_string(depth) + "bit" + (depth == 8 && is_colored ? "_colors" : "");
  benchmark::RegisterBenchmark(full.c_str(), [=, plain_seconds = 0.0](benchmark::State& state) mutable {
    run(state, depth, is_colored, operation, plain_seconds);
  });
}

Operation rotation(int method) {
  return {[=](HGLOBAL dib) {
            int status = 0;
            return RotateDIB(dib, 17, method, &status, nullptr);
          },
          [=](const Bytes& dib) { return test::plain_rotation(dib, 17, method); }};
}

Operation skew(bool rows) {
  constexpr int kOffset = 400;
  return {[=](HGLOBAL dib) { return SkewDIB(dib, rows, kOffset, nullptr, nullptr); },
          [=](const Bytes& dib) { return test::plain_skew(dib, rows, kOffset); }};
}

Operation scaling(int depth, bool cubic, int percent) {
  const int width = kPageWidth * percent / 100, height = kPageHeight * percent / 100;
  return {[=](HGLOBAL dib) { return ScaleDIB(dib, cubic, static_cast<unsigned>(width), static_cast<unsigned>(height)); },
          [=](const Bytes& dib) {
            return depth == 1 ? test::plain_nearest(dib, 0, 0, kPageWidth, kPageHeight, width, height)
                              : test::plain_scaling(dib, cubic, width, height);
          }};
}

const bool registered = [] {
  for (int depth : {1, 8, 24}) {
    add("RotateDIB_exact", depth, rotation(0));
    add("RotateDIB_integer", depth, rotation(1));
    add("SkewDIB_rows", depth, skew(true));
    add("SkewDIB_columns", depth, skew(false));
  }
  for (int percent : {50, 75, 200})
    for (bool cubic : {false, true}) {
      const std::string name = (cubic ? "ScaleDIB_cubic_" : "ScaleDIB_linear_") + std::to_string(percent);
      add(name, 8, scaling(8, cubic, percent));
      add(name, 8, scaling(8, cubic, percent), true);
      add(name, 24, scaling(24, cubic, percent));
    }
  add("ScaleDIB_nearest_50", 1, scaling(1, false, 50));
  return true;
}();

}  // namespace
