#!/usr/bin/env bash
# Builds and runs the benchmarks.
# usage: bench.sh [BENCHMARK_OPTION...]          each operation beside copying the same bytes ("copies") and its plain version ("plain")
#        bench.sh --peers [OPTION...]            the library beside other libraries, where they are installed (bench/peers/setup.sh)
#        bench.sh --large [OPTION...]            the library with nine times as many pixels, beside the usual size
#        bench.sh --dll [OPTION...]              the Windows build under Wine beside the native one
#        bench.sh --commands [OPTION...]         whole commands beside other programs
#        bench.sh --note SECTION JSON_FILE...    writes the medians of such runs into docs/speed.md; SECTION is peers, large, dll or
#                                                commands
# The four comparisons print Markdown and keep their figures in build/bench/*.json; OPTION is one of bench/peers, for example
# --only rotate,conv --repeat 3. Run them on an idle machine.
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p build/bench

build() {
  local preset=$1
  shift
  { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@"; } >"build/$preset.log" 2>&1 || { tail -40 "build/$preset.log" >&2; exit 1; }
}

plain() {
  ./tools/setup.sh >&2
  build native benchmarks
  for program in build/native/bin/*_bench; do
    [ "$program" = build/native/bin/peers_bench ] || "$program" --benchmark_counters_tabular=true "$@"
  done
}

peers() {
  build native peers
  local bin=$PWD/build/native/bin participants=() peer python
  participants=(--participant "ours=$bin/peer_ours" --participant "memcpy=$bin/peer_copy")
  for peer in leptonica opencv libyuv freeimage; do
    [ ! -x "$bin/peer_$peer" ] || participants+=(--participant "$peer=$bin/peer_$peer")
  done
  for python in python3 /usr/bin/python3; do
    "$python" -c 'import PIL' 2>/dev/null && participants+=(--participant "pillow=$python $PWD/bench/peers/pillow.py") && break
  done
  "$bin/peers_bench" "${participants[@]}" --json build/bench/peers.json "$@"
}

large() {
  build native peers_bench peer_ours
  build/native/bin/peers_bench --large --participant "ours=$PWD/build/native/bin/peer_ours" --json build/bench/large.json "$@"
}

# Wine's own processes start before the measurement, so that they do not share its core.
dll() {
  build native peers
  build win32 peers
  ./tools/run-wine.sh --session bash -c 'wine cmd /c exit >&2; exec "$@"' - build/native/bin/peers_bench --json build/bench/dll.json \
    --participant "native=$PWD/build/native/bin/peer_ours" --participant "dll=wine $PWD/build/win32/bin/peer_ours.exe 2>/dev/null" \
    --participant "kept=wine $PWD/build/win32/bin/peer_kept.exe 2>/dev/null" "$@"
}

# note SECTION: standard input replaces what is between the section's marks.
note() {
  local text
  text=$(mktemp)
  cat >"$text"
  awk -v section="$1" -v text="$text" '
    $0 == "<!-- end " section " -->" { inside = 0 }
    !inside { print }
    $0 == "<!-- " section " -->" { inside = 1; print ""; while ((getline line < text) > 0) print line; print "" }' docs/speed.md >"$text.md"
  mv "$text.md" docs/speed.md
  rm -f "$text"
}

case "${1:-}" in
  --peers) shift; peers "$@" ;;
  --large) shift; large "$@" ;;
  --dll) shift; dll "$@" ;;
  --commands)
    shift
    build native vorel codec_modules peers_commands
    bench/commands/run.sh "$@"
    ;;
  --note)
    section=$2
    shift 2
    build native peers_bench peers_commands
    program=build/native/bin/peers_bench
    [ "$section" != commands ] || program=build/native/bin/peers_commands
    tables=()
    [ "$section" != large ] || tables=(--large)
    for file in "$@"; do tables+=(--table "$file"); done
    "$program" "${tables[@]}" | note "$section"
    ;;
  *) plain "$@" ;;
esac
