#!/usr/bin/env bash
# Installs the libraries and programs that the benchmarks compare with, on Debian 12. Nothing else needs them. Whatever cannot be
# installed is left out of the comparison.
set -euo pipefail

PACKAGES=(libleptonica-dev libopencv-core-dev libopencv-imgproc-dev libopencv-imgcodecs-dev libyuv-dev libfreeimage-dev python3-pil
          imagemagick fonts-dejavu-core graphicsmagick libvips-tools libtiff-tools libjpeg-turbo-progs netpbm)

as_root=()
[ "$(id -u)" = 0 ] || as_root=(sudo)
printf 'setup: installing %s\n' "${PACKAGES[*]}"
"${as_root[@]}" apt-get update -qq || true
for package in "${PACKAGES[@]}"; do
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$package" >/dev/null ||
    printf 'setup: %s cannot be installed; its comparisons are left out\n' "$package" >&2
done
