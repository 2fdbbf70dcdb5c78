#!/usr/bin/env bash
# Makes the pictures that the how-to pages work on, in the current folder. Needs `vorel` and `make_samples` in the path.
set -euo pipefail
make_samples . >/dev/null
quiet() { "$@" 2>/dev/null; }

mv page-8bit-grey.bmp gray.bmp
quiet vorel convert gray.bmp letter.png         # a grey scan at 150 dpi, on uneven paper
quiet vorel convert chart-24bit.bmp photo.jpg --quality 95

# A fax of two pages: the first is crooked and has specks.
quiet vorel rotate page-1bit.bmp crooked.bmp 1.3 --white
quiet vorel scale crooked.bmp first.tif --dpi 204x196
quiet vorel scale page-1bit.bmp second.tif --dpi 204x196
quiet vorel pages join first.tif second.tif fax.tif --compression g3

# Pages of different resolutions.
quiet vorel scale page-1bit.bmp low.bmp --dpi 150
quiet vorel pages join page-1bit.bmp first.tif low.bmp mixed.tif --compression g4

# A folder of scans.
mkdir -p scans/box-1 scans/box-2
for page in 1 2 3; do quiet vorel convert page-1bit.bmp "scans/box-1/page-$page.tif" --compression g4; done
quiet vorel convert first.tif scans/box-2/page-1.tif
cp fax.tif scans/box-2/letter.tif

# A blank page, as the back of a sheet.
quiet vorel threshold gray.bmp blank.bmp 0
quiet vorel pages join page-1bit.bmp blank.bmp fax.tif scans/box-2/sheet.tif --compression g4
rm -f crooked.bmp first.tif second.tif low.bmp blank.bmp chart-8bit.bmp chart-4bit.bmp chart-24bit.bmp gray.bmp
