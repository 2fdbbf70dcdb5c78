#!/usr/bin/env bash
# Drives the viewer with real keys and a real mouse on a virtual screen, checks what it shows, and keeps what it looked like in
# out/viewer. Called by demo.sh and, in its short form, by the tests.
# usage: demo-viewer.sh [--short] [BUILD]   (BUILD: folder of the Windows build, build/win32 beside tools by default)
# environment:
#   VOREL_SHOTS  where the short form keeps its screenshots (default: nowhere)
set -euo pipefail
cd "$(dirname "$0")/.."
if [ -z "${VOREL_WINE_SESSION:-}" ]; then exec ./tools/run-wine.sh --session "$0" "$@"; fi

form=whole
if [ "${1:-}" = --short ]; then form=short; shift; fi
build=${1:-build/win32}
work=$(mktemp -d)
pictures=$work/pictures shots=out/viewer
[ $form = whole ] || shots=${VOREL_SHOTS:-$work/shots}
mkdir -p "$pictures" "$shots"
viewer=

end() {
  local status=$?
  [ -z "$viewer" ] || kill "$viewer" 2>/dev/null || true
  [ $status = 0 ] || { cp "$shots"/*.png "$build" 2>/dev/null || true; }
  rm -rf "$work"
}
trap end EXIT

fail() { printf 'demo-viewer: %s (the title is "%s")\n' "$*" "$(title)" >&2; screenshot failed; exit 1; }

start_viewer() {
  ./tools/run-wine.sh "$build/bin/vorelview.exe" "$@" &
  viewer=$!
}

title() { xdotool search --name ' - Vorel Viewer$' getwindowname 2>/dev/null | head -1; }

# patiently COMMAND...: repeats a command until it succeeds, for at most ten seconds.
patiently() {
  for _ in $(seq 100); do
    "$@" && return 0
    sleep 0.1
  done
  return 1
}

title_is() { local now; now=$(title); [[ $now == $1 ]]; }
expect_title() { patiently title_is "$1" || fail "no title \"$1\" came up"; }

window_is_there() { xdotool search --onlyvisible --name "$1" >/dev/null 2>&1; }
window_is_gone() { ! window_is_there "$1"; }
expect_window() { patiently window_is_there "$1" || fail "no window \"$1\" came up"; }
expect_no_window() { patiently window_is_gone "$1" || fail "the window \"$1\" did not close"; }

# screenshot NAME: takes the screen once it has come to rest.
screenshot() {
  local before= now=
  for _ in $(seq 50); do
    import -silent -window root -crop 1280x900+0+0 +repage "$work/screen.ppm"
    now=$(md5sum <"$work/screen.ppm")
    [ "$now" != "$before" ] || break
    before=$now
    sleep 0.2
  done
  convert "$work/screen.ppm" "$shots/$1.png"
}

# color_at NAME X Y: a pixel of a screenshot, as rrggbb.
color_at() { convert "$shots/$1.png" -crop "1x1+$2+$3" -depth 8 rgb:- | od -An -tx1 | tr -d ' \n'; }
expect_color() {
  local found
  found=$(color_at "$1" "$2" "$3")
  [ "$found" = "$4" ] || fail "$1: pixel $2,$3 is $found, not $4"
}

# How many pixels of two screenshots differ, around the picture's middle, where no text is.
difference() { compare -metric AE -extract 800x560+60+80 "$shots/$1.png" "$shots/$2.png" null: 2>&1 || true; }
expect_same() { [ "$(difference "$1" "$2")" = 0 ] || fail "$1 and $2 differ"; }
expect_different() { [ "$(difference "$1" "$2")" != 0 ] || fail "$1 and $2 are the same"; }

press() { xdotool key --delay 30 "$@"; }
enter() { xdotool type --delay 20 "$1"; press Return; }
drag() { xdotool mousemove "$1" "$2" mousedown 1 mousemove "$((($1 + $3) / 2))" "$((($2 + $4) / 2))" mousemove "$3" "$4"; }

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

tool() { ./tools/run-wine.sh "$build/bin/$1.exe" "${@:2}"; }

make_pictures() {
  tool make_samples "$pictures" >/dev/null
  tool vorel pages join "$pictures"/page-1bit.bmp "$pictures"/chart-24bit.bmp "$pictures"/chart-4bit.bmp "$pictures/set.tif"
  printf 'This is no picture, whatever its name says.\n' >"$pictures/damaged.png"
}

# The chart has circles on stripes in its lower part; the yellow one is about here when the window shows all of it.
yellow_x=240 yellow_y=610

view_and_zoom() {
  start_viewer "$(windows_path "$pictures/chart-24bit.bmp")"
  expect_title 'chart-24bit.bmp - 79 % - Vorel Viewer'
  screenshot 01-fits-the-window
  expect_color 01-fits-the-window $yellow_x $yellow_y ffff00

  press 1
  expect_title 'chart-24bit.bmp - 100 % - Vorel Viewer'
  press plus plus
  expect_title 'chart-24bit.bmp - 200 % - Vorel Viewer'
  screenshot 02-zoomed-in
  expect_different 01-fits-the-window 02-zoomed-in
  press minus minus minus f
  expect_title '* - 79 % - *'
}

band() {
  drag 180 540 310 680
  screenshot 03-band
  expect_different 01-fits-the-window 03-band
  xdotool mouseup 1
  expect_title 'chart-24bit.bmp - [34]?? % - *'
  screenshot 04-zoomed-by-band
  expect_color 04-zoomed-by-band 470 380 ffff00
  press f
  expect_title '* - 79 % - *'
}

lens() {
  xdotool mousemove 470 390
  screenshot 05-without-lens
  xdotool keydown space
  sleep 0.5
  xdotool mousemove 560 500 mousemove 640 540
  screenshot 06-lens
  xdotool keyup space
  screenshot 07-lens-gone
  expect_different 05-without-lens 06-lens
  expect_same 05-without-lens 07-lens-gone
}

process() {
  press i
  screenshot 08-inverted
  expect_color 08-inverted $yellow_x $yellow_y 0000ff
  press i m
  expect_title 'chart-24bit.bmp\* - 79 % - *'
  screenshot 09-mirrored
  expect_color 09-mirrored $yellow_x $yellow_y 0000ff
  press ctrl+z
  expect_title 'chart-24bit.bmp - *'
  screenshot 10-undone
  expect_same 01-fits-the-window 10-undone
}

save() {
  press ctrl+s
  expect_window 'Save As'
  screenshot 11-save-as
  enter "$(windows_path "$pictures/saved.png")"
  expect_no_window 'Save As'
  expect_title 'saved.png - *'
  tool vorel info "$pictures/saved.png" | grep -q '1200 x 800' || fail "saved.png is not what was shown"
}

leave() {
  press ctrl+q
  wait "$viewer" || fail "the viewer ended with code $?"
  viewer=
}

# ---- What the long form shows besides ----

sizes_and_wheel() {
  press w
  expect_title '* - 7[0-9] % - *'
  screenshot 12-fits-the-width
  press t
  screenshot 13-stretched
  expect_different 12-fits-the-width 13-stretched
  press f z 1
  expect_title '* - 67 % - *'  # 96 dots per inch of the screen to 150 of the picture, as near as the display's halving gets
  screenshot 14-by-resolution
  press z f
  expect_title '* - 79 % - *'
  xdotool mousemove $yellow_x $yellow_y keydown ctrl click --repeat 3 4 keyup ctrl
  expect_title '* - 200 % - *'
  screenshot 15-zoomed-by-wheel
  expect_color 15-zoomed-by-wheel $yellow_x $yellow_y ffff00
  xdotool click --repeat 3 --delay 100 4
  screenshot 16-scrolled-by-wheel
  expect_different 15-zoomed-by-wheel 16-scrolled-by-wheel
  press End
  screenshot 17-at-the-end
  press f
  xdotool mousemove 400 10 click --repeat 2 --delay 50 1  # the title bar: as large as the screen
  expect_title '* - 10[67] % - *'
  screenshot 18-maximised
  expect_color 18-maximised 320 810 ffff00
  xdotool click --repeat 2 --delay 50 1
  expect_title '* - 79 % - *'
}

dialogs_and_operations() {
  press a
  expect_window 'By an angle'
  screenshot 19-angle
  enter 10
  expect_no_window 'By an angle'
  screenshot 20-turned
  press ctrl+z d
  screenshot 21-dithered
  press ctrl+z c
  expect_window 'Clean'
  press Return
  expect_no_window 'Clean'
  screenshot 22-reason-in-the-status-bar
  press alt+p c
  sleep 1
  screenshot 23-menu
  press Escape Escape Escape
}

files_and_pages() {
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$pictures/set.tif")"
  answer_question
  expect_title 'set.tif (page 1 of 3) - *'
  screenshot 25-page-1
  press Next Next
  expect_title 'set.tif (page 3 of 3) - *'
  screenshot 26-page-3
  press Next
  screenshot 27-no-page-4
  press Prior
  expect_title 'set.tif (page 2 of 3) - *'
  press ctrl+Left
  expect_title 'saved.png - *'
  press ctrl+Left ctrl+Left ctrl+Left
  screenshot 28-damaged-file
  press ctrl+Left
  expect_title 'chart-24bit.bmp - *'
  press ctrl+Right ctrl+Right
  expect_title 'page-1bit.bmp - *'
  press 1
  screenshot 29-page-at-its-size
  press f
  xdotool mousemove 400 200 keydown space
  sleep 0.5
  xdotool mousemove 420 230
  screenshot 30-lens-on-page
  xdotool keyup space
}

# box_of PICTURE CONVERT_OPTIONS...: what is left of a picture when edges of one colour are trimmed, as "width height left top".
box_of() { convert "$1" "${@:2}" -format '%@' info: | tr 'x+' '  '; }

# Where the picture lies on a sheet, in thousandths of the sheet.
box_on_sheet() {
  local width height box
  read -r width height <<<"$(identify -format '%w %h' "$1")"
  read -ra box <<<"$(box_of "$1" -fuzz 12%)"
  echo $((box[0] * 1000 / width)) $((box[1] * 1000 / height)) $((box[2] * 1000 / width)) $((box[3] * 1000 / height))
}

# Where the picture lies on the paper of the preview: the desk around the paper has a colour of its own.
previewed_box() {
  local X Y WIDTH HEIGHT desk shot=$work/paper.png
  eval "$(xdotool search --onlyvisible --name '^Print Preview' getwindowgeometry --shell | grep -E '^(X|Y|WIDTH|HEIGHT)=')"
  convert "$shots/$1.png" -crop "${WIDTH}x$HEIGHT+$X+$Y" +repage "$shot"
  read -ra desk <<<"$(box_of "$shot" -fill black +opaque '#606670' -bordercolor black -border 1)"
  convert "$shot" -crop "${desk[0]}x${desk[1]}+$((desk[2] - 1))+$((desk[3] - 1))" +repage -trim +repage -shave 1x1 "$shot"
  box_on_sheet "$shot"
}

# expect_near WHAT BOX OTHER: boxes may differ by pixels of the screen.
expect_near() {
  local box other i
  read -ra box <<<"$2"
  read -ra other <<<"$3"
  for i in 0 1 2 3; do
    ((box[i] - other[i] <= 6 && other[i] - box[i] <= 6)) || fail "$1: the preview has the picture at $2, the paper at $3 (thousandths)"
  done
}

job_is_whole() { tail -c 20 "$work/paper.ps" 2>/dev/null | grep -q '%%EOF'; }

# begin_to_print PAGES COPIES [SCREENSHOT]
begin_to_print() {
  rm -f "$work/paper.ps"
  press ctrl+p
  expect_window '^Print$'
  press alt+g
  xdotool type --delay 20 "$1"
  press alt+c
  xdotool type --delay 20 "$2"
  [ $# = 2 ] || screenshot "$3"
  press Return
  expect_no_window '^Print$'
}

# How much of a cancelled job comes out is up to the system's driver, which has the sheets before.
cancel_job() {
  begin_to_print 1 900
  expect_window '^Printing$'
  press Return
  expect_no_window '^Printing$'
  screenshot 35-cancelled
  ! tail -c 40 "$work/paper.ps" | grep -q '%%Pages: 900' || fail "the cancelled job was printed to its end"
}

printing() {
  ./tools/print-to-file.sh Paper "$work/paper.ps"
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$pictures/set.tif")"
  expect_title 'set.tif (page 1 of 3) - *'
  press ctrl+shift+p
  expect_window '^Print Preview - page 1 of 3 - fit, centred - Paper$'
  press Next
  expect_window '^Print Preview - page 2 of 3 - fit, centred - Paper$'
  screenshot 31-preview
  local fitted
  fitted=$(previewed_box 31-preview)
  press alt+t alt+d Prior
  expect_window '^Print Preview - page 1 of 3 - true size, centred across - Paper$'
  screenshot 32-preview-at-true-size
  press alt+f alt+d
  expect_window '^Print Preview - page 1 of 3 - fit, centred - Paper$'
  press Escape
  expect_no_window '^Print Preview'

  begin_to_print 2-3,1 2 33-print
  patiently job_is_whole || fail "no job came to its end"
  screenshot 34-printed
  gs -q -o "$work/sheet%d.png" -sDEVICE=png16m -r72 "$work/paper.ps"
  local sheets=("$work"/sheet*.png) first=$work/sheet1.png
  [ ${#sheets[@]} = 6 ] || fail "${#sheets[@]} sheets were printed, not 6"
  cmp -s "$first" "$work/sheet2.png" || fail "copies differ"
  expect_near "page 2" "$fitted" "$(box_on_sheet "$first")"
  cancel_job
  expect_title 'set.tif (page 1 of 3) - *'
  press ctrl+shift+u
  expect_window 'Printer Setup'
  screenshot 36-printer-setup
  press Escape
  expect_no_window 'Printer Setup'
}

clipboard() {
  press ctrl+c ctrl+v
  expect_title 'Untitled\* - *'
  screenshot 37-pasted
}

# "Go on without saving it?" OK is not the usual answer.
answer_question() {
  expect_window '^Vorel Viewer$'
  screenshot 24-question
  press Left Return
  expect_no_window '^Vorel Viewer$'
}

make_pictures
view_and_zoom
band
lens
process
save
if [ $form = whole ]; then
  sizes_and_wheel
  dialogs_and_operations
  press r
  files_and_pages
  printing
  clipboard
  press ctrl+q
  answer_question
  wait "$viewer"
  viewer=
  montage -font DejaVu-Sans -pointsize 11 -label '%t' "$shots"/*.png -tile 5x -geometry 400x320+6+6 -background '#f4f4f0' out/viewer-sheet.png
else
  leave
fi
printf 'the viewer did what it was asked for; screenshots: %s\n' "$shots"
