#!/usr/bin/env bash
# Metafiles between this library and other programs, in FOLDER.
# usage: foreign_metafiles.sh make FOLDER   writes red.wmf and red.emf with another library
#        foreign_metafiles.sh check FOLDER  has other programs read what is there: for each NAME.bmp a NAME.wmf and NAME.emf, which
#                                           must have its size and every pixel of it
set -euo pipefail
sources=$(cd "$(dirname "$0")" && pwd)

fail() { printf 'foreign_metafiles: %s\n' "$*" >&2; exit 1; }

make_files() {
  cc -o make_metafiles "$sources/make_metafiles.c" -luemf -lm
  ./make_metafiles
}

# The first attribute of this name in a drawing, without decimals.
attribute() { grep -o "\\b$1=\"[0-9.]*\"" "$2" | head -1 | grep -o '[0-9]*' | head -1; }

same_pixels() {
  convert "$1" -depth 8 a.rgb && convert "$2" -depth 8 b.rgb || fail "$1 or $2 is no picture"
  cmp -s a.rgb b.rgb || fail "$1 differs from $2"
}

check_files() {
  local picture name width height
  for picture in picture*.bmp; do
    name=${picture%.bmp}
    read -r width height < <(identify -format '%w %h\n' "$picture")
    wmf2svg -o "$name.wmf.svg" "$name.wmf" >/dev/null 2>&1
    [ "$(attribute width "$name.wmf.svg") $(attribute height "$name.wmf.svg")" = "$width $height" ] || fail "$name.wmf has another size"
    same_pixels "$name-1.png" "$picture"
    emf2svg-conv -i "$name.emf" -o "$name.emf.svg"
    grep -o 'base64,[^"]*' "$name.emf.svg" | head -1 | cut -d, -f2 | base64 -d >"$name.emf.png"
    same_pixels "$name.emf.png" "$picture"
    echo "$name: $width x $height"
  done
}

for program in cc wmf2svg emf2svg-conv convert; do
  command -v "$program" >/dev/null || fail "$program is missing; tools/setup.sh installs it"
done
mkdir -p "$2"
cd "$2"
case $1 in
  make) rm -rf ./*; make_files ;;
  check) check_files ;;
esac
