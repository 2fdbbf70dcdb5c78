#!/usr/bin/env bash
# Goal: ordinals and imports of the finished modules; stack pointer, registers and floating-point state after each export; results that do
# not depend on the host's rounding mode, x87 precision and stack alignment; no exception leaves an export.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks codec_modules vorel
build win32 checks make_printer codec_modules vorel vorel32_import_libraries
make_printer

for preset in native win32; do
  compiler=cc nm=nm
  [ "$preset" = native ] || compiler=i686-w64-mingw32-gcc-posix nm=i686-w64-mingw32-nm
  printf -- '-- %s: exports and imports\n' "$preset"
  mapfile -t objects < <(find "build/$preset/src/CMakeFiles/vorel_exports.dir" -name '*.o' -o -name '*.obj')
  tests/exports/export_table.sh "$root" "$root/build/$preset" "$compiler" "$nm" "${objects[@]}" || faults=$((faults + 1))
done

native rows
native host-state
windows rows
windows host-state
state_calls=$calls

# Memory that the library's own code asks for with operator new: failing, it throws. An exception that got through would end the driver.
calls=0
native exceptions
windows exceptions
[ "$calls" -ge 300 ] || fault "only $calls exceptions were thrown"
conclude "119 ordinals, imports from system DLLs alone; 10 states of the host for every row (Linux: 7, without those of the stack): the same result, stack pointer, registers and state as before; an exception in each allocation of each export stays inside" \
  "$state_calls calls in other states of the host, $calls exceptions thrown, $faults faults"
