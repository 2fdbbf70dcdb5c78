#!/usr/bin/env bash
# Goal "public files": files that others made are read without a crash and within limits, with the pixels that another decoder has.
# usage: public-files.sh quick|release [FOLDER...]
# Without a folder: files made by other programs and the pictures under /usr/share, in quick mode at most 120 of these.
# environment:
#   VOREL_PUBLIC_FILES  more folders, separated by colons
set -euo pipefail
cd "$(dirname "$0")/../.."
mode=${1:-quick}
shift || true
build=build/native
mkdir -p build/check
{ cmake --preset native && cmake --build --preset native --target vorel codec_modules; } >build/check/public-files.build.log 2>&1

folders=("$@")
if [ $# = 0 ]; then
  ./tests/codecs/make_foreign_files.sh build/check/foreign >/dev/null
  mapfile -t folders < <(
    find -L build/check/foreign -type f ! -name '*.page*.bmp'
    find /usr/share -type f -size -4M -regextype egrep -iregex '.*\.(tiff?|cals?|pcx|dcx|gif|tga|jpe?g|png|bmp)' | sort |
      if [ "$mode" = quick ]; then awk 'NR % 37 == 1' | head -n 120; else cat; fi)
  IFS=: read -ra more <<<"${VOREL_PUBLIC_FILES:-}"
  folders+=("${more[@]}")
fi
list=build/check/public-files.list
outcome=0
./tools/check/public_files.py "$build/bin/vorel" "${folders[@]}" --list "$list" || outcome=1

count() { awk -v outcome="$1" 'index($0, outcome) == 1' "$list" | wc -l; }
printf 'asked: no crash, no limit met, no pixel apart by more than 3 levels | reached: %d files: %d the same, %d without a second decoder, %d refused by both, %d by us alone, %d of other kinds; %d differ, %d met a limit, %d crashed\n' \
  "$(wc -l <"$list")" "$(count same)" "$(count alone)" "$(count refused)" "$(count missed)" "$(count 'not ours')" \
  "$(count differs)" "$(count limit)" "$(count crashed)"
exit "$outcome"
