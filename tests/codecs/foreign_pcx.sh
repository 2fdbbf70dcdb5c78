# shellcheck shell=bash
# PCX files of netpbm, Pillow and ImageMagick, and DCX files of ImageMagick.

# colors N: the colour picture in so many colours.
colors() { convert source/color.ppm -colors "$1" -depth 8 ppm:-; }

# by_netpbm NAME DEPTH OPTIONS...: standard input as netpbm stores it and reads it back.
by_netpbm() {
  ppmtopcx "${@:3}" >"$1.pcx" 2>/dev/null
  pcxtoppm "$1.pcx" >"source/$1.ppm" 2>/dev/null
  expect "$1.pcx" 1 "$2" "source/$1.ppm"
}
by_netpbm pcx-1-bit 1 <source/mono.pbm
colors 3 | by_netpbm pcx-2-planes 4
colors 7 | by_netpbm pcx-3-planes 4
colors 13 | by_netpbm pcx-4-planes 4
colors 3 | by_netpbm pcx-2-bits 4 -packed
colors 13 | by_netpbm pcx-4-bits 4 -packed
colors 13 | by_netpbm pcx-8-bits 8 -8bit
by_netpbm pcx-24-bits 24 -24bit <source/color.ppm

# Pillow pads lines, and leaves a table in bi-level files that is not theirs.
/usr/bin/python3 - <<'END'
from PIL import Image
for name, mode in (("mono.pbm", "1"), ("gray.pgm", "L"), ("palette256.png", "P"), ("color.ppm", "RGB")):
    Image.open("source/" + name).convert(mode).save("pillow-" + mode + ".pcx")
END
expect pillow-1.pcx 1 1 source/mono.pbm
expect pillow-L.pcx 1 8 source/gray.pgm
expect pillow-P.pcx 1 8 source/palette256.png
expect pillow-RGB.pcx 1 24 source/color.ppm

# ImageMagick stores what has few colours with a table of 256, and transparency as a fourth plane.
convert source/palette16.png pcx-table.pcx
expect pcx-table.pcx 1 8 source/palette16.png
convert source/color.ppm -compress none pcx-plain.pcx
expect pcx-plain.pcx 1 24 source/color.ppm
convert source/color.ppm \( source/gray.pgm -negate \) -alpha off -compose CopyOpacity -composite source/pcx-alpha.png
convert source/pcx-alpha.png pcx-alpha.pcx
convert pcx-alpha.pcx -background white -flatten -depth 16 source/pcx-alpha.miff
expect pcx-alpha.pcx 1 24 source/pcx-alpha.miff

convert source/color.ppm source/palette256.png \( source/gray.pgm -resize 50% \) pages.dcx
expect pages.dcx 1 24 "pages.dcx[0]"
expect pages.dcx 2 8 "pages.dcx[1]"
expect pages.dcx 3 24 "pages.dcx[2]"
