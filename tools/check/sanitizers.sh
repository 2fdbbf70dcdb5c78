#!/usr/bin/env bash
# Goal "sanitizers": nothing reports: the native tests with the address and undefined-behaviour sanitizers in 64 and 32 bits (there with
# the C++ library's assertions) and with the thread sanitizer; random calls of a DLL that traps undefined behaviour and whose blocks end
# at pages without access. No report is suppressed.
# usage: sanitizers.sh quick|release
# Quick: the library's tests in 64 bits, the tests with threads under the thread sanitizer, 5,000 calls of the DLL. Release: all tests in
# 64 bits, the library's in 32 bits, these and those of files and programs under the thread sanitizer, 20,000 calls.
set -uo pipefail
cd "$(dirname "$0")/../.."
./tools/setup.sh --checks || exit 1
mode=${1:-quick}
folder=build/check/sanitizers
mkdir -p "$folder"
short=() done=()

# They need no third-party library.
own_tests=(platform_test frame_test dib_test formats_test metafile_test geometry_test kernels_test tone_test bilevel_test print_test
           display_test exports_test)
thread_tests=(platform_test frame_test display_test)
file_tests=(codec_test image_file_test page_test cli_test batch_test)

logged() { "$@" >>"$folder/build.log" 2>&1 || { tail -n 20 "$folder/build.log"; return 1; }; }

# run PRESET TEST...: builds the tests and runs them; without tests all.
run() {
  local preset=$1 pattern=. log=$folder/$1.log
  shift
  [ $# = 0 ] || pattern=$(IFS='|'; echo "^($*)$")
  logged cmake --preset "$preset" && logged cmake --build --preset "$preset" ${1:+--target "$@"} || { short+=("$preset does not build"); return; }
  ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1 TSAN_OPTIONS=halt_on_error=1 \
    ctest --test-dir "build/$preset" -j 2 -R "$pattern" --no-tests=error --output-on-failure --timeout 900 >"$log" 2>&1 || short+=("$preset ($log)")
  done+=("$preset $(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)/\2 tests, \1 failed/p' "$log")")
}

# A DLL that ends the program at undefined behaviour gives the same lines with guarded memory as an ordinary one without.
run_dll() {
  local calls=$1 lines=$folder/dll trapping=$folder/win32-trap
  : >"$lines.new"
  logged cmake --preset win32 && logged cmake --build --preset win32 --target vorel32_dll hash_results || { short+=("the DLL does not build"); return; }
  logged cmake -S . -B "$trapping" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/i686-w64-mingw32.cmake" \
    -DVOREL_TESTS=OFF -DVOREL_TRAPS=ON && logged cmake --build "$trapping" --target vorel32_dll || { short+=("the trapping DLL does not build"); return; }
  hash() { timeout -k 30 3600 ./tools/run-wine.sh build/win32/bin/hash_results.exe "$@" --count "$calls" 2>&1 | tr -d '\r'; }
  hash "$PWD/build/win32/bin/VOREL32.DLL" >"$lines.plain"
  hash "$PWD/build/win32/bin/VOREL32.DLL" --guarded 1 >"$lines.guarded"
  hash "$PWD/$trapping/bin/VOREL32.DLL" --guarded 8 >"$lines.trapping"
  for kind in guarded trapping; do
    if [ "$(wc -l <"$lines.plain")" = "$calls" ] && cmp -s "$lines.plain" "$lines.$kind"; then
      done+=("DLL $kind $calls calls")
    else
      short+=("DLL $kind: $(tail -n 1 "$lines.$kind" | cut -c 1-120)")
    fi
  done
}

: >"$folder/build.log"
if [ "$mode" = release ]; then
  run asan
  run asan32 "${own_tests[@]}"
  run tsan "${own_tests[@]}" "${file_tests[@]}"
  run_dll 20000
else
  run asan "${own_tests[@]}"
  run tsan "${thread_tests[@]}"
  run_dll 5000
fi
list() { local IFS=';'; echo "$*" | sed 's/;/; /g'; }
suppressions=$(grep -rlE 'no_sanitize|__lsan_ignore|__asan_default_options|suppressions=' src codecs apps include | wc -l)
[ "$suppressions" = 0 ] || short+=("$suppressions files suppress reports")
printf 'asked: no report, nothing suppressed | reached: %s; %d short%s\n' "$(list "${done[@]}")" "${#short[@]}" "${short[*]:+: $(list "${short[@]}")}"
[ "${#short[@]}" = 0 ]
