# shellcheck shell=bash
# TGA files of ImageMagick, netpbm and Pillow. Those with both packets and a map look like metafiles to format detection, so
# none of them is here.

# by_imagemagick NAME DEPTH SOURCE OPTIONS...: a source as ImageMagick stores it. It leaves pixels in their order, notes where
# they begin, at the bottom left unless it is told otherwise, and turns a picture upright when it is asked to.
by_imagemagick() {
  convert "$3" "${@:4}" "$1.tga"
  convert "$1.tga" -auto-orient -background white -flatten -depth 16 "source/$1.miff"
  expect "$1.tga" 1 "$2" "source/$1.miff"
}
convert source/palette16.png source/palette16.ppm
for corner in TopLeft TopRight BottomLeft BottomRight; do
  by_imagemagick "tga-$corner" 24 source/color.ppm -orient "$corner"
  by_imagemagick "tga-$corner-packets" 24 source/palette16.ppm -orient "$corner" -compress rle
done
by_imagemagick tga-16-colors 4 source/palette16.png
by_imagemagick tga-256-colors 8 source/palette256.png
convert source/color.ppm \( source/gray.pgm -negate \) -alpha off -compose CopyOpacity -composite source/tga-alpha.png
by_imagemagick tga-alpha 24 source/tga-alpha.png -compress rle

# by_netpbm_tga NAME DEPTH SOURCE OPTIONS...: a source as netpbm stores it and reads it back.
by_netpbm_tga() {
  pamtotga "${@:4}" "$3" >"$1.tga" 2>/dev/null
  tgatoppm "$1.tga" >"source/$1.ppm" 2>/dev/null
  expect "$1.tga" 1 "$2" "source/$1.ppm"
}
by_netpbm_tga tga-map 4 source/palette16.ppm -cmap -norle
by_netpbm_tga tga-color 24 source/color.ppm -rgb
by_netpbm_tga tga-gray 8 source/gray.pgm -mono

# Pillow writes grey with alpha.
/usr/bin/python3 - <<'END'
from PIL import Image
gray = Image.open("source/gray.pgm")
alpha = gray.point(lambda value: 255 - value)
Image.merge("LA", (gray, alpha)).save("pillow-LA.tga")
Image.composite(gray, Image.new("L", gray.size, 255), alpha).save("source/pillow-LA.pgm")
gray.save("pillow-L.tga", orientation=1, rle=True)
Image.open("source/palette256.png").save("pillow-P.tga")
END
expect pillow-LA.tga 1 8 source/pillow-LA.pgm
expect pillow-L.tga 1 8 source/gray.pgm
expect pillow-P.tga 1 8 source/palette256.png
