#!/usr/bin/env bash
# Makes a raster of each page that print_jobs_test printed, at the resolution of its printer: DPI-pageN.pbm.
# usage: rasterise_jobs.sh FOLDER
set -euo pipefail
cd "$1"
command -v gs >/dev/null || { echo "rasterise_jobs: ghostscript is missing; tools/setup.sh installs it" >&2; exit 1; }
for list in *.expected; do
  dpi=${list%.expected}
  rm -f "$dpi"-page*.pbm
  gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pbmraw -r"$dpi" -o "$dpi-page%d.pbm" "$dpi"-*.ps
done
