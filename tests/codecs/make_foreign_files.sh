#!/usr/bin/env bash
# Makes picture files with other programs, each with a bitmap beside it that shows how that program reads it. For each page to
# compare, a file NAME has a 24-bit bitmap called NAME.pageN.depthD.bmp, where D is the depth that loading the page must give.
# The files are kept in a cache that all builds and checkouts share, until one of these scripts changes. FOLDER becomes a link to
# them. Prints the names of the files.
# usage: make_foreign_files.sh FOLDER
# environment:
#   XDG_CACHE_HOME  where the cache is kept (default: ~/.cache)
set -euo pipefail
folder=$(realpath -ms "$1") sources=$(cd "$(dirname "$0")" && pwd)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vorel32
made=$cache/foreign-$(cat "$sources"/*.sh | cksum | cut -d ' ' -f 1)

finish() {
  rm -rf "$folder"
  ln -sT "$made" "$folder"
  ls "$made"
  exit 0
}

mkdir -p "$cache"
exec 9>"$cache/foreign.lock"  # one run at a time; the others find the files
flock 9
[ ! -e "$made" ] || finish
unfinished=$cache/foreign-unfinished
rm -rf "$unfinished"
mkdir "$unfinished"
cd "$unfinished"

fail() { printf 'make_foreign_files: %s\n' "$*" >&2; exit 1; }

for program in convert tiffcp pamtotiff ppmtopcx pnmtopng pnmtojpeg ppmtogif python3; do
  command -v "$program" >/dev/null || fail "$program is missing; tools/setup.sh installs it"
done

# expect FILE PAGE DEPTH SEEN: saves a page as ImageMagick reads it. SEEN is its name for the page ("a.tif[0]").
expect() { convert "$4" -alpha off -type TrueColor "bmp3:$1.page$2.depth$3.bmp"; }

# Source pictures: odd widths, every value, nothing symmetrical.
mkdir source
convert -seed 7 -size 61x43 plasma:red-blue -depth 8 -type TrueColor source/color.ppm 2>/dev/null ||
  fail "ImageMagick does not make pictures"
convert source/color.ppm -colorspace Gray -depth 8 source/gray.pgm
convert source/gray.pgm -ordered-dither o4x4 -monochrome source/mono.pbm
convert source/color.ppm -colors 200 -type Palette -depth 8 source/palette256.png
convert source/color.ppm -colors 13 -type Palette -depth 8 source/palette16.png

for script in "$sources"/foreign_*.sh; do
  # shellcheck source=/dev/null
  . "$script"
done
rm -rf source
cd /
mv -T "$unfinished" "$made"
finish
