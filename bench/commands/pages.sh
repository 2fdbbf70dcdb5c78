#!/usr/bin/env bash
# Makes the pages that commands are timed with: A4 with lines of text, black and white at 600 dots per inch (page.tif, Group 4), and with a
# picture in colours at 300 dots per inch (page.jpg, page.png, page.bmp).
# usage: pages.sh FOLDER
set -euo pipefail
mkdir -p "$1"
cd "$1"
[ ! -e page.bmp ] || exit 0
lines=()
for i in $(seq 62); do
  lines+=("label:$i  The quick brown fox jumps over the lazy dog, while $((i * 7919 % 1000)) wizards box $((i * 104729 % 10000)) jugs of quartz.")
done
convert -font DejaVu-Serif -fill black -background white -density 600 -pointsize 11 "${lines[@]}" -append -gravity center \
  -extent 4960x7016 -threshold 50% -type bilevel -units PixelsPerInch -density 600 -compress Group4 page.tif
convert page.tif -depth 8 -scale 50% -fill '#fffcf0' -tint 100 \
  \( -size 1600x1200 -seed 7 plasma:tomato-steelblue -attenuate 0.4 +noise Gaussian \) -geometry +440+2000 -compose multiply -composite \
  -units PixelsPerInch -density 300 -type TrueColor page.ppm
cjpeg -quality 85 page.ppm >page.jpg
pnmtopng page.ppm >page.png 2>/dev/null
ppmtobmp -windows page.ppm >page.bmp 2>/dev/null
