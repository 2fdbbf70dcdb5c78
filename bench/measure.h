// Times operations relative to a copy of the same bytes in the same run: the counter "copies". Kernels are compared with a copy
// between existing buffers; exports, which return a new block, with a copy into a new one.
#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <vorel32.h>

inline double seconds(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Times `work` as the benchmark and `copy` beside it, and reports their ratio. Returns the seconds that `work` takes.
double measure(benchmark::State& state, size_t bytes, auto&& work, auto&& copy) {
  double worked = 0, copied = 0;
  for (auto _ : state) worked += seconds(work);
  const auto rounds = std::max<int64_t>(state.iterations(), 10);
  for (int64_t i = 0; i < rounds; ++i) copied += seconds(copy);
  state.counters["copies"] = (worked / static_cast<double>(state.iterations())) / (copied / static_cast<double>(rounds));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
  return worked / static_cast<double>(state.iterations());
}

void measure_kernel(benchmark::State& state, const std::vector<uint8_t>& pixels, auto&& work) {
  std::vector<uint8_t> target(pixels.size());
  measure(state, pixels.size(), work, [&] {
    std::memcpy(target.data(), pixels.data(), pixels.size());
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  });
}

// Measures an export that makes a new DIB from another. `picture` is the block that is copied; null copies the source.
double measure_export(benchmark::State& state, HGLOBAL dib, auto&& work, HGLOBAL picture = nullptr) {
  HGLOBAL copied = picture == nullptr ? dib : picture;
  const void* bytes = GlobalLock(copied);
  const size_t size = GlobalSize(copied);
  const double worked = measure(
      state, size, [&] { GlobalFree(work(dib)); },
      [&] {
        void* copy = std::calloc(size, 1);
        std::memcpy(copy, bytes, size);
        benchmark::DoNotOptimize(copy);
        benchmark::ClobberMemory();
        std::free(copy);
      });
  GlobalUnlock(copied);
  return worked;
}
