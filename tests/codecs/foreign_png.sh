# shellcheck shell=bash
# PNG files of ImageMagick, netpbm and Pillow.

# stored NAME SOURCE BITS TYPE DEPTH OPTIONS...: a source as ImageMagick stores it with so many bits per component; the type is
# 0 for grey, 2 for colours, 3 for a palette, and 4 more with alpha.
stored() {
  convert "$2" "${@:6}" -define "png:bit-depth=$3" -define "png:color-type=$4" "$1.png"
  convert "$1.png" -background white -flatten source/flat.png
  expect "$1.png" 1 "$5" source/flat.png
}
stored mono source/mono.pbm 1 0 1
stored gray4 source/gray.pgm 4 0 4 -depth 4
stored gray8 source/gray.pgm 8 0 8 -interlace PNG
stored gray16 source/gray.pgm 16 0 8
stored color source/color.ppm 8 2 24
stored color16 source/color.ppm 16 2 24 -interlace PNG
stored palette4 source/palette16.png 4 3 4 -interlace PNG
stored palette8 source/palette256.png 8 3 8
stored gray-alpha source/gray.pgm 8 4 8 \( source/mono.pbm source/gray.pgm -average \) -alpha off -compose CopyOpacity -composite
stored color-alpha source/color.ppm 8 6 24 source/gray.pgm -alpha off -compose CopyOpacity -composite -interlace PNG
stored color-alpha16 source/color.ppm 16 6 24 source/mono.pbm -alpha off -compose CopyOpacity -composite

convert source/gray.pgm -normalize pgm:- | pamdepth 3 2>/dev/null | pnmtopng -force -interlace 2>/dev/null >gray2.png
expect gray2.png 1 4 gray2.png

# Each kind of transparency that is not an alpha channel; palettes of few bits.
pnmtopng -transparent '#000000' source/mono.pbm >mono-key.png 2>/dev/null
pamdepth 15 source/gray.pgm 2>/dev/null | pnmtopng -transparent '#777777' >gray4-key.png 2>/dev/null
/usr/bin/python3 - <<'PYTHON'
from PIL import Image
color = Image.open("source/color.ppm")
color.save("color-key.png", transparency=color.getpixel((30, 20)))
color.quantize(100).save("palette-alphas.png", transparency=bytes(range(0, 250, 5)))
for bits in 1, 2:
    color.quantize(1 << bits).save(f"palette{bits}.png", bits=bits)
PYTHON
expect palette1.png 1 1 palette1.png
expect palette2.png 1 4 palette2.png
for name in mono-key:1 gray4-key:4 color-key:24 palette-alphas:8; do
  convert "${name%:*}.png" -background white -flatten source/flat.png
  expect "${name%:*}.png" 1 "${name#*:}" source/flat.png
done
