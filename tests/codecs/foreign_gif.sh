# shellcheck shell=bash
# GIF files of ImageMagick, netpbm and Pillow.

convert source/palette256.png plain.gif
expect plain.gif 1 8 plain.gif
convert source/palette16.png -interlace GIF interlaced.gif
expect interlaced.gif 1 4 interlaced.gif
convert source/mono.pbm mono.gif
expect mono.gif 1 1 mono.gif
convert -size 1x1 xc:red one-pixel.gif
expect one-pixel.gif 1 1 one-pixel.gif
pnmquant 128 source/color.ppm 2>/dev/null | ppmtogif -interlace 2>/dev/null >netpbm.gif
expect netpbm.gif 1 8 netpbm.gif

# Images of their own sizes and colours, away from the corner of the screen.
convert source/palette256.png \( source/palette16.png -crop 21x9+30+20 \) \( source/mono.pbm -crop 33x17+5+7 \) frames.gif
expect frames.gif 1 8 'frames.gif[0]'
expect frames.gif 2 4 'frames.gif[1]'
expect frames.gif 3 1 'frames.gif[2]'

/usr/bin/python3 - <<'PYTHON'
from PIL import Image
picture = Image.open("source/color.ppm").quantize(12)
picture.save("transparent.gif", transparency=5)
picture.save("pillow-frames.gif", save_all=True, append_images=[picture.rotate(180)], disposal=2)
PYTHON
convert transparent.gif -background white -flatten source/flat.png
expect transparent.gif 1 8 source/flat.png
expect pillow-frames.gif 2 4 'pillow-frames.gif[1]'
