#!/usr/bin/env bash
# The second half of the demo: each picture of out/pictures goes through the Linux tool and through the Windows one, the results
# are compared, and a contact sheet is made of them. Called by demo.sh inside a Wine session.
set -euo pipefail
cd "$(dirname "$0")/.."

say() { printf '\n== %s\n' "$*"; }
windows() { ./tools/run-wine.sh "build/win32/bin/$1" "${@:2}"; }

steps=("convert" "rotate 90" "rotate 180" "rotate 270" "mirror horizontal" "mirror vertical" "invert")
different=0 compared=0

say "each picture through libvorel32.so and, under Wine, through VOREL32.DLL"
for picture in out/pictures/*.bmp; do
  name=$(basename "$picture" .bmp)
  for step in "${steps[@]}"; do
    read -r verb argument <<<"$step"
    result=$name-$verb${argument:+-$argument}.bmp
    build/native/bin/vorel "$verb" "$picture" "out/linux/$result" ${argument:+"$argument"}
    windows vorel.exe "$verb" "$picture" "out/windows/$result" ${argument:+"$argument"}
    compared=$((compared + 1))
    if cmp -s "out/linux/$result" "out/windows/$result"; then
      printf 'same   %s\n' "$result"
    else
      printf 'DIFFER %s\n' "$result"
      different=$((different + 1))
    fi
  done
  windows through_device.exe "$picture" "out/windows/$name-through-device.bmp"
done

# A true-colour display keeps every colour, so the way through a device bitmap must not change a pixel.
say "what went through a device bitmap of the display, pixel by pixel against the picture"
for picture in out/pictures/*.bmp; do
  name=$(basename "$picture" .bmp)
  compared=$((compared + 1))
  pixels=$(compare -metric AE "$picture" "out/windows/$name-through-device.bmp" null: 2>&1 || true)
  if [ "$pixels" = 0 ]; then
    printf 'same   %s\n' "$name-through-device.bmp"
  else
    printf 'DIFFER %s (%s pixels)\n' "$name-through-device.bmp" "$pixels"
    different=$((different + 1))
  fi
done

say "making the contact sheet"
for picture in out/pictures/*.bmp out/windows/*.bmp; do
  convert "$picture" -thumbnail 240x240 "out/sheet/$(basename "$picture" .bmp).png"
done
montage -font DejaVu-Sans -pointsize 11 -label '%t' out/sheet/*.png -tile 9x -geometry 240x240+8+8 -background '#f4f4f0' out/contact-sheet.png
rm -rf out/sheet

say "$compared results compared, $different differ ($((SECONDS)) s for this part)"
printf 'pictures: out/pictures  Linux: out/linux  Windows: out/windows  all at a glance: out/contact-sheet.png\n'
[ "$different" = 0 ]
