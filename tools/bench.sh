#!/usr/bin/env bash
# Builds and runs the benchmarks. The column "copies" is an operation's time divided by the time of copying the same bytes, measured
# in the same run. Compare this column between machines, not the times.
# usage: bench.sh [BENCHMARK_OPTION...]   for example --benchmark_filter=1bit
set -euo pipefail
cd "$(dirname "$0")/.."
./tools/setup.sh >&2
mkdir -p build
{ cmake --preset native && cmake --build --preset native --target benchmarks; } >build/native.log 2>&1 || { tail -40 build/native.log; exit 1; }
for program in build/native/bin/*_bench; do "$program" --benchmark_counters_tabular=true "$@"; done
