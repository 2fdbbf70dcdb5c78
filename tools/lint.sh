#!/usr/bin/env bash
# Checks formatting, and runs clang-tidy on the code of the native build. Changes nothing.
# usage: lint.sh [--fix]   (--fix formats the sources)
set -euo pipefail
cd "$(dirname "$0")/.."
for program in clang-format clang-tidy; do
  command -v "$program" >/dev/null || { echo "lint: $program is missing; apt-get install $program" >&2; exit 1; }
done
mapfile -t sources < <(git ls-files '*.h' '*.cpp' '*.c')
if [ "${1:-}" = --fix ]; then
  clang-format -i "${sources[@]}"
else
  clang-format --dry-run --Werror "${sources[@]}"
fi
[ -e build/native/compile_commands.json ] || cmake --preset native >/dev/null
# Sources of these folders that the native build compiles.
mapfile -t native < <(sed -nE "s|^ *\"file\": \"$PWD/((src\|apps\|codecs)/.*)\",?$|\1|p" build/native/compile_commands.json | sort -u)
printf '%s\0' "${native[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p build/native 2>/dev/null
echo "lint: clean"
