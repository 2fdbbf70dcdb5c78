#!/usr/bin/env bash
# Builds the library for Linux and for 32-bit Windows, takes pictures through both, compares what comes out byte for byte, and
# leaves the pictures and a contact sheet under out/. Works on a fresh Debian 12 machine; can be run again at any time.
# usage: demo.sh [PICTURE.bmp]   (default: sample pictures that it makes itself)
set -euo pipefail
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
if [ -n "$picture" ]; then
  say "taking $picture"
  cp "$picture" "out/pictures/$(basename "${picture%.*}").bmp"
else
  say "making sample pictures"
  build/native/bin/make_samples out/pictures
fi
build/native/bin/vorel info out/pictures/*.bmp

exec ./tools/run-wine.sh --session ./tools/demo-pictures.sh
