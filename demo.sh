#!/usr/bin/env bash
# Builds the library for Linux and for 32-bit Windows and takes pictures from file to paper: loads them, processes them with both
# builds and compares the results byte for byte, shows them in the viewer, prints them, and rasterises the printed pages. Leaves
# each stage and contact sheets under out/. Works on a fresh Debian 12 machine. Runs again at any time, then in under a minute.
# usage: demo.sh [--all] [PICTURE.bmp]
#   --all        also every verb of the tool and every format, through both builds (some minutes)
#   PICTURE.bmp  run --all on this picture instead of the samples
set -euo pipefail
every_verb=no
if [ "${1:-}" = --all ]; then every_verb=yes; shift; fi
[ $# = 0 ] || every_verb=yes
picture=${1:+$(realpath "$1")}
cd "$(dirname "$0")"

say() { printf '\n== %s\n' "$*"; }
fail() { printf 'demo: %s\n' "$*" >&2; exit 1; }

[ -z "$picture" ] || [ -f "$picture" ] || fail "there is no file $picture; give a Windows bitmap file, or nothing for the samples"

./tools/setup.sh
mkdir -p build out
for preset in native win32; do
  say "building for $preset (log: build/$preset.log)"
  { cmake --preset "$preset" && cmake --build --preset "$preset" --target demo; } >"build/$preset.log" 2>&1 ||
    { tail -40 "build/$preset.log"; fail "$preset does not build"; }
done

rm -rf out/pictures out/linux out/windows out/sheet
mkdir -p out/pictures out/linux out/windows out/sheet
say "making sample pictures"
build/native/bin/make_samples out/pictures
./tools/run-wine.sh --session ./tools/demo-way.sh
[ $every_verb = yes ] || exit 0

if [ -n "$picture" ]; then
  say "taking $picture"
  rm -f out/pictures/*
  cp "$picture" "out/pictures/$(basename "${picture%.*}").bmp"
fi
build/native/bin/vorel info out/pictures/*.bmp
exec ./tools/run-wine.sh --session ./tools/demo-pictures.sh
