# shellcheck shell=bash
# JPEG files of ImageMagick, netpbm and Pillow.

# compressed NAME SOURCE DEPTH OPTIONS...: a source as ImageMagick compresses it.
compressed() {
  convert "$2" "${@:4}" "$1.jpg"
  expect "$1.jpg" 1 "$3" "$1.jpg"
}
compressed gray source/gray.pgm 8
compressed color-420 source/color.ppm 24 -quality 75 -sampling-factor 4:2:0
compressed color-444 source/color.ppm 24 -quality 95 -sampling-factor 4:4:4
compressed progressive source/color.ppm 24 -interlace JPEG
compressed inks source/color.ppm 24 -colorspace CMYK -quality 95

pnmtojpeg -progressive -restart 3 source/color.ppm >netpbm.jpg 2>/dev/null
expect netpbm.jpg 1 24 netpbm.jpg

/usr/bin/python3 - <<'PYTHON'
from PIL import Image
inks = Image.open("source/color.ppm").convert("CMYK")
inks.save("pillow-inks.jpg", quality=95)
Image.open("pillow-inks.jpg").convert("RGB").save("source/inks.png")
PYTHON
expect pillow-inks.jpg 1 24 source/inks.png
