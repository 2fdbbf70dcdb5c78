#!/usr/bin/env bash
# Builds the library for Linux and for 32-bit Windows and takes pictures the whole way from file to paper: loaded, processed by both
# builds and compared byte for byte, shown in the viewer, printed, and the print made pictures again. Leaves the stages and
# contact sheets under out/. Works on a fresh Debian 12 machine; can be run again at any time, and then takes under a minute.
# usage: demo.sh [--all] [PICTURE.bmp]
#   --all        every verb of the tool and every format besides, through both builds (some minutes)
#   PICTURE.bmp  what --all is done to, in place of the sample pictures
set -euo pipefail
every_verb=no
if [ "${1:-}" = --all ]; then every_verb=yes; shift; fi
[ $# = 0 ] || every_verb=yes
picture=${1:+$(realpath "$1")}
cd "$(dirname "$0")"

say() { printf '\n== %s\n' "$*"; }
fail() { printf 'demo: %s\n' "$*" >&2; exit 1; }

[ -z "$picture" ] || [ -f "$picture" ] || fail "$picture is no file; give a Windows bitmap file, or nothing for the samples"

./tools/setup.sh
mkdir -p build out
for preset in native win32; do
  say "building for $preset (log: build/$preset.log)"
  { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"build/$preset.log" 2>&1 ||
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
