#!/usr/bin/env bash
# Takes screenshots of the three printing dialogs: print-page.png, print-cancel.png and print-setup.png. The Wine prefix of the build
# tree must have a printer (print-to-file.sh).
# usage: print-dialogs.sh FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
run=$root/tools/run-wine.sh program=$root/build/win32/bin/show_print_dialog.exe

# Waits until something is drawn on the empty screen, and a moment longer.
wait_for_dialog() {
  for _ in $(seq 50); do
    [ "$(xwd -root -silent | convert xwd:- -format %k info:)" = 1 ] || break
    sleep 0.2
  done
  sleep 1
}

take_pictures() {
  local which
  for which in page cancel setup; do
    "$run" "$program" "$which" 4 &
    wait_for_dialog
    xwd -root -silent | convert xwd:- -trim +repage "$1/print-$which.png"
    wait $!
    echo "$1/print-$which.png"
  done
}

[ $# = 1 ] || { echo "usage: print-dialogs.sh FOLDER" >&2; exit 2; }
[ -e "$program" ] || { echo "print-dialogs: $program is missing; build the preset win32 first" >&2; exit 1; }
mkdir -p "$1"
if [ -n "${VOREL_WINE_SESSION:-}" ]; then
  take_pictures "$(realpath "$1")"
else
  exec "$run" --session "$root/tools/print-dialogs.sh" "$(realpath "$1")"
fi
