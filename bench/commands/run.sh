#!/usr/bin/env bash
# Measures whole commands of vorel beside other programs, where installed (bench/peers/setup.sh). Called by
# tools/bench.sh --commands, which builds the programs first.
# usage: run.sh [OPTION...]   options of peers_commands, such as --rounds 3
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=$PWD/build/native/bin
mkdir -p build/bench/out
bench/commands/pages.sh build/bench/pages
cd build/bench/out
pages=../pages

# Installed as "magick" from version 7 on.
magick=$(command -v magick || command -v convert || true)
leptonica=$bin/leptonica_command

# row WORKLOAD PARTICIPANT PROGRAM COMMAND: a line of the table, if the program is installed.
row() { ! command -v "$3" >/dev/null || printf '%s|%s|%s\n' "$1" "$2" "$4"; }

# compared WORKLOAD VERB IN OUT VOREL_ARGUMENTS MAGICK_ARGUMENTS GM_ARGUMENTS VIPS_COMMAND: a workload of all programs; "-" leaves one out.
compared() {
  local workload=$1 verb=$2 in=$pages/$3 out=$4
  row "$workload" vorel "$bin/vorel" "$bin/vorel $verb $in vorel-$out $5 --overwrite"
  [ "$6" = - ] || row "$workload" magick "$magick" "$magick $in $6 magick-$out"
  [ "$7" = - ] || row "$workload" gm gm "gm convert $in $7 gm-$out"
  [ "$8" = - ] || row "$workload" vips vips "vips $8"
  row "$workload" leptonica "$leptonica" "$leptonica $verb $in leptonica-$out"
}

commands() {
  local g4="-compress Group4" bits="[compression=ccittfax4,bitdepth=1]" tif=$pages/page.tif jpg=$pages/page.jpg png=$pages/page.png bmp=$pages/page.bmp
  compared "TIFF G4 to TIFF G4" convert page.tif a.tif "" "$g4" "$g4" "copy $tif vips-a.tif$bits"
  row "TIFF G4 to TIFF G4" tool tiffcp "tiffcp -c g4 $tif tool.tif"
  compared "TIFF G4, rotate 90" rotate page.tif b.tif 90 "-rotate 90 $g4" "-rotate 90 $g4" "rot $tif vips-b.tif$bits d90"
  compared "TIFF G4, scale 50%" scale page.tif c.tif 50% "-sample 50% $g4" "-sample 50% $g4" "subsample $tif vips-c.tif$bits 2 2"
  compared "TIFF G4, clean" clean page.tif d.tif "60" "-median 1 $g4" "-median 1 $g4" "rank $tif vips-d.tif$bits 3 3 4"
  compared "JPEG to BMP" convert page.jpg e.bmp "" "" "" -
  row "JPEG to BMP" tool djpeg "djpeg -bmp -outfile tool.bmp $jpg"
  compared "BMP to JPEG" convert page.bmp f.jpg "" "-quality 75" "-quality 75" -
  row "BMP to JPEG" tool cjpeg "cjpeg -quality 75 -outfile tool.jpg $bmp"
  compared "JPEG to JPEG" convert page.jpg g.jpg "" "-quality 75" "-quality 75" "copy $jpg vips-g.jpg"
  row "JPEG to JPEG" tool djpeg "djpeg $jpg | cjpeg -quality 75 -outfile tool.jpg"
  compared "JPEG, rotate 90" rotate page.jpg h.jpg 90 "-rotate 90 -quality 75" "-rotate 90 -quality 75" "rot $jpg vips-h.jpg d90"
  compared "JPEG, scale 50%" scale page.jpg i.jpg 50% "-scale 50% -quality 75" "-scale 50% -quality 75" "resize $jpg vips-i.jpg 0.5 --kernel linear"
  compared "JPEG, dither to TIFF" dither page.jpg j.tif "" "-monochrome $g4" "-monochrome $g4" -
  compared "PNG to BMP" convert page.png k.bmp "" "" "" -
  row "PNG to BMP" tool pngtopnm "pngtopnm $png >tool.ppm"
  compared "BMP to PNG" convert page.bmp l.png "" "" "" -
  row "BMP to PNG" tool pnmtopng "pnmtopng $pages/page.ppm 2>/dev/null >tool.png"
  compared "PNG to PNG" convert page.png m.png "" "" "" "copy $png vips-m.png"
  row "PNG to PNG" tool pngtopnm "pngtopnm $png | pnmtopng 2>/dev/null >tool.png"
  compared "PNG, rotate 90" rotate page.png n.png 90 "-rotate 90" "-rotate 90" "rot $png vips-n.png d90"
  compared "PNG, scale 50%" scale page.png o.png 50% "-scale 50%" "-scale 50%" "resize $png vips-o.png 0.5 --kernel linear"
  compared "PNG, dither to TIFF" dither page.png p.tif "" "-monochrome $g4" "-monochrome $g4" -
}

commands | "$bin/peers_commands" --json ../commands.json "$@"
