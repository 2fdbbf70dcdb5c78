#!/usr/bin/env bash
# Writes the export definitions with the names that callers' object files use: _Name@N, N being the bytes of the arguments.
# usage: decorate-def.sh IN.def OUT.def NM OBJECT...
set -euo pipefail
in=$1 out=$2 nm=$3
shift 3

"$nm" --defined-only "$@" | awk '
  NR == FNR { if (match($3, /^_[A-Za-z_0-9]+@[0-9]+$/)) { split(substr($3, 2), part, "@"); bytes[part[1]] = part[2] }; next }
  /^  / {
    if (!($1 in bytes)) { print "decorate-def: " $1 " is not defined" > "/dev/stderr"; exit 1 }
    print "  " $1 "@" bytes[$1] " " $2; next
  }
  { print }
' - "$in" >"$out"
