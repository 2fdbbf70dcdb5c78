#!/usr/bin/env bash
# The longer half of the demo: runs the Linux tool and the Windows tool on each picture of out/pictures, compares the results and
# makes a contact sheet. Called by demo.sh inside a Wine session.
set -euo pipefail
cd "$(dirname "$0")/.."

say() { printf '\n== %s\n' "$*"; }
windows() { ./tools/run-wine.sh "build/win32/bin/$1" "${@:2}"; }

steps=("convert" "rotate 90" "rotate 180" "rotate 270" "rotate -17 --white" "mirror horizontal" "mirror vertical"
       "skew horizontal 150 --white" "skew vertical -100" "scale 30%" "scale 150% --method cubic" "scale 50% --method nearest"
       "crop 100,80 300x200" "invert" "tone --brightness 10 --contrast 30" "lut --contrast 80 --square 100,100" "filter sharpen"
       "filter blur --size 5" "gray --weighted" "gray --smooth 2" "expand" "clean 60"
       "dither" "dither --method jjn" "dither --method smooth" "dither --method sharp --bits 4" "dither --bits 8"
       "halftone" "halftone --method diffusion" "halftone --method threshold")
endings=(tif png jpg gif pcx dcx tga)
different=0 compared=0

# verdict NAME SAME: counts a comparison and prints its result.
verdict() {
  compared=$((compared + 1))
  [ "$2" = same ] || different=$((different + 1))
  printf '%-7s %s\n' "$2" "$1"
}

# run_both RESULT VERB ARGUMENT...: runs both tools, each writing RESULT into its folder, and compares the two files.
run_both() {
  local result=$1 verb=$2 picture=$3 linux_code=0 windows_code=0
  build/native/bin/vorel "$verb" "$picture" "out/linux/$result" "${@:4}" || linux_code=$?
  windows vorel.exe "$verb" "$picture" "out/windows/$result" "${@:4}" || windows_code=$?
  if [ "$linux_code" != 0 ] && [ "$linux_code" = "$windows_code" ]; then
    verdict "$result (refused by both, code $linux_code)" same
  elif cmp -s "out/linux/$result" "out/windows/$result"; then
    verdict "$result" same
  else
    verdict "$result" DIFFERS
  fi
}

say "each picture through libvorel32.so and, under Wine, through VOREL32.DLL"
for picture in out/pictures/*.bmp; do
  name=$(basename "$picture" .bmp)
  for step in "${steps[@]}"; do
    read -ra words <<<"$step"
    result=$(tr -s ' ,%' '-' <<<"$name $step").bmp
    run_both "$result" "${words[0]}" "$picture" "${words[@]:1}"
  done
  windows through_device.exe "$picture" "out/windows/$name-through-device.bmp" || true
done

say "pictures painted onto the page, and the page cut in two"
page=out/pictures/page-1bit.bmp
if [ -f "$page" ]; then
  for tool in linux windows; do
    vorel=build/native/bin/vorel
    [ $tool = linux ] || vorel="windows vorel.exe"
    $vorel combine $page out/pictures/chart-24bit.bmp out/$tool/stamped.bmp --at 600,1300
    $vorel cut $page out/$tool/above.bmp out/$tool/below.bmp 1700
  done
  for result in stamped above below; do
    cmp -s out/linux/$result.bmp out/windows/$result.bmp && verdict $result.bmp same || verdict $result.bmp DIFFERS
  done
fi

say "each picture saved in every format, through the codec modules of both"
for picture in out/pictures/*.bmp; do
  for ending in "${endings[@]}"; do run_both "$(basename "$picture" .bmp).$ending" convert "$picture"; done
done

# A true-colour display keeps every colour, so the way through a device bitmap must not change a pixel.
say "device bitmaps of the display and back, compared with the picture pixel by pixel"
for picture in out/pictures/*.bmp; do
  name=$(basename "$picture" .bmp)
  pixels=$(compare -metric AE "$picture" "out/windows/$name-through-device.bmp" null: 2>&1 || true)
  if [ "$pixels" = 0 ]; then verdict "$name-through-device.bmp" same; else verdict "$name-through-device.bmp ($pixels)" DIFFERS; fi
done

say "making the contact sheet"
for picture in out/pictures/*.bmp out/windows/*.bmp; do
  convert "$picture" -thumbnail 240x240 "out/sheet/$(basename "$picture" .bmp).png"
done
montage -font DejaVu-Sans -pointsize 11 -label '%t' out/sheet/*.png -tile 9x -geometry 240x240+8+8 -background '#f4f4f0' out/contact-sheet.png
rm -rf out/sheet

say "$compared results compared, $different differ"
printf 'pictures: out/pictures  Linux: out/linux  Windows: out/windows  contact sheet: out/contact-sheet.png\n'
[ "$different" = 0 ]
