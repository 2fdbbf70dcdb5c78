#!/usr/bin/env bash
# Screenshots of the viewer at 200 % and in high contrast, in Wine prefixes of its own.
# usage: appearance.sh BUILD_FOLDER   (of the Windows build; the screenshots are in its folder viewer-screenshots)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
build=$(cd "$1" && pwd)
export VOREL_WINE_ROOT=$build/wine-appearance
if [ -z "${VOREL_WINE_SESSION:-}" ]; then exec ./tools/run-wine.sh --session "$here/appearance.sh" "$build"; fi

work=$(mktemp -d)
pictures=$work/pictures shots=$build/viewer-screenshots
mkdir -p "$pictures" "$shots"
# shellcheck source=/dev/null
. "$here/drive.sh"

set_value() { wine reg add "HKCU\\$1" /v "$2" /t "$3" /d "$4" /f >/dev/null 2>&1 </dev/null; }
take_effect() { wineserver -k; wineserver -w; }

# windows NAME: the same windows under each appearance.
windows() {
  start_viewer "$(windows_path "$pictures/set.tif")"
  expect_title 'set.tif (page 1 of 3) - *'
  press F8
  screenshot "$1-window"
  press ctrl+i
  expect_window 'Information'
  screenshot "$1-information"
  press Escape ctrl+shift+b
  expect_window 'Batch'
  screenshot "$1-batch"
  press Escape alt+v
  sleep 1
  screenshot "$1-menu"
  press Escape Escape F8
  quit
}

make_pictures
set_value 'Control Panel\Desktop' LogPixels REG_DWORD 192
take_effect
windows 70-double-size
set_value 'Control Panel\Desktop' LogPixels REG_DWORD 96
while read -r name color; do set_value 'Control Panel\Colors' "$name" REG_SZ "$color"; done <<'END'
Window 0 0 0
WindowText 255 255 255
ButtonFace 0 0 0
ButtonText 255 255 255
ButtonHilight 255 255 255
ButtonShadow 128 128 128
Menu 0 0 0
MenuBar 0 0 0
MenuText 255 255 255
Hilight 0 255 255
HilightText 0 0 0
GrayText 0 255 0
AppWorkSpace 0 0 0
WindowFrame 255 255 255
ActiveTitle 0 0 128
TitleText 255 255 255
END
set_value 'Software\Microsoft\Windows\CurrentVersion\ThemeManager' ThemeActive REG_SZ 0
take_effect
windows 71-high-contrast
wine reg delete 'HKCU\Control Panel\Colors' /f >/dev/null 2>&1 </dev/null
wine reg delete 'HKCU\Software\Microsoft\Windows\CurrentVersion\ThemeManager' /v ThemeActive /f >/dev/null 2>&1 </dev/null
printf 'screenshots: %s\n' "$shots"
