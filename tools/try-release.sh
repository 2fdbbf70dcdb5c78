#!/usr/bin/env bash
# Tries what release.sh has made, from dist/ alone: zips and installers under Wine in fresh prefixes with the samples and the self-test,
# Debian packages in a fresh Debian (made with debootstrap) with the samples, the source in a folder of its own. Whatever is installed is
# removed again, and nothing may be left.
# usage: try-release.sh [source|zip|installer|signing|debian]...   (default: all; debian needs root)
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

# The two commands that the README shows first, as one for a shell in which `vorel` is the tool.
first_commands() { grep -m 2 '^vorel ' "$1" | sed '1s/$/ \&\&/'; }

# The source builds the tool, which does what the README shows first.
try_source() {
  local folder=$work/source
  mkdir "$folder"
  tar -xzf "dist/vorel32-$version.tar.gz" -C "$folder" --strip-components=1
  (
    cd "$folder"
    { cmake --preset native -DVOREL_TESTS=OFF -DVOREL_BENCH=OFF && cmake --build --preset native -j2 --target vorel codec_modules; } \
      >"$work/log" 2>&1 || { tail -n 20 "$work/log"; fail "building the source"; }
    convert -size 60x40 gradient:red-blue -depth 8 scan.tif
    PATH=$folder/build/native/bin:$PATH
    eval "$(first_commands README.md)" || fail "the commands of the README"
  )
  ok "source: built; tool"
}

# build_samples FOLDER BITS: with what the folder has, by each way that it offers. Leaves turn.exe.
build_samples() {
  local folder=$1 bits=$2 machine=i686 names=(-machine:x86 -include:_RotateDIB90@4) csharp=() flags
  [ "$bits" = 32 ] || machine=x86_64 names=(-machine:x64 -include:RotateDIB90) csharp=(-define:VOREL64)
  cmake -S "$folder/samples" -B by-cmake -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=$machine-w64-mingw32-gcc-posix \
    -DCMAKE_PREFIX_PATH="$folder" >log && cmake --build by-cmake >>log || { cat log; fail "find_package"; }
  eval "flags=($(PKG_CONFIG_LIBDIR=$folder/lib/pkgconfig pkg-config --cflags --libs vorel32))" # it quotes spaces
  $machine-w64-mingw32-gcc-posix "$folder/samples/turn.c" "${flags[@]}" -o turn.exe || fail "pkg-config"
  # Microsoft's linker takes the other import library, which has the names as its compiler decorates them.
  lld-link -dll -noentry -out:names.dll "$folder/lib/VOREL$bits.lib" "${names[@]}" || fail "VOREL$bits.lib"
  mcs -warnaserror "${csharp[@]}" -out:turn-csharp.exe "$folder/samples/turn.cs" "$folder/declarations/Vorel32.cs" || fail "C#"
  fpc -Mdelphi -vw -Cn -FU. -FE. "-Fu$folder/declarations" -dVOREL_WINDOWS "$folder/declarations/Vorel32.pas" >log || { cat log; fail "Delphi"; }
  cp by-cmake/turn.exe by-cmake.exe
}

# try_folder FOLDER BITS: an installed folder. Runs its programs, and builds the samples with it.
try_folder() {
  local folder=$1 bits=$2 program
  rm -rf "$work/try" && mkdir "$work/try"
  (
    cd "$work/try"
    "$root/tools/run-wine.sh" "$folder/bin/vorel-selftest.exe" --report report.txt >told.txt 2>&1 || { cat told.txt; fail "the self-test"; }
    grep 'checks, 0 failed' report.txt
    convert -size 60x40 gradient:red-blue -depth 8 -units PixelsPerInch -density 200 scan.tif
    vorel() { "$root/tools/run-wine.sh" "$folder/bin/vorel.exe" "$@"; }
    eval "$(first_commands "$folder/doc/README.md")" || fail "the commands of the README"
    build_samples "$folder" "$bits"
    cp "$folder"/bin/*.DLL .
    for program in turn by-cmake; do
      rm -f upright.bmp
      "$root/tools/run-wine.sh" "$program.exe" scan.png upright.bmp
      vorel info upright.bmp | grep -q '40 x 60' || fail "upright.bmp"
    done
  )
}

try_zip() {
  local bits
  for bits in 32 64; do
    unzip -q "dist/vorel32-$version-win$bits.zip" -d "$work/unpacked"
    mv "$work/unpacked/vorel32-$version-win$bits" "$work/moved to $bits"
    try_folder "$work/moved to $bits" "$bits"
    ok "zip for $bits bits: moved; self-test, tool, samples"
  done
}

# What a Wine prefix holds: files, and keys and values of its registry without times.
holdings() {
  (cd "$1" && find drive_c -path drive_c/windows/temp -prune -o -path '*/Temp/*' -prune -o -print)
  sed -nE 's/^(\[.*\]) [0-9]+$/\1/p' "$1"/{system,user}.reg
  grep -i vorel "$1"/{system,user}.reg || true
}

try_installer() {
  local bits
  for bits in 32 64; do
    # The installer itself is a 32-bit program; the 64-bit system runs both kinds.
    VOREL_TRY_INSTALLER=$root/dist/vorel32-$version-win$bits.exe VOREL_TRY_BITS=$bits \
      ./tools/run-wine.sh "--session${bits#32}" "$0" --inside-session
    ok "installer for $bits bits: installed with and without file types, tried, removed, nothing left"
  done
}

# install_and_remove FOLDER OPTION COMMAND: runs the command while the library is installed, and compares what there is before and after.
install_and_remove() {
  local scratch=$1 choice=$2 command=$3 installed
  holdings "$WINEPREFIX" | sort >"$scratch/before"
  wine "$VOREL_TRY_INSTALLER" /S ${choice:+"$choice"} >/dev/null 2>&1
  wineserver -w
  installed=$(find "$WINEPREFIX/drive_c/Program Files" -maxdepth 1 -name 'Vorel*')
  [ -d "$installed" ] || fail "the installer has installed nothing"
  "$command" "$installed"
  wine "$installed/Uninstall.exe" /S >/dev/null 2>&1
  wineserver -w
  sleep 2 # the uninstaller is removed by a copy of itself
  wineserver -w
  holdings "$WINEPREFIX" | sort >"$scratch/after"
  ! comm -13 "$scratch/before" "$scratch/after" | grep . || fail "the uninstaller leaves this behind"
}

without_file_types() {
  ! grep -q "Vorel$VOREL_TRY_BITS.Picture" "$WINEPREFIX"/*.reg || fail "file types are registered without being asked for"
  (VOREL_WINE_ROOT=$scratch/wine VOREL_WINE_SESSION='' work=$scratch try_folder "$1" "$VOREL_TRY_BITS")
}

with_file_types() {
  local class=Vorel$VOREL_TRY_BITS.Picture
  wine reg query "HKCR\\.tif\\OpenWithProgids" /v "$class" >/dev/null 2>&1 || fail "pictures are not registered"
  wine reg query "HKCR\\$class\\shell\\open\\command" 2>/dev/null | grep -q 'vorelview.exe" "%1"' || fail "no command opens pictures"
  wineserver -w
}

inside_session() {
  local scratch
  scratch=$(mktemp -d)
  export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winemenubuilder.exe=d" # it would add the shortcuts to the menu of this machine
  wine cmd /c exit >/dev/null 2>&1
  wineserver -w
  install_and_remove "$scratch" '' without_file_types
  install_and_remove "$scratch" /FILETYPES=1 with_file_types
  rm -rf "$scratch"
}

# The steps of cpack that sign, with a throw-away key, on what the 64-bit zip and installer hold.
try_signing() {
  local folder=$work/signed file count=0
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj '/CN=Throw-away' -addext extendedKeyUsage=codeSigning \
    -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
  openssl pkcs12 -export -inkey "$work/key.pem" -in "$work/certificate.pem" -passout pass:secret -out "$work/key.p12"
  unzip -q "dist/vorel32-$version-win64.zip" -d "$folder"
  cp "dist/vorel32-$version-win64.exe" "$work/installer.exe"
  export VOREL_SIGN_PASSWORD=secret
  cmake "-DCPACK_VOREL_SIGN_WITH=$work/key.p12" "-DCPACK_TEMPORARY_DIRECTORY=$folder" -P cmake/pack/prepare.cmake
  cmake "-DCPACK_VOREL_SIGN_WITH=$work/key.p12" "-DCPACK_PACKAGE_FILES=$work/installer.exe" -P cmake/pack/finish.cmake
  while read -r file; do
    osslsigncode verify -CAfile "$work/certificate.pem" -in "$file" >"$work/log" || { cat "$work/log"; fail "the signature of $file"; }
    count=$((count + 1))
  done < <(find "$folder" "$work/installer.exe" -name '*.exe' -o -name '*.DLL')
  ./tools/run-wine.sh "$folder/vorel32-$version-win64/bin/vorel.exe" --version >/dev/null || fail "a signed program"
  ok "signing: $count files signed, verified, and one run"
}

try_debian() {
  local system=$work/debian mirror
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' | sed -n 1p)
  lintian --fail-on error --suppress-tags bad-distribution-in-changes-file dist/*.deb || fail "lintian"
  debootstrap --variant=minbase bookworm "$system" "$mirror" >"$work/log" 2>&1 || { tail "$work/log"; fail "debootstrap"; }
  mkdir "$system/dist" && cp dist/*.deb "$system/dist"
  inside() { chroot "$system" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 bash -euc "$1" >"$work/log" 2>&1 || { tail -n 20 "$work/log"; fail "$2"; }; }
  inside 'apt-get update
          apt-get install -y --no-install-recommends gcc libc6-dev cmake make pkg-config python3 libtiff6 libjpeg62-turbo libgif7 libpng16-16' \
    "Debian's packages"
  inside 'find / -xdev -path /proc -prune -o -path /var -prune -o -path /dist -prune -o -print | sort >/dist/before; dpkg-query -W >/dist/packages-before' before
  inside 'cd /dist; apt-get install -y --no-install-recommends ./*.deb' "apt install"
  inside "mkdir /try; cd /try; printf 'P5 2 1 255 \\020\\200' | vorel convert - scan.tif
          $(first_commands README.md)" "the commands of the README"
  inside 'cd /try; cc /usr/share/doc/vorel32/examples/turn.c -o turn $(pkg-config --cflags --libs vorel32)
          ./turn scan.tif upright.bmp; vorel info upright.bmp | grep "1 x 2"
          cmake -S /usr/share/doc/vorel32/examples -B by-cmake; cmake --build by-cmake
          by-cmake/turn scan.tif again.bmp; cmp upright.bmp again.bmp
          cp /usr/share/vorel32/declarations/vorel32_ctypes.py /usr/share/doc/vorel32/examples/turn.py .
          python3 turn.py scan.tif again.bmp; cmp upright.bmp again.bmp
          python3 -c "import vorel32; picture = vorel32.open(\"scan.tif\"); print(picture.rotate(90).size)" | grep "(1, 2)"
          test -e /usr/share/man/man1/vorel.1.gz; rm -r /try' "the packages in use"
  inside 'apt-get purge -y libvorel32-5 libvorel32-dev vorel python3-vorel32' "apt purge"
  inside 'find / -xdev -path /proc -prune -o -path /var -prune -o -path /dist -prune -o -print | sort | diff /dist/before -
          dpkg-query -W | diff /dist/packages-before -' "something is left"
  ok "Debian packages: installed, tried, removed, nothing left"
}

if [ "${1:-}" = --inside-session ]; then
  inside_session
  exit
fi
[ $# -gt 0 ] || set -- source zip installer signing debian
for kind in "$@"; do "try_$kind"; done
