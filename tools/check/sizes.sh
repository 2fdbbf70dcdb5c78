#!/usr/bin/env bash
# Goal: sizes, counts and offsets that no picture has, in small blocks before a page without access.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks
build win32 checks make_printer
count=$(by_mode 146000 150000) windows_count=$(by_mode 4000 150000)
native sizes "$count" 1 1
[ "$mode" = quick ] || native sizes 20000 2 256
windows sizes "$windows_count" 1 1
asked=$((count + windows_count))
[ "$mode" = quick ] || asked=$((asked + 20000))
conclude "$asked calls with sizes of 0, -1, 2^15 to 2^31 - 1 in blocks of 48 to 512 bytes, 0 faults" "$calls calls, $faults faults"
