#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a while, from the seeds in fuzz/corpus. New inputs are kept in
# build/fuzz/corpus, inputs that make a target fail in build/fuzz/findings.
# usage: fuzz.sh [SECONDS] [TARGET...]   (default: 60 seconds, all targets)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
./tools/setup.sh
mkdir -p build/fuzz/findings
{ cmake --preset fuzz && cmake --build --preset fuzz; } >build/fuzz.log 2>&1 || { tail -40 build/fuzz.log; exit 1; }

targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(basename -s _fuzz.cpp fuzz/*_fuzz.cpp)
failed=()
for target in "${targets[@]}"; do
  printf '\n== %s, %s seconds\n' "$target" "$seconds"
  mkdir -p "build/fuzz/corpus/$target"
  "build/fuzz/bin/${target}_fuzz" -max_total_time="$seconds" -timeout=20 -malloc_limit_mb=4096 -rss_limit_mb=4096 \
    -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-" \
    "build/fuzz/corpus/$target" "fuzz/corpus/$target" >"build/fuzz/$target.log" 2>&1 || failed+=("$target")
  grep -E 'stat::number_of_executed_units|DONE|ERROR|SUMMARY' "build/fuzz/$target.log" || true
done
[ "${#failed[@]}" = 0 ] || { printf 'findings in: %s (build/fuzz/TARGET.log)\n' "${failed[*]}"; exit 1; }
