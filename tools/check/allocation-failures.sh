#!/usr/bin/env bash
# Goal: each allocation, lock and object of a good call of every export fails in turn, once and from then on.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks
build win32 checks make_printer
make_printer

# A crash ends the program, so the run continues with the next row.
all_rows() {
  local runner=$1 after='' part=build/check/allocations-$1.part
  while :; do
    "$runner" allocations "$after" | tee "$part"
    after=$(sed -n 's/^FAULT crash in \(.*\): -\{0,1\}[0-9]* (signal [0-9]*)\r\{0,1\}$/\1/p' "$part" | tail -n 1)
    [ -n "$after" ] || break
  done
}
count_faults < <(all_rows run_native)
native_calls=$calls
count_faults < <(all_rows run_windows)
[ "$calls" -ge 1500 ] || faults=$((faults + 1))
conclude "at least 1500 injected failures: zero result, stated code, input unchanged, no block, GDI object or window left" \
  "$calls injected failures (native $native_calls, Windows $((calls - native_calls))), $faults faults"
