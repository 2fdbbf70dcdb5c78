#!/usr/bin/env bash
# The first half of the demo: takes a scanned page and a colour picture from file to paper. The Linux tool and the Windows tool do each
# step, and their results are compared. The viewer shows pictures, both are printed, and the PostScript is rasterised. Called by
# demo.sh inside a Wine session.
set -euo pipefail
cd "$(dirname "$0")/.."

way=out/way
dpi=300
different=0 step=0

say() { printf '\n== %s\n' "$*"; }
windows() { ./tools/run-wine.sh "build/win32/bin/$1" "${@:2}"; }

# keep PICTURE CAPTION: a small picture of a stage, for the contact sheet.
keep() {
  step=$((step + 1))
  convert "$1[0]" -strip -thumbnail 420x420 "$(printf '%s/sheet/%02d.png' "$way" "$step")"
  printf '%s\n' "$2" >"$(printf '%s/sheet/%02d.txt' "$way" "$step")"
}

# through CAPTION FROM TO VERB ARGUMENT...: a step with both tools. The next step uses the file of the Windows tool.
through() {
  local caption=$1 from=$2 to=$3
  build/native/bin/vorel "$4" "$from" "$way/linux-$to" "${@:5}"
  windows vorel.exe "$4" "$from" "$way/$to" "${@:5}"
  if cmp -s "$way/linux-$to" "$way/$to"; then
    printf 'same    %s\n' "$caption"
  else
    printf 'DIFFERS %s\n' "$caption"
    different=$((different + 1))
  fi
  rm -f "$way/linux-$to"
  keep "$way/$to" "$caption"
}

# print_and_render NAME PICTURE OPTION...: prints a picture into a file and rasterises the sheets.
print_and_render() {
  ./tools/print-to-file.sh "Paper" "$way/$1.ps" "$dpi" >/dev/null
  windows vorel.exe print "$2" --printer Paper "${@:3}"
  gs -q -dNOPAUSE -dBATCH -sDEVICE=png16m -r100 -sOutputFile="$way/$1-%d.png" "$way/$1.ps"
  for sheet in "$way/$1"-*.png; do keep "$sheet" "printed: $1, $(basename "$sheet" .png | sed 's/.*-/sheet /')"; done
}

rm -rf "$way"
mkdir -p "$way/sheet"

say "a crooked scan in a TIFF file, and a colour picture in a PNG file"
build/native/bin/vorel rotate out/pictures/page-1bit.bmp "$way/scan.tif" 2 --white --compression g4
build/native/bin/vorel convert out/pictures/chart-24bit.bmp "$way/chart.png"
windows vorel.exe info "$way/scan.tif" "$way/chart.png"
keep "$way/scan.tif" "the scan: TIFF, Group 4"
keep "$way/chart.png" "the picture: PNG"

say "the page: cleaned, straightened, cropped, saved as a TIFF file"
through "specks removed" "$way/scan.tif" cleaned.tif clean 60 --compression g4
through "turned by -2 degrees" "$way/cleaned.tif" straight.tif rotate -2 --white --compression g4
through "margins cut off" "$way/straight.tif" page.tif crop 90,90 2480x3500 --compression g4

say "the picture: turned, scaled, lightened, dithered"
through "turned by 90 degrees" "$way/chart.png" turned.png rotate 90
through "scaled to 70 %, cubic" "$way/turned.png" smaller.png scale 70% --method cubic
through "more contrast" "$way/smaller.png" clearer.png tone --brightness 5 --contrast 15
through "dithered" "$way/clearer.png" dithered.png dither --method jjn

say "in the viewer, with real keys and a real mouse"
VOREL_SHOTS=out/viewer ./tests/viewer/user_interface.sh build/win32
for shot in out/viewer/*.png; do keep "$shot" "viewer: $(basename "$shot" .png | sed 's/^[0-9]*-//; s/-/ /g')"; done

say "on paper: printed at $dpi dots per inch, the PostScript rasterised"
print_and_render page "$way/page.tif" --fit
print_and_render picture "$way/clearer.png" --center both
print_and_render halftone "$way/dithered.png" --fit
say "the printing dialogs"
./tools/print-dialogs.sh "$way" >/dev/null
for dialog in page cancel setup; do keep "$way/print-$dialog.png" "dialog: $dialog"; done

say "the contact sheet"
labelled=()
for picture in "$way"/sheet/*.png; do labelled+=(-label "$(sed "s/%/%%/g" "${picture%.png}.txt")" "$picture"); done
montage -font DejaVu-Sans -pointsize 13 "${labelled[@]}" -tile 6x -geometry 420x420+10+10 -background '#f4f4f0' out/way-sheet.png
rm -rf "$way/sheet"
printf 'stages: %s  screenshots: out/viewer  contact sheet: out/way-sheet.png\n' "$way"
[ "$different" = 0 ]
