#!/usr/bin/env bash
# Installs the build, moves it elsewhere, and builds the sample there as a project of its own: by find_package and by pkg-config. Both
# programs must turn a picture as the tool does.
# usage: installed.sh SOURCE_FOLDER BUILD_FOLDER C_COMPILER VERSION
set -euo pipefail
source=$1 build=$2 compiler=$3 version=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { printf 'FAILED: %s\n' "$*"; exit 1; }

cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
installed=$work/moved
cp -r "$source/samples" "$work/sample"
cd "$work"

system=() ending='' run=() pictures=$build/bin
if [ -n "$(find "$installed/bin" -name 'VOREL*.DLL')" ]; then
  system=(-DCMAKE_SYSTEM_NAME=Windows) ending=.exe run=("$source/tools/run-wine.sh")
fi
cmake -S sample -B built "${system[@]}" -DCMAKE_C_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$installed" >log 2>&1 &&
  cmake --build built >>log 2>&1 || { cat log; fail "find_package"; }
package=$(find "$installed" -name vorel32.pc)
export PKG_CONFIG_PATH=${package%/*} PKG_CONFIG_ALLOW_SYSTEM_CFLAGS=1
[ "$(pkg-config --modversion vorel32)" = "$version" ] || fail "pkg-config names another version"
read -ra flags < <(pkg-config --cflags --libs vorel32)
"$compiler" sample/turn.c -o "turn$ending" "${flags[@]}" || fail "pkg-config"

"${run[@]}" "$pictures/make_samples$ending" . >/dev/null
"${run[@]}" "$installed/bin/vorel$ending" rotate chart-24bit.bmp expected.bmp 90
mv "built/turn$ending" "by-cmake$ending"
[ -z "$ending" ] || cp "$installed"/bin/*.DLL .
export LD_LIBRARY_PATH=$(dirname "$(find "$installed" -name 'libvorel32.so' -o -name 'VOREL*.DLL' | head -n 1)")
for program in turn by-cmake; do
  "${run[@]}" "$work/$program$ending" chart-24bit.bmp turned.bmp || fail "$program"
  "${run[@]}" "$installed/bin/vorel$ending" compare turned.bmp expected.bmp >/dev/null || fail "$program gives another picture"
  rm turned.bmp
done
echo "ok: find_package and pkg-config, in $(find "$installed" -type f | wc -l) files"
