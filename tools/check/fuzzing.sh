#!/usr/bin/env bash
# Goal "fuzzing": the fuzz targets, with the address and undefined-behaviour sanitizers, in 64 and 32 bits. 0 findings; an input above
# 2 seconds of processor time or 512 MiB is one.
# usage: fuzzing.sh quick|release [SECONDS]
# Quick: SECONDS for each target and width (default: 3, which is about one and a half minutes in all). Release: 25 million executions of each
# target of the library in each width, 2 million of each codec's.
# environment:
#   VOREL_CHECK_PART                        cuts release to one Nth
#   VOREL_FUZZ_RUNS, VOREL_FUZZ_CODEC_RUNS  other counts for release
set -euo pipefail
cd "$(dirname "$0")/../.."
mode=${1:-quick}
if [ "$mode" = release ]; then
  part=${VOREL_CHECK_PART:-1}
  runs=${VOREL_FUZZ_RUNS:-$((25000000 / part))} codec_runs=${VOREL_FUZZ_CODEC_RUNS:-$((2000000 / part))}
  options=(--runs "$runs" --codec-runs "$codec_runs")
  asked="$runs runs of each target, $codec_runs of codecs"
else
  seconds=${2:-3}
  options=(--seconds "$seconds")
  asked="$seconds s for each target"
fi
outcome=0
./tools/fuzz.sh --width both "${options[@]}" || outcome=1

results=(build/fuzz/results/*)
sum() { cat "${results[@]}" | sed -n "s/.*$1=\([0-9]*\).*/\1/p" | awk '{ sum += $1 } END { printf "%d", sum }'; }
least() { cat "${results[@]}" | sed -n 's/.*runs=\([0-9]*\).*/\1/p' | sort -n | head -n 1; }
printf 'asked: %s in 64 and 32 bits, 0 findings | reached: %d targets in 64 bits, %d in 32 (without third-party codecs), %d runs, the least %d; %d findings\n' \
  "$asked" "$(grep -l ' 64 ' "${results[@]}" | wc -l)" "$(grep -l ' 32 ' "${results[@]}" | wc -l)" "$(sum runs)" "$(least)" "$(sum findings)"
[ "$(sum findings)" = 0 ] || outcome=1
exit "$outcome"
