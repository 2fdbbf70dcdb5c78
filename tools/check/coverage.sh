#!/usr/bin/env bash
# Goal "coverage": tests and checks execute 95 % of the lines and 90 % of the branches of the code, branches of exceptions left out, and
# tests fail for 90 % of changes of a single token.
# usage: coverage.sh quick|release [CHANGES]
# Quick: code that Linux builds, native runs, and 6 changes, not of headers, since these build much again. Release: Windows code too, by
# runs under Wine, and 300 changes.
# Changes that cannot be noticed are not counted: equal_changes.txt lists them with the reason.
# Left out of the figures, with the reason:
#   tests, fuzz, bench, tools, check   no code of the product
#   apps/viewer, apps/cli, python      programs: tested through the screen and by their output
#   branches of src/kernels            operators of vectors: a branch for each lane where the instruction set has no such operator
#   in quick mode, what Windows alone builds, and branches of src/metafile, which only tests and fuzz targets run on Linux
set -uo pipefail
cd "$(dirname "$0")/../.."
./tools/setup.sh --checks || exit 1
mode=${1:-quick}
changes=${2:-$([ "$mode" = release ] && echo $((300 / ${VOREL_CHECK_PART:-1})) || echo 6)}
least=$(((changes * 9 + 9) / 10))
folder=$PWD/build/check/coverage copy=$PWD/build/check/coverage/source
export VOREL_WINE_ROOT=${VOREL_WINE_ROOT:-$PWD/build/wine}
mkdir -p "$copy/build"
logged() { "$@" >>"$folder/build.log" 2>&1 || { tail -n 20 "$folder/build.log"; exit 1; }; }
: >"$folder/build.log"

# A copy of the sources is built, since it takes the changes. Files that are the same are left alone, so that little is built again.
git ls-files -z | while IFS= read -r -d '' file; do
  cmp -s "$file" "$copy/$file" || cp --parents "$file" "$copy"
done
ln -sfn "$PWD/build/codecs-i686" "$copy/build/codecs-i686"
cd "$copy" || exit 1

measured=(--filter src/ --filter codecs/ --filter apps/common/ --exclude '.*\.rc')
branches=(--exclude-throw-branches --exclude-unreachable-branches)

# build NAME OPTION...: a build with counters, without optimisation.
build() {
  logged cmake -S . -B "$folder/$1" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0" -DCMAKE_C_FLAGS_DEBUG="-O0" \
    -DVOREL_COVERAGE=ON "${@:2}"
  logged cmake --build "$folder/$1"
  find "$folder/$1" -name '*.gcda' -delete
}
# measure NAME GCOV: counts of the build.
measure() {
  logged gcovr -r "$copy" --object-directory "$folder/$1" --gcov-executable "$2" --gcov-ignore-parse-errors \
    "${measured[@]}" "${branches[@]}" -j 2 --json "$folder/$1.json" "$folder/$1"
}

# run_tests NAME COMMAND...: the tests of programs that have counters; not those of the project's files and pages. A test that fails makes
# the goal fall short: it counts less, and any change would look as if it were detected.
failing=0
run_tests() {
  "${@:2}" ctest --test-dir "$folder/$1" -R '(_test|_fuzz)$|^checks_' --no-tests=error --timeout 900 >"$folder/$1-tests.log" 2>&1 && return
  failing=$((failing + $(grep -cE '\*\*\*(Failed|Timeout|Exception|Not Run)' "$folder/$1-tests.log" || echo 1)))
  grep -E '\*\*\*(Failed|Timeout|Exception|Not Run)' "$folder/$1-tests.log"
}

# run_checks NAME COMMAND...: the checks in which calls of the system fail. On Linux they are tests. Those of files are left out: the
# modules' counters are files, too, and their calls would fail.
run_checks() {
  local driver
  for driver in allocations exceptions; do
    "${@:2}" "$driver" >"$folder/$1-$driver.log" 2>&1 || { failing=$((failing + 1)); printf 'the check "%s" of %s fails\n' "$driver" "$1"; }
  done
}

build native
run_tests native env CTEST_PARALLEL_LEVEL=2
measure native gcov
reports=(-a "$folder/native.json")

if [ "$mode" = release ]; then
  build win32 -DCMAKE_TOOLCHAIN_FILE="$copy/cmake/i686-w64-mingw32.cmake"
  run_tests win32 ./tools/run-wine.sh --session
  run_checks win32 ./tools/run-wine.sh "$folder/win32/bin/checks.exe"
  measure win32 i686-w64-mingw32-gcov-posix
  reports+=(-a "$folder/win32.json")
fi
logged gcovr -r . "${reports[@]}" --txt "$folder/lines.txt" --json-summary "$folder/summary.json"
without_branches=(--exclude src/kernels/)
[ "$mode" = release ] || without_branches+=(--exclude src/metafile/)
logged gcovr -r . "${reports[@]}" "${without_branches[@]}" --txt "$folder/branches.txt" --branches --json-summary "$folder/branches.json"
percent() { /usr/bin/python3 -c 'import json, sys; print(json.load(open(sys.argv[1]))[sys.argv[2]])' "$folder/$1.json" "$2"; }
lines=$(percent summary line_percent) branch=$(percent branches branch_percent)

places=()
[ "$mode" = release ] || places=(--sources)
/usr/bin/python3 tools/check/mutate.py "$folder/native" "${places[@]}" --count "$changes" --list "$folder/survivors.txt" | tee "$folder/changes.txt"
killed=$(sed -n 's/^killed=\([0-9]*\) .*/\1/p' "$folder/changes.txt") survived=$(sed -n 's/.*survived=\([0-9]*\) .*/\1/p' "$folder/changes.txt")
total=$((killed + survived))
scope=$([ "$mode" = release ] && echo 'both builds' || echo 'what Linux builds')
printf 'asked: 95 %% of lines, 90 %% of branches, %d of %d changes killed | reached: %s %% of lines, %s %% of branches of %s; %d of %d changes killed (survivors: build/check/coverage/survivors.txt); %d failing tests and checks\n' \
  "$least" "$changes" "$lines" "$branch" "$scope" "$killed" "$total" "$failing"
awk -v l="$lines" -v b="$branch" -v k="$killed" -v t="$total" -v c="$changes" -v f="$failing" -v m="$least" \
  'BEGIN { exit !(l >= 95 && b >= 90 && t > 0 && t >= c && k >= m && f == 0) }'
