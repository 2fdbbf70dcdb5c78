// Exports beside plain versions that process one pixel at a time. The counter "plain" is the plain version's time divided by the
// export's.
#pragma once

#include <functional>
#include <string>

#include <vorel32.h>

#include "measure.h"
#include "page.h"
#include "support/dib.h"

struct Operation {
  std::function<HGLOBAL(HGLOBAL)> work;
  std::function<test::Bytes(const test::Bytes&)> plain;
};

// "copies" counts copies of the source or the result, whichever is larger. The plain version takes seconds: it is timed once,
// however often the benchmark is called to find its number of iterations.
inline void run_beside_plain(benchmark::State& state, int depth, bool is_colored, const Operation& operation,
                             double& plain_seconds) {
  const test::Block source(page_dib(depth, page_pixels(depth), is_colored)), result(operation.work(source.get()));
  const bool grows = GlobalSize(result.get()) > GlobalSize(source.get());
  const double worked = measure_export(state, source.get(), operation.work, grows ? result.get() : source.get());
  if (plain_seconds == 0) {
    const test::Bytes dib = test::bytes_of(source.get());
    plain_seconds = seconds([&] { benchmark::DoNotOptimize(operation.plain(dib).data()); });
  }
  state.counters["plain"] = plain_seconds / worked;
}

inline void add_beside_plain(const std::string& name, int depth, const Operation& operation, bool is_colored = false) {
  const std::string full = name + "/" + std::to_string(depth) + "bit" + (depth == 8 && is_colored ? "_colors" : "");
  benchmark::RegisterBenchmark(full.c_str(), [=, plain_seconds = 0.0](benchmark::State& state) mutable {
    run_beside_plain(state, depth, is_colored, operation, plain_seconds);
  });
}
