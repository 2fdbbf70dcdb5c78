#!/usr/bin/env bash
# Builds everything and runs all tests: native, native under the sanitizers, and the Windows builds under Wine.
# Works on a fresh Debian 12 machine. Runs again at any time, and then rebuilds only what has changed.
# usage: test.sh [native|asan|win32|win64]...   (default: all four)
set -euo pipefail
cd "$(dirname "$0")"

say() { printf '\n== %s\n' "$*"; }

./tools/setup.sh
mkdir -p build
presets=("$@")
[ $# -gt 0 ] || presets=(native asan win32 win64)
declare -A seconds closing
failed=()

# The native build runs the tests of what kernels do at the lowest instruction set, too.
run_tests() {
  case $1 in
    native) ctest --preset native && VOREL_CPU_LEVEL=sse2 ctest --preset native -R '^(bilevel|dib|formats|geometry|tone)_test$' ;;
    win32) ./tools/run-wine.sh --session ctest --preset win32 ;;
    win64) ./tools/run-wine.sh --session64 ctest --preset win64 ;;
    *) ctest --preset "$1" ;;
  esac
}

for preset in "${presets[@]}"; do
  SECONDS=0
  say "$preset: building (log: build/$preset.log)"
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"build/$preset.log" 2>&1; then
    tail -40 "build/$preset.log"
    say "$preset does not build"
    exit 1
  fi
  say "$preset: testing"
  run_tests "$preset" 2>&1 | tee "build/$preset-tests.log" || failed+=("$preset")
  closing[$preset]=$(grep -E 'tests passed' "build/$preset-tests.log" | paste -sd ' ' | grep . || echo 'no test ran')
  seconds[$preset]=$SECONDS
done

say "summary (whole output: build/*-tests.log)"
for preset in "${presets[@]}"; do printf '%-7s %s (%d s)\n' "$preset" "${closing[$preset]}" "${seconds[$preset]}"; done
[ "${#failed[@]}" = 0 ] || { printf 'failed: %s\n' "${failed[*]}"; exit 1; }
