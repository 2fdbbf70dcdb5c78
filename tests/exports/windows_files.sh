#!/usr/bin/env bash
# Every program and DLL that is installed states its version and what it is, and holds no time at which it was made.
# usage: windows_files.sh BUILD_FOLDER OBJDUMP FILE_VERSION
set -euo pipefail
build=$1 objdump=$2 version=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/installed" >/dev/null
failed=0

files=("$scratch"/installed/bin/*)
for file in "${files[@]}"; do
  name=$(basename "$file")
  strings -el "$file" >"$scratch/texts"
  after() { grep -Fx -A1 "$1" "$scratch/texts" | tail -n 1; }
  found="$(after FileVersion), $(after OriginalFilename), $("$objdump" -p "$file" | sed -nE 's/^Time\/Date\t+(.*)/\1/p' | tr -s ' ')"
  wanted="$version, $name, Thu Jan 1 00:00:00 1970"
  [ "$found" = "$wanted" ] || { echo "FAILED: $name: $found, not $wanted"; failed=1; }
  [ -n "$(after FileDescription)" ] || { echo "FAILED: $name says nothing about itself"; failed=1; }
done
echo "checked: ${#files[@]} files"
[ "${#files[@]}" -ge 15 ] || failed=1
find "$scratch/installed" -name '*unused*' | grep . && failed=1
exit "$failed"
