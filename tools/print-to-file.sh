#!/usr/bin/env bash
# Adds a PostScript printer to the Wine prefix of this build tree and makes it the default printer. Each job replaces the file.
# Programs started by run-wine.sh then print there:
#   tools/print-to-file.sh "Paper" /tmp/page.ps && tools/run-wine.sh build/win32/bin/vorel.exe print scan.tif
#   gs -q -o 'page%d.png' -sDEVICE=png16m -r150 /tmp/page.ps
# usage: print-to-file.sh NAME FILE [DPI]      (default: 300 dots per inch; A4)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
[ $# -ge 2 ] || { sed -n '2,/^set/p' "$0" | sed '$d; s/^# \{0,1\}//' >&2; exit 2; }
program=$root/build/win32/bin/make_printer.exe
[ -e "$program" ] || { echo "print-to-file: $program is missing; build the preset win32 first" >&2; exit 1; }
exec "$root/tools/run-wine.sh" "$program" "$1" "$(realpath -m "$2")" "${3:-300}"
