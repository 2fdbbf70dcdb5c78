#!/usr/bin/env bash
# Goal "coverage": tests execute 95 % of the lines and 90 % of the branches of the code, branches of exceptions left out, and fail for
# 90 % of changes of a single token.
# usage: coverage.sh quick|release [CHANGES]
# Quick: code that Linux builds, native tests, and 6 changes. Release: Windows code too, by its tests under Wine, and 300 changes.
# Left out of the figures, with the reason:
#   tests, fuzz, bench, tools, check   no code of the product
#   apps/viewer, apps/cli              programs: tested through the screen and by their output
#   in quick mode, what Windows alone builds
set -uo pipefail
cd "$(dirname "$0")/../.."
./tools/setup.sh --checks || exit 1
mode=${1:-quick}
changes=${2:-$([ "$mode" = release ] && echo 300 || echo 6)}
folder=$PWD/build/check/coverage
mkdir -p "$folder"
logged() { "$@" >>"$folder/build.log" 2>&1 || { tail -n 20 "$folder/build.log"; exit 1; }; }
: >"$folder/build.log"

measured=(--filter src/ --filter codecs/ --filter apps/common/ --exclude '.*\.rc')
branches=(--exclude-throw-branches --exclude-unreachable-branches)

# measure NAME GCOV: counts of the build in $folder/NAME.
measure() {
  (cd "$folder/$1" && gcovr -r "$folder/../../.." --object-directory "$folder/$1" --gcov-executable "$2" "${measured[@]}" "${branches[@]}" \
    -j 2 --json "$folder/$1.json") >>"$folder/build.log" 2>&1 || { tail -n 20 "$folder/build.log"; exit 1; }
}

logged cmake -S . -B "$folder/native" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0" -DCMAKE_C_FLAGS_DEBUG="-O0" \
  -DVOREL_COVERAGE=ON
logged cmake --build "$folder/native"
find "$folder/native" -name '*.gcda' -delete
# The instruction sets below the machine's own run too.
ctest --test-dir "$folder/native" --timeout 600 >"$folder/tests.log" 2>&1 || echo 'some tests fail in the coverage build: see tests.log'
measure native gcov
reports=(-a "$folder/native.json")

if [ "$mode" = release ]; then
  logged cmake -S . -B "$folder/win32" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0" -DCMAKE_C_FLAGS_DEBUG="-O0" \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/i686-w64-mingw32.cmake" -DVOREL_COVERAGE=ON
  logged cmake --build "$folder/win32"
  find "$folder/win32" -name '*.gcda' -delete
  ./tools/run-wine.sh --session ctest --test-dir "$folder/win32" --timeout 900 >"$folder/win32-tests.log" 2>&1 ||
    echo 'some tests fail in the coverage build: see win32-tests.log'
  measure win32 i686-w64-mingw32-gcov-posix
  reports+=(-a "$folder/win32.json")
fi
gcovr -r . "${reports[@]}" --txt "$folder/lines.txt" --json-summary "$folder/summary.json" >>"$folder/build.log" 2>&1
gcovr -r . "${reports[@]}" --txt "$folder/branches.txt" --branches >>"$folder/build.log" 2>&1
read -r lines branch < <(/usr/bin/python3 -c '
import json, sys
summary = json.load(open(sys.argv[1]))
print(summary["line_percent"], summary["branch_percent"])' "$folder/summary.json")

# A copy of the sources takes the changes.
rm -rf "$folder/changed"
mkdir -p "$folder/changed"
git ls-files -z | xargs -0 cp --parents -t "$folder/changed"
cd "$folder/changed" || exit 1
logged cmake -S . -B "$folder/mutants" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0" -DCMAKE_C_FLAGS_DEBUG="-O0"
/usr/bin/python3 tools/check/mutate.py "$folder/mutants" --count "$changes" --list "$folder/survivors.txt" | tee "$folder/changes.txt"
killed=$(sed -n 's/^killed=\([0-9]*\) .*/\1/p' "$folder/changes.txt") survived=$(sed -n 's/.*survived=\([0-9]*\) .*/\1/p' "$folder/changes.txt")
total=$((killed + survived))
scope=$([ "$mode" = release ] && echo 'both builds' || echo 'what Linux builds')
printf 'asked: 95 %% of lines, 90 %% of branches, 90 %% of %d changes killed | reached: %s %% of lines, %s %% of branches of %s; %d of %d changes killed (survivors: build/check/coverage/survivors.txt)\n' \
  "$changes" "$lines" "$branch" "$scope" "$killed" "$total"
awk -v l="$lines" -v b="$branch" -v k="$killed" -v t="$total" 'BEGIN { exit !(l >= 95 && b >= 90 && t > 0 && k >= t * 0.9) }'
