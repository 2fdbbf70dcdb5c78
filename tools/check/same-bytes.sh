#!/usr/bin/env bash
# Goal "same bytes everywhere": every build of the library gives the same results for the same random calls: GCC and Clang, with and
# without optimisation, 32 and 64 bits, each instruction set, the DLL under Wine.
# usage: same-bytes.sh quick|release [CALLS]   (default: 5000 calls)
# Quick: the builds marked in the table below. The first one is what the others are compared with.
set -euo pipefail
cd "$(dirname "$0")/../.."
./tools/setup.sh --checks || exit 1
mode=${1:-quick} calls=${2:-5000}
folder=build/check/same-bytes
mkdir -p "$folder"
rm -f "$folder"/*.{txt,err}
first=$folder/gcc-64-O2-sse2.txt

# name          compiler  bits  flags  quick
builds='
gcc-64-O2       gcc       64    -O2    yes
gcc-64-O0       gcc       64    -O0    no
gcc-32-O2       gcc       32    -O2    no
gcc-32-O0       gcc       32    -O0    no
clang-64-O2     clang     64    -O2    no
clang-64-O0     clang     64    -O0    no
clang-32-O2     clang     32    -O2    no
clang-32-O0     clang     32    -O0    yes
'
levels=(sse2 sse41 avx2 avx512)

logged() { "$@" >>"$folder/build.log" 2>&1 || { tail -n 20 "$folder/build.log" >&2; return 1; }; }

# Prints the folder that holds the library and hash_results.
build() {
  local name=$1 compiler=$2 bits=$3 flags=$4 width=''
  if [ "$name" = gcc-64-O2 ]; then
    logged cmake --preset native && logged cmake --build --preset native --target vorel32 hash_results && echo build/native/bin
    return
  fi
  [ "$bits" = 64 ] || width='-m32 -msse2 -mfpmath=sse'
  logged cmake -S . -B "$folder/$name" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER="$compiler" \
    -DCMAKE_CXX_COMPILER="$([ "$compiler" = gcc ] && echo g++ || echo clang++)" -DCMAKE_C_FLAGS="$width" -DCMAKE_CXX_FLAGS="$width" \
    -DCMAKE_C_FLAGS_DEBUG="$flags" -DCMAKE_CXX_FLAGS_DEBUG="$flags" -DVOREL_TESTS=OFF &&
    logged cmake --build "$folder/$name" --target vorel32 hash_results && echo "$folder/$name/bin"
}

# hash NAME LEVEL COMMAND...: the lines of a build at an instruction set; the machine's highest is used if LEVEL is higher. Runs in the
# background, one for each processor.
hash() {
  local name=$1 level=$2
  shift 2
  { VOREL_CPU_LEVEL=$level timeout -k 30 3600 "$@" --count "$calls" 2>"$folder/$name-$level.err" || cat "$folder/$name-$level.err"; } | tr -d '\r' >"$folder/$name-$level.txt" &
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n; done
}

: >"$folder/build.log"
while read -r name compiler bits flags quick; do
  [ -n "$name" ] || continue
  [ "$mode" = release ] || [ "$quick" = yes ] || continue
  bin=$(build "$name" "$compiler" "$bits" "$flags") || { printf 'asked: %d results equal in every build | reached: %s does not build\n' "$calls" "$name"; exit 1; }
  for level in "${levels[@]}"; do hash "$name" "$level" "$bin/hash_results" "$bin/libvorel32.so"; done
done <<<"$builds"

logged cmake --preset win32
logged cmake --build --preset win32 --target vorel32_dll hash_results
windows_levels=(sse2 avx512)
[ "$mode" != release ] || windows_levels=("${levels[@]}")
for level in "${windows_levels[@]}"; do
  hash win-32 "$level" ./tools/run-wine.sh build/win32/bin/hash_results.exe "$PWD/build/win32/bin/VOREL32.DLL"
done
logged cmake --preset win64
logged cmake --build --preset win64 --target vorel32_dll hash_results
for level in "${windows_levels[@]}"; do
  hash win-64 "$level" ./tools/run-wine.sh build/win64/bin/hash_results.exe "$PWD/build/win64/bin/VOREL64.DLL"
done
wait

runs=0 differing=()
for lines in "$folder"/*.txt; do
  runs=$((runs + 1))
  if ! cmp -s "$first" "$lines"; then
    name=$(basename "$lines" .txt)
    differing+=("$name")
    printf '%s differs:\n' "$name"
    { diff "$first" "$lines" || true; } | grep '^[<>]' | head -n 4
  fi
done
[ "$(wc -l <"$first")" = "$calls" ] || differing+=("the first build's own lines")
printf 'asked: %d results equal in every build | reached: %d runs of %d builds (%s); %d differ%s\n' "$calls" "$runs" \
  "$(ls "$folder"/*.txt | sed 's/-[^-]*$//' | sort -u | wc -l)" "$(ls "$folder"/*.txt | xargs -n1 basename | sed 's/-[^-]*$//' | sort -u | paste -sd ' ')" \
  "${#differing[@]}" "${differing[*]:+: ${differing[*]}}"
[ "${#differing[@]}" = 0 ]
