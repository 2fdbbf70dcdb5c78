# Drives the viewer with real keys and a real mouse, and looks at the screen. Sourced by user_interface.sh, which sets the variables
# build (folder of the Windows build), work (scratch folder), pictures and shots.
viewer=

end() {
  local status=$?
  [ -z "$viewer" ] || kill "$viewer" 2>/dev/null || true
  [ $status = 0 ] || { cp "$shots"/*.png "$build" 2>/dev/null || true; }
  rm -rf "$work"
}
trap end EXIT

fail() { printf 'viewer: %s (the title is "%s")\n' "$*" "$(title)" >&2; screenshot failed; exit 1; }

start_viewer() {
  ./tools/run-wine.sh "$build/bin/vorelview.exe" "$@" &
  viewer=$!
}

title() { xdotool search --name ' - Vorel Viewer$' getwindowname 2>/dev/null | head -1; }

# patiently COMMAND...: repeats a command until it succeeds, for up to ten seconds.
patiently() {
  for _ in $(seq 100); do
    "$@" && return 0
    sleep 0.1
  done
  return 1
}

title_is() { local now; now=$(title); [[ $now == $1 ]]; }
expect_title() { patiently title_is "$1" || fail "the title did not become \"$1\""; }

window_is_there() { xdotool search --onlyvisible --name "$1" >/dev/null 2>&1; }
window_is_gone() { ! window_is_there "$1"; }
expect_window() { patiently window_is_there "$1" || fail "no window \"$1\" appeared"; }
expect_no_window() { patiently window_is_gone "$1" || fail "the window \"$1\" did not close"; }

screenshot_now() { import -silent -window root -crop 1280x900+0+0 +repage "$shots/$1.png"; }

# screenshot NAME: takes the screen once it no longer changes.
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

# How many pixels differ between two screenshots, around the picture's middle, where there is no text.
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

quit() {
  press ctrl+q
  [ $# = 0 ] || "$@"
  wait "$viewer" || fail "the viewer ended with code $?"
  viewer=
}

# "Go on without saving it?" OK is not the usual answer.
answer_question() {
  expect_window '^Vorel Viewer$'
  screenshot 24-question
  press Left Return
  expect_no_window '^Vorel Viewer$'
}
