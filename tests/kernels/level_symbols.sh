#!/usr/bin/env bash
# Checks that kernels compiled for an instruction set share no function with other code. Of the copies of an inline function the
# linker keeps any one, and that one would also run on machines without the instruction set.
# usage: level_symbols.sh NM LEVEL OBJECT...
set -euo pipefail
level=$2
# Whatever belongs to a level has its namespace in its name: 5sse41. The other names are pointers: for
# exceptions, and on 64-bit Windows to data of other files.
shared=$("$1" --extern-only --defined-only "${@:3}" | awk 'NF == 3 { print $3 }' |
  grep -vE "${#level}$level|^DW\.ref\.__gxx_personality_v0$|^\.refptr\." | sort -u || true)
[ -z "$shared" ] || { echo "FAILED: $level defines symbols that other code may use:"; c++filt <<<"$shared"; exit 1; }
echo "ok: $level ($(($# - 2)) objects)"
