#!/usr/bin/env bash
# Looks at the finished library and codec modules of a build: what they export is what the definitions say, and the Windows ones
# need nothing but the system's own DLLs.
# usage: export_table.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
source=$1 build=$2
definitions=$source/src/exports/vorel32.def
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

# Ordinals are for good: 1 to 119 in order.
sed -nE 's/^  [A-Za-z_0-9]+ @([0-9]+)$/\1/p' "$definitions" >"$scratch/ordinals"
seq 119 >"$scratch/all"
expect_same "every ordinal from 1 to 119 has its name" "$scratch/all" "$scratch/ordinals"
sed -nE 's/^  ([A-Za-z_0-9]+) @([0-9]+)$/\2 \1/p' "$definitions" >"$scratch/built"

LC_ALL=C sort >"$scratch/entries" <<'END'
BRIX SaveDIBInTGAFormat
BRIX32 LoadTGAIntoDIB
KALO SaveDIBInJPEGFile
KALO32 LoadJPEGIntoDIB
MERV SAVEDIBINCALSFORMAT
MERV SaveDIBInTiffFormat
MERV32 GetNumberOfImagesInTiffFile
MERV32 GetTiffCompression
MERV32 LoadCALSIntoDIB
MERV32 LoadTiffIntoDIB
ODAL MakeDCXFile
ODAL SaveDIBInDCXFormat
ODAL SaveDIBInPCXFormat
ODAL32 GetNumberOfImagesInDCXFile
ODAL32 LoadDCXIntoDIB
ODAL32 LoadPCXIntoDIB
SUNE SaveDIBInGIFFormat
SUNE32 GetNumberOfImagesInGIFFile
SUNE32 LoadGIFIntoDIB
WERT SaveDIBInPNGFormat
WERT32 LoadPNGIntoDIB
END
: >"$scratch/none"

# What the tables of a DLL say: "ORDINAL NAME" of each export; the DLLs that it needs and that are not the system's.
dll_exports() {
  awk '/^Ordinal Base/ { base = $3 } /^\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && /^$/ { exit }
    on { gsub(/[][]/, ""); print $1 + base, $2 }' "$1" | sort -n
}
foreign_imports() {
  sed -nE 's/^\tDLL Name: (.*)$/\1/p' "$1" | tr '[:lower:]' '[:upper:]' |
    grep -vxE '(KERNEL32|USER32|GDI32|WINSPOOL|ADVAPI32|MSVCRT)\.(DLL|DRV)' || true
}

if [ -e "$build/bin/VOREL32.DLL" ]; then
  i686-w64-mingw32-objdump -p "$build/bin/VOREL32.DLL" >"$scratch/dll"
  dll_exports "$scratch/dll" >"$scratch/exported"
  expect_same "the DLL's names and ordinals" "$scratch/built" "$scratch/exported"
  foreign_imports "$scratch/dll" >"$scratch/foreign"

  for name in $(cut -d' ' -f1 "$scratch/entries" | uniq); do
    i686-w64-mingw32-objdump -p "$build/bin/$name.DLL" >"$scratch/module"
    dll_exports "$scratch/module" | sed "s/^[0-9]* /$name /"
    foreign_imports "$scratch/module" >>"$scratch/foreign"
  done | LC_ALL=C sort >"$scratch/exported"
  expect_same "the entry points of the codec modules" "$scratch/entries" "$scratch/exported"
  expect_same "no imports but the system's" "$scratch/none" "$scratch/foreign"

  # A program for the other linker: its objects ask for _Name@N, and the loader finds the plain name.
  printf '#include <vorel32.h>\nint start(void) { char text[13]; GetImageVersion(text, 13); return ImgError(); }\n' >"$scratch/host.c"
  clang --target=i686-w64-mingw32 -isystem /usr/share/mingw-w64/include -I"$source/include" -fno-stack-protector \
    -c "$scratch/host.c" -o "$scratch/host.obj"
  lld-link /nologo /subsystem:console /entry:start /nodefaultlib /safeseh:no "$scratch/host.obj" "$build/bin/VOREL32.lib" "/out:$scratch/host.exe"
  i686-w64-mingw32-objdump -p "$scratch/host.exe" | sed -n '/DLL Name: VOREL32/,/^$/p' |
    grep -oE '(GetImageVersion|ImgError)$' | sort >"$scratch/imports"
  printf 'GetImageVersion\nImgError\n' >"$scratch/wanted"
  expect_same "Microsoft's linker's import library" "$scratch/wanted" "$scratch/imports"
else
  sed -nE 's/^    ([A-Za-z0-9_]+);$/\1/p' "$source/src/exports/libvorel32.map" | sort >"$scratch/wanted"
  nm -D --defined-only "$build/bin/libvorel32.so" | awk '{ print $3 }' | sort >"$scratch/exported"
  expect_same "the shared library exports the map's names alone" "$scratch/wanted" "$scratch/exported"
  cut -d' ' -f2 "$scratch/built" | sort >"$scratch/names"
  comm -23 "$scratch/wanted" "$scratch/names" | grep -v '^Global' >"$scratch/unknown" || true
  expect_same "no name that the DLL does not have" "$scratch/none" "$scratch/unknown"

  for name in $(cut -d' ' -f1 "$scratch/entries" | uniq); do
    nm -D --defined-only "$build/bin/$name.so" | sed "s/.* /$name /"
  done | LC_ALL=C sort >"$scratch/exported"
  expect_same "the entry points of the codec modules" "$scratch/entries" "$scratch/exported"

  # An empty element stands for the current folder, where anything may lie.
  find "$build/bin" -type f -perm -u+x -exec readelf -d {} + | grep -E 'R(UN)?PATH.*(\[:|::|:\])' >"$scratch/unsafe" || true
  expect_same "no library is looked for in the current folder" "$scratch/none" "$scratch/unsafe"
fi
exit "$failed"
