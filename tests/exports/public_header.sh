#!/usr/bin/env bash
# Compiles the public header alone, with all warnings, by each standard that programs may use.
# usage: public_header.sh INCLUDE_FOLDER C_COMPILER CXX_COMPILER
set -euo pipefail
include=$1 c=$2 cxx=$3
source=$(mktemp)
trap 'rm -f "$source"' EXIT
printf '#include <vorel32.h>\nint size(void);\nint size(void) { return (int)sizeof(BITMAPINFOHEADER); }\n' >"$source"
failed=0

compile() {
  "$1" -x "$2" "-std=$3" -Wall -Wextra -pedantic -Werror -fsyntax-only -I"$include" "$source" && echo "ok: $3" || failed=1
}
for standard in c89 c99; do compile "$c" c $standard; done
for standard in c++98 c++20; do compile "$cxx" c++ $standard; done
exit "$failed"
