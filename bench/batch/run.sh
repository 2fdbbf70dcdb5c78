#!/usr/bin/env bash
# Pages per second of "vorel batch" beside other programs under GNU parallel, where installed: 1-bit A4 pages at 300 dots per
# inch in Group 4 TIFF files, each loaded, changed and saved. Prints rows of Markdown: pages per second and, in brackets, milliseconds of
# processor time per page, all processes included; the ratio to the best other program in elapsed and in processor time; and the
# peak memory of the tool with its workers in the first and in the last quarter of the run.
# usage: run.sh [PAGES [WORK...]]   with the programs of "tools/bench.sh --commands" built; 2000 pages and all works by default:
#   rotate   a quarter turn
#   clean    single black pixels removed
#   chain    pages with a slant: deskewed, connected specks removed, scaled to half
# Slower programs get fewer pages.
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=$PWD/build/native/bin
pages=${1:-2000}
works=("${@:2}")
[ "${#works[@]}" -gt 0 ] || works=(rotate clean chain)
work=$(mktemp -d -p "$PWD/build")
trap 'rm -rf "$work"' EXIT
magick=$(command -v magick || command -v convert || true)

# Four pages of text, straight and slanted, kept for later runs.
made=$PWD/build/bench/batch
make_pages() {
  local slants=(1.3 -0.8 2.1 -3.4) g4=(-threshold 50% -units PixelsPerInch -density 300 -compress Group4) i text
  mkdir -p "$made"
  for i in 0 1 2 3; do
    text=$(seq -s ' ' $((i * 1000 + 1000)) $((i * 1000 + 1600)) | fold -s -w 75)
    "$magick" -size 2480x3508 xc:white -font DejaVu-Serif -pointsize 42 -fill black -annotate +250+350 "$text" "$made/page.pgm"
    "$magick" "$made/page.pgm" "${g4[@]}" "$made/straight-$i.tif"
    "$magick" "$made/page.pgm" -virtual-pixel white -distort SRT "${slants[$i]}" "${g4[@]}" "$made/slanted-$i.tif"
  done
}
[ -e "$made/slanted-3.tif" ] || make_pages
for set in straight slanted; do
  mkdir "$work/$set"
  for i in $(seq "$pages"); do ln "$made/$set-$((i % 4)).tif" "$work/$set/page-$i.tif"; done
done

# Prints the memory of the tool and its workers in kilobytes, every tenth of a second until it ends.
watch_memory() {
  local tool
  until tool=$(pgrep -P "$1" -x vorel); do kill -0 "$1" 2>/dev/null || return 0; done
  while kill -0 "$1" 2>/dev/null; do
    awk '/^Rss/ { sum += $2 } END { print sum }' /proc/"$tool"/smaps_rollup $(pgrep -P "$tool" | sed 's|.*|/proc/&/smaps_rollup|') 2>/dev/null || true
    sleep 0.1
  done
}
megabytes() {
  awk '{ at[NR] = $1 } END { for (i = 1; i <= NR; ++i) { if (i <= NR / 4 && at[i] > a) a = at[i]; if (i > NR * 3 / 4 && at[i] > b) b = at[i] }
    printf "%.1f, %.1f MB", a / 1024, b / 1024 }' "$work/memory"
}

# rate COUNT COMMAND...: "pages per second (milliseconds per page)" of a command that makes COUNT pages.
rate() {
  rm -rf "$work/out"; mkdir "$work/out"
  (TIMEFORMAT='%R %U %S'; time "${@:2}" >/dev/null 2>"$work/errors") 2>"$work/time" &
  local run=$!
  [ "$2" != "$bin/vorel" ] || watch_memory $run >"$work/memory"
  wait $run || { cat "$work/errors" >&2; exit 1; }
  [ "$(find "$work/out" -name 'page-*' | wc -l)" = "$1" ] || { echo "not all pages are there" >&2; exit 1; }
  awk -v n="$1" '{ printf "%.1f (%.1f)", n / $1, ($2 + $3) * 1000 / n }' "$work/time"
}

# in_parallel JOBS COUNT COMMAND: the command for each of the first pages, with {} and {/} as GNU parallel has them.
in_parallel() { find "$work/$set" -name '*.tif' | sed -n "1,$2p" | parallel --will-cite -j "$1" "$3"; }

# peer PROGRAM JOBS COUNT COMMAND: the rate of another program, or a dash.
peer() {
  local count=$(($3 < pages ? $3 : pages))
  if [ "$4" = - ] || ! command -v "$1" >/dev/null; then printf -- '-'; else rate "$count" in_parallel "$2" "$count" "$4"; fi
}

echo "| work | jobs | vorel | Leptonica | GraphicsMagick | ImageMagick | times the best | memory at first, at last |"
echo "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
for name in "${works[@]}"; do
  set=straight gm_command=- lept_count=240
  case $name in
    rotate) steps='rotate 90' magick_steps='-rotate 90' magick_count=24 gm_count=40 ;;
    clean) steps='clean 60' magick_steps='-median 1' magick_count=6 gm_count=8 ;;
    chain) steps='deskew | despeckle | scale 50%' magick_steps='-deskew 40% +repage -median 1 -sample 50%' magick_count=4 set=slanted ;;
    *) echo "run.sh: there is no work \"$name\"" >&2; exit 2 ;;
  esac
  [ "$name" = chain ] || gm_command="gm convert {} $magick_steps -compress Group4 $work/out/{/}"  # it cannot deskew
  for jobs in 1 2; do
    ours=$(rate "$pages" "$bin/vorel" batch "$steps" "$work/$set" --out "$work/out" --jobs $jobs)
    memory=$(megabytes)
    leptonica=$(peer "$bin/leptonica_command" $jobs $lept_count "$bin/leptonica_command $name {} $work/out/{/}")
    gm=$(peer gm $jobs ${gm_count:-0} "$gm_command")
    im=$(peer "$magick" $jobs $magick_count "$magick {} $magick_steps -compress Group4 $work/out/{/}")
    times=$(printf '%s\n' "$ours" "$leptonica" "$gm" "$im" | tr -d '()' | awk 'NR == 1 { rate = $1; time = $2; next }
      $1 + 0 > best { best = $1 } $2 + 0 > 0 && (least == 0 || $2 < least) { least = $2 } END { printf "%.2f (%.2f)", rate / best, least / time }')
    echo "| $name | $jobs | $ours | $leptonica | $gm | $im | $times | $memory |"
  done
done
