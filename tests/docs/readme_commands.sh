#!/usr/bin/env bash
# Runs what README.md shows, in order, in a folder with the pictures that its commands name: every command of the tool, and the C
# program, built by the compile line given for it.
# usage: readme_commands.sh SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
readme=$1/README.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir -p build/native
ln -s "$1/include" include
ln -s "$2/bin" build/native/bin
PATH=$PWD/build/native/bin:$PATH
fail() { printf 'FAILED: %s\n' "$*"; exit 1; }

make_samples . >/dev/null
vorel rotate page-1bit.bmp crooked.tif 2 --white
vorel convert page-1bit.bmp scan.tif
vorel convert page-1bit.bmp page.tif
vorel convert page-1bit.bmp cover.bmp
vorel convert chart-24bit.bmp photo.jpg
vorel pages join page-1bit.bmp crooked.tif fax.tif
mkdir -p scans/box-1
cp scan.tif scans/box-1

# Fenced lines that are commands of this system's tool.
awk '/^```/ { inside = !inside; next } inside && /^vorel /' "$readme" >commands
while read -r command; do
  bash -c "$command" </dev/null >output 2>&1 || { cat output; fail "$command"; }
  echo "ok: $command"
done <commands

sed -n '/^```c$/,/^```$/p' "$readme" | sed '1d;$d' >turn.c
compile=$(sed -nE 's/.*`(cc [^`]*)`.*/\1/p' "$readme")
bash -c "$compile" || fail "$compile"
vorel info upright.bmp || fail "the C program wrote no picture"
echo "ok: $compile"

rm -f upright.bmp
truncate -s 100 scan.tif
! ./turn 2>why || fail "the C program succeeds with a damaged picture"
! grep -i success why || fail "the C program calls a failure a success"
echo "ok: the C program says: $(cat why)"
