#!/usr/bin/env bash
# Goal: cut files, writes that are cut or refused, full disks, files that change while they are read: no success of the command line with a
# bad file, stated results of the exports.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks vorel codec_modules make_samples
build win32 checks vorel codec_modules make_printer
make_printer
area=$root/build/check/io
rm -rf "$area"
mkdir -p "$area"/{files,few,made,full,samples}
vorel() { timeout 60 build/native/bin/vorel "$@" >/dev/null 2>&1; }

# ends STATUS WHAT: whether the command line succeeded. It knows statuses to 7: a crash and a run without end have others.
ends() {
  [ "$1" -le 7 ] || fault "$2: status $1"
  [ "$1" = 0 ]
}
# is_whole BITMAP: whether a bitmap file has the bytes that it states.
is_whole() { [ "$(od -An -tu4 -j2 -N4 "$1" | tr -d ' ')" = "$(stat -c %s "$1")" ]; }

# ---- 200 files: of other programs, and of this one in each format
tests/codecs/make_foreign_files.sh "$area/foreign" >"$area/foreign.txt"
for file in "$area"/foreign/*; do
  [[ $file == *.page*.bmp ]] || cp "$file" "$area/files/"
done
build/native/bin/make_samples "$area/samples" >"$area/samples.txt"
for size in 61x47 40x30 99x12; do
  for sample in "$area"/samples/*; do
    name=$(basename "$sample")
    for ending in bmp tif png gif pcx dcx tga jpg cal; do
      [ "$(ls "$area/files" | wc -l)" -lt 200 ] || break 3
      vorel scale "$sample" "$area/files/${name%.*}-$size.$ending" "$size"
    done
  done
done
there=$(ls "$area/files" | wc -l)
few=$(by_mode 17 200)
ls "$area/files" | awk -v step="$((there / few))" '(NR - 1) % step == 0' | while read -r name; do cp "$area/files/$name" "$area/few/"; done
few=$(ls "$area/few" | wc -l)

# ---- reading
header=$(by_mode 24 128) later=$(by_mode 8 64)
native cut-files "$area/files" "$header" "$later"
native replaced
native files
windows cut-files "Z:${area//\//\\}\\few" "$(by_mode 12 128)" "$(by_mode 4 64)"
windows replaced
windows files
drivers=$calls

# The command line on cut files: it succeeds only where the library reads the file too, and then with a whole bitmap file.
cut_tool=0
for file in "$area"/few/*; do
  size=$(stat -c %s "$file")
  for point in 0 1 10 30 54 100 $((size / 4)) $((size / 2)) $((size - 1)); do
    [ "$point" -lt "$size" ] || continue
    cut=$area/made/cut.${file##*.} out=$area/made/out.bmp what="$(basename "$file") cut to $point"
    head -c "$point" "$file" >"$cut"
    rm -f "$out"
    cut_tool=$((cut_tool + 1))
    vorel convert "$cut" "$out"
    if ends $? "$what"; then
      build/native/bin/checks load "$cut" >/dev/null 2>&1 || fault "$what: success although the library gives zero"
      vorel info "$out" && is_whole "$out" || fault "$what: success with a bad file"
    elif [ -e "$out" ]; then
      fault "$what: failure, and a file"
    fi
  done
done

# ---- writing: a limit on file sizes cuts and refuses writes, a small file system fills up
page=$area/page.bmp
cp "$(ls "$area"/samples/* | head -n 1)" "$page"
writes=0
full_disk=
if [ "$(id -u)" = 0 ] && mount -t tmpfs -o size=64k tmpfs "$area/full" 2>/dev/null; then full_disk=$area/full; fi
trap '[ -z "$full_disk" ] || umount "$full_disk"' EXIT
same_or_failed() { # STATUS MADE WANTED WHAT
  writes=$((writes + 1))
  if ends "$1" "$4"; then
    cmp -s "$2" "$3" || fault "$4: success with a bad file"
  elif [ -e "$2" ]; then
    fault "$4: failure (status $1), and a file of $(stat -c %s "$2") bytes"
  fi
}
for ending in bmp tif png gif pcx dcx tga jpg cal; do
  whole=$area/made/whole.$ending made=$area/made/made.$ending
  source=$page
  [ "$ending" != cal ] || source=$area/samples/page-1bit.bmp
  vorel convert "$source" "$whole" || { fault "$ending is not written"; continue; }
  size=$(stat -c %s "$whole")
  for limit in 0 1 $((size / 2)) $((size - 1)); do
    rm -f "$made"
    (trap '' XFSZ; exec prlimit --fsize="$limit" timeout 60 build/native/bin/vorel convert "$source" "$made") >/dev/null 2>&1
    same_or_failed $? "$made" "$whole" "$ending limited to $limit of $size bytes"
  done
  ln -sf /dev/full "$made"  # a link, so that clean-up cannot remove the device
  vorel convert "$source" "$made" --overwrite
  ends $? "$ending on a full device" && fault "$ending: success on a full device"
  rm -f "$made"
  vorel convert "$source" "$area/no-folder/made.$ending"
  ends $? "$ending without a folder" && fault "$ending: success without a folder"
  writes=$((writes + 2))
  if [ -n "$full_disk" ]; then
    rm -f "$full_disk"/*
    head -c $((65536 - (size < 49152 ? size / 2 : 16384))) /dev/zero >"$full_disk/filler" 2>/dev/null
    vorel convert "$source" "$full_disk/made.$ending"
    same_or_failed $? "$full_disk/made.$ending" "$whole" "$ending on a full disk"
  fi
done
[ "$there" -ge 200 ] || fault "only $there files"
conclude "$there files cut at $((header + later)) points each (Windows: $few), files replaced at each step, each read and write failing in turn; the command line on cut files, limits on file sizes, a full device${full_disk:+, a full disk}: no success with a bad file, stated results" \
  "$drivers calls of exports, $cut_tool cut files and $writes writes of the command line, $faults faults"
