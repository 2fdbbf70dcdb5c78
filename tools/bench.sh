#!/usr/bin/env bash
# Builds and runs the benchmarks. The column "copies" says how many copies of the same bytes an operation takes, measured in
# the same run; compare these between machines, not the times.
# usage: bench.sh [BENCHMARK_OPTION...]   for example --benchmark_filter=1bit
set -euo pipefail
cd "$(dirname "$0")/.."
./tools/setup.sh >&2
mkdir -p build
{ cmake --preset native && cmake --build --preset native; } >build/native.log 2>&1 || { tail -40 build/native.log; exit 1; }
for program in build/native/bin/*_bench; do "$program" --benchmark_counters_tabular=true "$@"; done
