#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a while, from the seeds in fuzz/corpus. New inputs are kept in build/fuzz/corpus, inputs
# that make a target fail, take more than 2 seconds of processor time or need more than 512 MiB in build/fuzz/findings.
# usage: fuzz.sh [OPTION...] [TARGET...]   (default: all targets)
#   --seconds N      for each target and width (default: 60)
#   --runs N         executions of each target instead of a time
#   --codec-runs N   the same for the targets of codec modules
#   --width W        64, 32 or both (default: 64); 32 bits has the targets without third-party libraries
#   --jobs N         targets at a time (default: one for each processor)
#   --no-build       runs what is built
set -euo pipefail
cd "$(dirname "$0")/.."

own=(bitmap rle detection fax_set clipboard metafile text kernel page_layout turns rotate_skew scale cut tone bilevel)
own_codecs=(pcx dcx tga)
codecs=(tiff cals gif jpeg png save_load)

seconds=60 runs='' codec_runs='' width=64 jobs=$(nproc) builds=1
targets=()
while [ $# -gt 0 ]; do
  case $1 in
    --seconds) seconds=$2; shift ;;
    --runs) runs=$2; shift ;;
    --codec-runs) codec_runs=$2; shift ;;
    --width) width=$2; shift ;;
    --jobs) jobs=$2; shift ;;
    --no-build) builds=0 ;;
    -*) sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"; exit 2 ;;
    *) targets+=("$1") ;;
  esac
  shift
done
case $width in both) widths=(64 32) ;; *) widths=("$width") ;; esac

for target in "${targets[@]}"; do
  [[ " ${own[*]} ${own_codecs[*]} ${codecs[*]} " == *" $target "* ]] || { printf 'fuzz: no target %s\n' "$target" >&2; exit 2; }
done

contains() { local word=$1; shift; [[ " $* " == *" $word "* ]]; }
preset_of() { [ "$1" = 32 ] && echo fuzz32 || echo fuzz; }

rm -rf build/fuzz/results
mkdir -p build/fuzz/{findings,results}
if [ "$builds" = 1 ]; then
  if [ "$width" = 64 ]; then ./tools/setup.sh; else ./tools/setup.sh --checks; fi
  for width in "${widths[@]}"; do
    preset=$(preset_of "$width")
    { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"build/$preset.log" 2>&1 || { tail -40 "build/$preset.log"; exit 1; }
  done
fi
export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=16 UBSAN_OPTIONS=print_stacktrace=1
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm  # some targets write their input to a file

# Processor time of a target for a file, in milliseconds. The search for leaks would run the input twice.
processor_time() {
  local TIMEFORMAT='%U %S' times
  times=$( { time "$1" -detect_leaks=0 -rss_limit_mb=512 "$2" >/dev/null 2>&1; } 2>&1)
  awk '{ print int(($1 + $2) * 1000) }' <<<"$times"
}

# Writes "TARGET WIDTH runs=N findings=N" and why there are findings. Inputs that fail are run again by the next run, until they pass.
run_target() {
  local target=$1 width=$2 limit program log name status=0 findings=0 note='' file count
  program=build/$(preset_of "$width")/bin/${target}_fuzz name=$target-$width
  log=build/fuzz/$name.log
  printf '%s %s runs=0 findings=1 the run did not end\n' "$target" "$width" >"build/fuzz/results/$name"
  limit="-max_total_time=$seconds"
  if [ -n "$runs" ]; then limit="-runs=$runs"; fi
  if [ -n "$codec_runs" ] && contains "$target" "${codecs[@]}" "${own_codecs[@]}"; then limit="-runs=$codec_runs"; fi
  mkdir -p "build/fuzz/corpus/$target" "fuzz/corpus/$target"
  rm -f build/fuzz/findings/"$name"-*
  "$program" "$limit" -timeout=60 -rss_limit_mb=512 -report_slow_units=2 -max_len=4096 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/findings/$name-" "build/fuzz/corpus/$target" "fuzz/corpus/$target" >"$log" 2>&1 || status=$?
  # A busy machine makes inputs look slow.
  for file in build/fuzz/findings/"$name"-slow-unit-*; do
    [ -e "$file" ] || continue
    if [ "$(processor_time "$program" "$file")" -gt 2000 ]; then
      findings=$((findings + 1)) note+=" slow:$file"
    else
      rm "$file"
    fi
  done
  if [ "$status" != 0 ]; then
    findings=$((findings + 1)) note+=" $(grep -m1 -E 'does not hold|runtime error|ERROR: (Address|lib|Leak)' "$log" || echo "exit $status")"
  fi
  for file in build/fuzz/findings/"$name"-*; do
    [ ! -e "$file" ] || cp "$file" "build/fuzz/corpus/$target/"
  done
  count=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  if [ "$status" = 0 ] && [ "${count:-0}" -lt "$(sed -n 's/^-runs=//p' <<<"$limit" | grep . || echo 1)" ]; then
    findings=$((findings + 1)) note+=' fewer runs than asked'
  fi
  printf '%s %s runs=%s findings=%s%s\n' "$target" "$width" "${count:-0}" "$findings" "$note" | tee "build/fuzz/results/$name"
}

for width in "${widths[@]}"; do
  chosen=("${own[@]}" "${own_codecs[@]}")
  [ "$width" = 32 ] || chosen+=("${codecs[@]}")
  for target in "${chosen[@]}"; do
    [ "${#targets[@]}" = 0 ] || contains "$target" "${targets[@]}" || continue
    run_target "$target" "$width" &
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n; done
  done
done
wait
failed=$(sed -n '/findings=0/!s/^\([^ ]*\) \([0-9]*\) .*/\1-\2/p' build/fuzz/results/* | paste -sd ' ')
[ -z "$failed" ] || { printf 'findings in: %s (build/fuzz/TARGET-WIDTH.log)\n' "$failed"; exit 1; }
