#!/usr/bin/env bash
# Compares the public header and the finished library and codec modules of a build with the table of exports, and checks that the
# Windows modules import from system DLLs only.
# usage: export_table.sh SOURCE_FOLDER BUILD_FOLDER C_COMPILER NM OBJECTS_OF_EXPORTS...
set -euo pipefail
source=$1 build=$2 compiler=$3 nm=$4 objdump=${4%nm}objdump
objects=("${@:5}")
table=$source/src/exports/exports.txt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

# expect_same WHAT EXPECTED ACTUAL: two lists in files
expect_same() {
  if ! diff "$2" "$3" >"$scratch/diff"; then
    echo "FAILED: $1 (< expected, > found)"; cat "$scratch/diff"; failed=1
  else
    echo "ok: $1 ($(wc -l <"$2"))"
  fi
}

# rows_of BUILD: the table's rows for a build, as "ordinal|result|name|parameters".
rows_of() { awk -F ' *[|] *' -v OFS='|' -v build="$1" '!/^#/ && ($2 == "both" || $2 == build) { print $1 + 0, $3, $4, $5 }' "$table"; }

# declared BUILD: the functions that the header declares for a build, as "result|name|parameters".
declared() {
  local convention='(__attribute__\(\(__stdcall__\)\) )?'
  "$compiler" -E -xc -I"$source/include" "$source/include/vorel32.h" |
    awk '/^# / { ours = $3 ~ /vorel32\.h"$/; next } ours' | tr -s ' \n' ' ' | tr ';' '\n' |
    sed -E 's/.*__attribute__\(\(visibility\("default"\)\)\) //; s/^ //' |
    sed -nE "s/^([A-Za-z_0-9]+\*?) $convention([A-Za-z_0-9]+)\(([^()]+)\)$/\1|\3|\4/p"
}

windows_or_linux=linux
name=$(cd "$build/bin" && ls | sed -n 's/^\(VOREL[0-9]*\)\.DLL$/\1/p')
[ -z "$name" ] || windows_or_linux=windows
rows_of $windows_or_linux >"$scratch/rows"
cut -d '|' -f 2- "$scratch/rows" | LC_ALL=C sort >"$scratch/wanted"
declared $windows_or_linux | LC_ALL=C sort >"$scratch/declared"
expect_same "the header's declarations, to the names of parameters" "$scratch/wanted" "$scratch/declared"

LC_ALL=C sort >"$scratch/entries" <<'END'
BRIX SaveDIBInTGAFormat
BRIX ReportsFailedWrites
BRIX32 LoadTGAIntoDIB
BRIX32 DescribeOnly
KALO SaveDIBInJPEGFile
KALO SaveDIBInJPEGForm
KALO ReportsFailedWrites
KALO32 LoadJPEGIntoDIB
KALO32 DescribeOnly
KALO32 NameOfLibraries
MERV SAVEDIBINCALSFORMAT
MERV SaveDIBInTiffFormat
MERV ReportsFailedWrites
MERV32 GetNumberOfImagesInTiffFile
MERV32 GetTiffCompression
MERV32 LoadCALSIntoDIB
MERV32 LoadTiffIntoDIB
MERV32 DescribeOnly
MERV32 NameOfLibraries
ODAL MakeDCXFile
ODAL SaveDIBInDCXFormat
ODAL SaveDIBInPCXFormat
ODAL ReportsFailedWrites
ODAL32 GetNumberOfImagesInDCXFile
ODAL32 LoadDCXIntoDIB
ODAL32 LoadPCXIntoDIB
ODAL32 DescribeOnly
SUNE SaveDIBInGIFFormat
SUNE ReportsFailedWrites
SUNE32 GetNumberOfImagesInGIFFile
SUNE32 LoadGIFIntoDIB
SUNE32 DescribeOnly
SUNE32 NameOfLibraries
WERT SaveDIBInPNGFormat
WERT ReportsFailedWrites
WERT32 LoadPNGIntoDIB
WERT32 DescribeOnly
WERT32 NameOfLibraries
END
: >"$scratch/none"

# From objdump's output for a DLL: "ORDINAL NAME" of each export; imported DLLs that are not part of the system.
dll_exports() {
  awk '/^Ordinal Base/ { base = $3 } /^\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && /^$/ { exit }
    on { gsub(/[][]/, ""); print $1 + base, $2 }' "$1" | sort -n
}
foreign_imports() {
  sed -nE 's/^\tDLL Name: (.*)$/\1/p' "$1" | tr '[:lower:]' '[:upper:]' |
    grep -vxE '(KERNEL32|USER32|GDI32|WINSPOOL|ADVAPI32|MSVCRT)\.(DLL|DRV)' || true
}

if [ $windows_or_linux = windows ]; then
  wc -l <"$scratch/rows" | xargs seq >"$scratch/all"
  cut -d '|' -f 1 "$scratch/rows" >"$scratch/ordinals"
  expect_same "ordinals without a gap, in order" "$scratch/all" "$scratch/ordinals"

  "$objdump" -p "$build/bin/$name.DLL" >"$scratch/dll"
  dll_exports "$scratch/dll" >"$scratch/exported"
  awk -F '|' '{ print $1, $3 }' "$scratch/rows" >"$scratch/wanted"
  expect_same "the DLL's names and ordinals" "$scratch/wanted" "$scratch/exported"

  if [ "$name" = VOREL32 ]; then
    sed -nE 's/^  (.*@[0-9]+) @[0-9]+$/_\1/p' "$build/src/vorel32-decorated.def" | LC_ALL=C sort >"$scratch/wanted"
    "$nm" --defined-only "${objects[@]}" | grep -oE '_[A-Za-z_0-9]+@[0-9]+$' | grep -vx '_DllMain@12' | LC_ALL=C sort >"$scratch/compiled"
    expect_same "the stack bytes that the compiler gives each export" "$scratch/wanted" "$scratch/compiled"
  fi
  foreign_imports "$scratch/dll" >"$scratch/foreign"

  for module in $(cut -d' ' -f1 "$scratch/entries" | uniq); do
    "$objdump" -p "$build/bin/$module.DLL" >"$scratch/module"
    dll_exports "$scratch/module" | sed "s/^[0-9]* /$module /"
    foreign_imports "$scratch/module" >>"$scratch/foreign"
  done | LC_ALL=C sort >"$scratch/exported"
  expect_same "the entry points of the codec modules" "$scratch/entries" "$scratch/exported"
  expect_same "imports from system DLLs only" "$scratch/none" "$scratch/foreign"

  # Microsoft's linker: object files ask for decorated names, and the loader finds the plain ones.
  machine=i686 without_handlers=(/safeseh:no)
  [ "$name" = VOREL32 ] || machine=x86_64 without_handlers=()
  printf '#include <vorel32.h>\nint start(void) { char text[13]; GetImageVersion(text, 13); return ImgError(); }\n' >"$scratch/host.c"
  clang --target="$machine-w64-mingw32" -isystem /usr/share/mingw-w64/include -I"$source/include" -fno-stack-protector \
    -c "$scratch/host.c" -o "$scratch/host.obj"
  lld-link /nologo /subsystem:console /entry:start /nodefaultlib "${without_handlers[@]}" "$scratch/host.obj" "$build/bin/$name.lib" "/out:$scratch/host.exe"
  "$objdump" -p "$scratch/host.exe" | sed -n "/DLL Name: $name/,/^$/p" |
    grep -oE '(GetImageVersion|ImgError)$' | sort >"$scratch/imports"
  printf 'GetImageVersion\nImgError\n' >"$scratch/wanted"
  expect_same "Microsoft's linker's import library" "$scratch/wanted" "$scratch/imports"
else
  cut -d '|' -f 3 "$scratch/rows" | LC_ALL=C sort >"$scratch/wanted"
  nm -D --defined-only "$build/bin/libvorel32.so" | awk '{ print $3 }' | LC_ALL=C sort >"$scratch/exported"
  expect_same "the shared library exports the table's names and nothing else" "$scratch/wanted" "$scratch/exported"

  for name in $(cut -d' ' -f1 "$scratch/entries" | uniq); do
    nm -D --defined-only "$build/bin/$name.so" | sed "s/.* /$name /"
  done | LC_ALL=C sort >"$scratch/exported"
  expect_same "the entry points of the codec modules" "$scratch/entries" "$scratch/exported"

  # An empty element means the current folder, where anybody may have put a library.
  find "$build/bin" -type f -perm -u+x -exec readelf -d {} + | grep -E 'R(UN)?PATH.*(\[:|::|:\])' >"$scratch/unsafe" || true
  expect_same "no library is searched for in the current folder" "$scratch/none" "$scratch/unsafe"
fi
exit "$failed"
