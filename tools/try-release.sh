#!/usr/bin/env bash
# Tries what release.sh has made, from dist/ alone: zips and installers under Wine in fresh prefixes, Debian packages in a fresh Debian
# (made with debootstrap), each with the sample program and the self-test. Whatever is installed is removed again, and nothing may be left.
# usage: try-release.sh [zip|installer|debian]...   (default: all; debian needs root)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
ok() { printf 'ok: %s\n' "$*"; }

version=$(basename dist/vorel32-*.tar.gz .tar.gz | sed 's/^vorel32-//')
(cd dist && sha256sum --quiet -c SHA256SUMS) || fail "SHA256SUMS"
export VOREL_WINE_ROOT=$work/wine

# try_folder FOLDER BITS: an installed folder. Runs its programs, and builds the sample with it.
try_folder() {
  local folder=$1 bits=$2 machine=i686
  [ "$bits" = 32 ] || machine=x86_64
  rm -rf "$work/try" && mkdir "$work/try"
  (
    cd "$work/try"
    "$root/tools/run-wine.sh" "$folder/bin/vorel-selftest.exe" --report report.txt >told.txt 2>&1 || { cat told.txt; fail "the self-test"; }
    grep 'checks, 0 failed' report.txt
    convert -size 60x40 gradient:red-blue scan.png
    "$machine-w64-mingw32-gcc-posix" "$folder/samples/turn.c" -I"$folder/include" -L"$folder/lib" "-lvorel$bits" -o turn.exe
    cp "$folder"/bin/*.DLL .
    "$root/tools/run-wine.sh" turn.exe scan.png upright.bmp
    "$root/tools/run-wine.sh" "$folder/bin/vorel.exe" info upright.bmp | grep -q '40 x 60' || fail "upright.bmp"
  )
}

try_zip() {
  local bits
  for bits in 32 64; do
    unzip -q "dist/vorel32-$version-win$bits.zip" -d "$work/unpacked"
    try_folder "$work/unpacked/vorel32-$version-win$bits" "$bits"
    ok "zip for $bits bits"
  done
}

# What a Wine prefix holds: files, and keys and values of its registry without times.
holdings() {
  (cd "$1" && find drive_c -path drive_c/windows/temp -prune -o -path '*/Temp/*' -prune -o -print)
  sed -E 's/^(\[.*\]) [0-9]+$/\1/; /^#time=/d' "$1"/{system,user}.reg | grep -i vorel || true
}

try_installer() {
  local bits prefix installer
  for bits in 32 64; do
    installer=$root/dist/vorel32-$version-win$bits.exe
    # The installer itself is a 32-bit program; the 64-bit system runs both kinds.
    VOREL_TRY_INSTALLER=$installer VOREL_TRY_BITS=$bits ./tools/run-wine.sh "--session${bits#32}" "$0" --inside-session
    ok "installer for $bits bits: installed, tried, removed, nothing left"
  done
}

inside_session() {
  local bits=$VOREL_TRY_BITS files programs='Program Files' scratch
  scratch=$(mktemp -d)
  settle() { wineserver -w; }
  wine cmd /c exit >/dev/null 2>&1
  settle
  holdings "$WINEPREFIX" | sort >"$scratch/before"
  wine "$VOREL_TRY_INSTALLER" /S >/dev/null 2>&1
  settle
  files=$(find "$WINEPREFIX/drive_c/$programs" -maxdepth 1 -name 'Vorel*')
  [ -d "$files" ] || fail "the installer has installed nothing"
  (VOREL_WINE_ROOT=$scratch/wine VOREL_WINE_SESSION= work=$scratch try_folder "$files" "$bits")
  wine "$files/Uninstall.exe" /S >/dev/null 2>&1
  settle
  sleep 2 # the uninstaller removes itself with a copy of itself
  settle
  holdings "$WINEPREFIX" | sort >"$scratch/after"
  diff "$scratch/before" "$scratch/after" || fail "the uninstaller leaves this behind"
  rm -rf "$scratch"
}

try_debian() {
  local system=$work/debian mirror
  mirror=$(sed -nE 's/^(deb|URIs:) *(\[.*\] *)?(https?:[^ ]*).*/\3/p' /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null | head -n 1)
  lintian --fail-on error --suppress-tags bad-distribution-in-changes-file dist/*.deb || fail "lintian"
  debootstrap --variant=minbase bookworm "$system" "$mirror" >"$work/log" 2>&1 || { tail "$work/log"; fail "debootstrap"; }
  mkdir "$system/dist" && cp dist/*.deb "$system/dist"
  cp samples/turn.c samples/turn.py "$system/dist"
  inside() { chroot "$system" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 bash -euc "$1" >"$work/log" 2>&1 || { tail -n 20 "$work/log"; fail "$2"; }; }
  inside 'apt-get update; apt-get install -y --no-install-recommends gcc libc6-dev pkg-config python3 libtiff6 libjpeg62-turbo libgif7 libpng16-16' "Debian's packages"
  inside 'find / -xdev -path /proc -prune -o -path /var -prune -o -path /dist -prune -o -print | sort >/dist/before; dpkg-query -W >/dist/packages-before' before
  inside 'apt-get install -y --no-install-recommends /dist/*.deb' "apt install"
  inside 'cd /dist; printf "P5 2 1 255 \\020\\200" | vorel convert - scan.tif
          cc turn.c -o turn $(pkg-config --cflags --libs vorel32); ./turn scan.tif upright.bmp; vorel info upright.bmp | grep "1 x 2"
          python3 -c "import vorel32; picture = vorel32.open(\"scan.tif\"); print(picture.rotate(90).size)" | grep "(1, 2)"
          cp /usr/share/vorel32/declarations/vorel32_ctypes.py .; python3 turn.py scan.tif again.bmp; cmp upright.bmp again.bmp
          man -w vorel || test -e /usr/share/man/man1/vorel.1.gz' "the packages in use"
  inside 'apt-get purge -y libvorel32-5 libvorel32-dev vorel python3-vorel32' "apt purge"
  inside 'find / -xdev -path /proc -prune -o -path /var -prune -o -path /dist -prune -o -print | sort | diff /dist/before -
          dpkg-query -W | diff /dist/packages-before -' "something is left"
  ok "Debian packages: installed, tried, removed, nothing left"
}

if [ "${1:-}" = --inside-session ]; then
  inside_session
  exit
fi
[ $# -gt 0 ] || set -- zip installer debian
for kind in "$@"; do "try_$kind"; done
