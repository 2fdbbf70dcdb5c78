#!/usr/bin/env bash
# Looks at the finished module of a build: what it exports is what the definitions say, and the Windows one needs nothing but
# the system's own DLLs.
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

# Ordinals are for good: 1 to 119 in order, whether built or reserved.
sed -nE 's/^(  |; )[A-Za-z_0-9]+ @([0-9]+)$/\2/p' "$definitions" >"$scratch/ordinals"
seq 119 >"$scratch/all"
expect_same "every ordinal from 1 to 119 has its line" "$scratch/all" "$scratch/ordinals"
sed -nE 's/^  ([A-Za-z_0-9]+) @([0-9]+)$/\2 \1/p' "$definitions" >"$scratch/built"

if [ -e "$build/bin/VOREL32.DLL" ]; then
  i686-w64-mingw32-objdump -p "$build/bin/VOREL32.DLL" >"$scratch/dll"
  base=$(sed -nE 's/^Ordinal Base[[:space:]]+([0-9]+)$/\1/p' "$scratch/dll")
  awk -v base="$base" '/^\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && /^$/ { exit }
    on { gsub(/[][]/, ""); print $1 + base, $2 }' "$scratch/dll" | sort -n >"$scratch/exported"
  expect_same "the DLL's names and ordinals" "$scratch/built" "$scratch/exported"

  sed -nE 's/^\tDLL Name: (.*)$/\1/p' "$scratch/dll" | tr '[:lower:]' '[:upper:]' |
    grep -vxE '(KERNEL32|USER32|GDI32|WINSPOOL|ADVAPI32|MSVCRT)\.(DLL|DRV)' >"$scratch/foreign" || true
  : >"$scratch/none"
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
  : >"$scratch/none"
  expect_same "no name that the DLL does not have" "$scratch/none" "$scratch/unknown"
fi
exit "$failed"
