#!/usr/bin/env bash
# Makes picture files with other programs, each with a bitmap beside it of what that program sees in it. A file NAME has, for
# each page that is to be compared, a 24-bit bitmap called NAME.pageN.depthD.bmp, where D is the depth that loading the page is
# to give. Prints the files. What is there already stays unless one of these scripts has changed.
# usage: make_foreign_files.sh FOLDER
set -euo pipefail
sources=$(cd "$(dirname "$0")" && pwd)
folder=$1
key=$(cat "$sources"/*.sh | cksum)
[ "$key" != "$(cat "$folder/key" 2>/dev/null)" ] || { ls "$folder"; exit 0; }
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"

fail() { printf 'make_foreign_files: %s\n' "$*" >&2; exit 1; }

for program in convert tiffcp pamtotiff ppmtopcx pnmtopng pnmtojpeg ppmtogif python3; do
  command -v "$program" >/dev/null || fail "$program is missing; tools/setup.sh installs it"
done

# expect FILE PAGE DEPTH SEEN: notes what ImageMagick sees in a page. SEEN is its name for the page ("a.tif[0]").
expect() { convert "$4" -alpha off -type TrueColor "bmp3:$1.page$2.depth$3.bmp"; }

# Pictures to make files of: odd widths, every value, nothing symmetrical.
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
echo "$key" >key
ls
