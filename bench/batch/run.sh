#!/usr/bin/env bash
# Pages per second of "vorel batch" beside other programs under GNU parallel, where they are installed: 1-bit A4 pages at 300 dots per
# inch in Group 4 TIFF files, each loaded, changed and saved. Also the memory that the tool and its workers take at most in the first
# and in the last quarter of the run.
# usage: run.sh [PAGES]   with the programs of "tools/bench.sh --commands" built; 2000 pages by default
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=$PWD/build/native/bin
pages=${1:-2000}
work=$(mktemp -d -p "$PWD/build")
trap 'rm -rf "$work"' EXIT
magick=$(command -v magick || command -v convert || true)

mkdir "$work/made" "$work/in"
for i in 1 2 3 4; do
  text=$(seq -s ' ' $((i * 1000)) $((i * 1000 + 600)) | fold -s -w 75)
  convert -size 2480x3508 xc:white -font DejaVu-Serif -pointsize 42 -fill black -annotate +250+350 "$text" -threshold 50% \
    -units PixelsPerInch -density 300 -compress Group4 "$work/made/$i.tif"
done
for i in $(seq "$pages"); do ln "$work/made/$((i % 4 + 1)).tif" "$work/in/page-$i.tif"; done

# Kilobytes of the tool and its workers, every tenth of a second until it ends.
watch_memory() {
  while kill -0 "$1" 2>/dev/null; do
    awk '/^Rss/ { sum += $2 } END { print sum }' /proc/"$1"/smaps_rollup $(pgrep -P "$1" | sed 's|.*|/proc/&/smaps_rollup|') 2>/dev/null || true
    sleep 0.1
  done
}
row() { printf '%-14s %-12s %6s %14s  %s\n' "$@"; }

# timed WORK PROGRAM JOBS COMMAND...
timed() {
  rm -rf "$work/out"; mkdir "$work/out"
  local start end memory=
  start=$(date +%s.%N)
  "${@:4}" >/dev/null 2>"$work/errors" &
  local run=$!
  [ "$2" != vorel ] || watch_memory $run >"$work/memory"
  wait $run || { cat "$work/errors"; exit 1; }
  end=$(date +%s.%N)
  [ "$(find "$work/out" -name 'page-*' | wc -l)" = "$pages" ] || { echo "$2: not all pages are there"; exit 1; }
  [ "$2" != vorel ] || memory=$(awk '{ at[NR] = $1 } END { for (i = 1; i <= NR; ++i) { if (i <= NR / 4 && at[i] > a) a = at[i]; if (i > NR * 3 / 4 && at[i] > b) b = at[i] }
    printf "%d then %d KB", a, b }' "$work/memory")
  row "$1" "$2" "$3" "$(awk -v n="$pages" -v s="$start" -v e="$end" 'BEGIN { printf "%.1f", n / (e - s) }')" "$memory"
}

parallel_over() { find "$work/in" -name '*.tif' | parallel --will-cite -j "$1" "$2"; }

row work program jobs "pages/second" "memory at most"
for jobs in 1 2; do
  for verb in rotate clean; do
    [ $verb = rotate ] && { steps='rotate 90'; magick_steps='-rotate 90'; } || { steps='clean 60'; magick_steps='-median 1'; }
    timed "$verb" vorel $jobs "$bin/vorel" batch "$steps" "$work/in" --out "$work/out" --jobs $jobs
    [ -z "$magick" ] || timed "$verb" magick $jobs parallel_over $jobs "$magick {} $magick_steps -compress Group4 $work/out/{/}"
    ! command -v gm >/dev/null || timed "$verb" gm $jobs parallel_over $jobs "gm convert {} $magick_steps -compress Group4 $work/out/{/}"
    [ ! -x "$bin/leptonica_command" ] || timed "$verb" leptonica $jobs parallel_over $jobs "$bin/leptonica_command $verb {} $work/out/{/}"
  done
done
