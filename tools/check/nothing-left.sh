#!/usr/bin/env bash
# Goal: good and failing calls of every export leave nothing, and a million calls do not grow a process.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks
build win32 checks make_printer
make_printer
times=$(by_mode 200 1000) mixed=$(by_mode 200000 1000000) windows_times=$(by_mode 20 1000) windows_mixed=$(by_mode 10000 1000000)
slow=$(by_mode 20 1000)
native nothing-left "$times" "$slow"
native mixed "$mixed" 64
windows nothing-left "$windows_times" "$slow"
windows mixed "$windows_mixed" 64
conclude "$times good and $times failing calls of each export (Windows: $windows_times; slow ones: $slow) leave 0 blocks, objects, windows, files and locks; $mixed mixed calls (Windows: $windows_mixed) grow the process by at most 64 KiB" \
  "$calls calls, $faults faults"
