# shellcheck shell=bash
# TIFF files of ImageMagick, libtiff's own tools, netpbm and Pillow, and CALS files of ImageMagick.

# Each source as plain TIFF, for tiffcp to put into other forms.
convert source/mono.pbm -compress none source/mono.tif
convert source/gray.pgm -compress none source/gray.tif
convert source/color.ppm -compress none source/color.tif
convert source/palette256.png -compress none source/palette.tif

# recoded NAME SOURCE DEPTH OPTIONS...: a source recoded by tiffcp.
recoded() {
  tiffcp "${@:4}" "source/$2.tif" "$1.tif"
  expect "$1.tif" 1 "$3" "$1.tif"
}
recoded group3-1d mono 1 -c g3:1d
recoded group3-2d-fill mono 1 -c g3:2d:fill
recoded group4 mono 1 -c g4 -r 16
recoded group4-fill-order-2 mono 1 -c g4 -f lsb2msb
recoded fill-order-2 mono 1 -c none -f lsb2msb
recoded mono-big-endian mono 1 -B -c packbits
recoded mono-tiled mono 1 -t -w 32 -l 16 -c lzw
recoded gray-tiled gray 8 -t -w 16 -l 48 -c zip:2
recoded palette-lzw palette 8 -c lzw
recoded color-lzw color 24 -c lzw:2 -r 5
recoded color-planes color 24 -p separate -c packbits
recoded color-tiled-planes color 24 -p separate -t -w 32 -l 32 -c zip
recoded color-large-offsets color 24 -8 -B -c none
recoded color-jpeg color 24 -c jpeg:90
recoded color-jpeg-plain color 24 -c jpeg:r:90
recoded gray-jpeg-tiled gray 8 -c jpeg:90 -t -w 32 -l 32

# converted NAME SOURCE DEPTH OPTIONS...: a source converted by ImageMagick.
converted() {
  convert "source/$2" "${@:4}" "$1.tif"
  expect "$1.tif" 1 "$3" "$1.tif"
}
converted gray16 gray.pgm 8 -depth 16 -endian MSB
converted color16-planes color.ppm 24 -depth 16 -interlace plane -compress zip
converted gray2 gray.pgm 4 -depth 2
converted gray4 gray.pgm 4 -depth 4 -compress lzw
convert source/color.ppm -colorspace CMYK inks.tif
convert inks.tif -colorspace sRGB -depth 16 source/inks.miff  # 16 bits, which expect rounds; ImageMagick truncates to 8 here
expect inks.tif 1 24 source/inks.miff

# Transparent pictures lie on white.
convert source/color.ppm \( source/gray.pgm -negate \) -alpha off -compose CopyOpacity -composite source/transparent.png
for form in unassociated associated; do
  convert source/transparent.png -define tiff:alpha=$form -compress lzw "alpha-$form.tif"
  convert "alpha-$form.tif" -background white -flatten -depth 16 source/$form.miff
  tiffcp -p separate "alpha-$form.tif" "alpha-$form-planes.tif"
  expect "alpha-$form.tif" 1 24 source/$form.miff
  expect "alpha-$form-planes.tif" 1 24 source/$form.miff
done

# A page that is stored lying on its side.
convert source/palette16.png -orient RightTop -compress none turned.tif
convert turned.tif -auto-orient source/turned.png
expect turned.tif 1 4 source/turned.png

# Palettes of few bits, and grey counted from white, are netpbm's.
convert source/palette16.png ppm:- | pamtotiff -indexbits=4 -none >palette4.tif 2>/dev/null
expect palette4.tif 1 4 palette4.tif
pamtotiff -miniswhite -lzw source/gray.pgm >gray-from-white.tif 2>/dev/null
expect gray-from-white.tif 1 8 gray-from-white.tif

# Pages of different kinds in one file.
tiffcp source/mono.tif source/palette.tif source/color.tif pages.tif
expect pages.tif 1 1 "pages.tif[0]"
expect pages.tif 2 8 "pages.tif[1]"
expect pages.tif 3 24 "pages.tif[2]"

/usr/bin/python3 - <<'END'
from PIL import Image
Image.open("source/mono.pbm").save("pillow-group4.tif", compression="group4", dpi=(204, 196))
Image.open("source/gray.pgm").convert("LA").save("pillow-gray-alpha.tif")
END
expect pillow-group4.tif 1 1 pillow-group4.tif
expect pillow-gray-alpha.tif 1 8 source/gray.pgm

convert source/mono.pbm cals:mono.cal
expect mono.cal 1 1 source/mono.pbm
