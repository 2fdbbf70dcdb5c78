# Preview and printing; the preview must show the picture where the paper has it. Sourced by user_interface.sh.

# box_of PICTURE CONVERT_OPTIONS...: the picture's extent without edges of one colour, as "width height left top".
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

# How much of a cancelled job is printed depends on the system's driver, which gets the sheets before.
cancel_job() {
  begin_to_print 1 900
  expect_window '^Printing$'
  press Return
  expect_no_window '^Printing$'
  expect_window '^Vorel Viewer$'
  screenshot 35-cancelled
  press Return
  expect_no_window '^Vorel Viewer$'
  ! tail -c 40 "$work/paper.ps" | grep -q '%%Pages: 900' || fail "the cancelled job was printed to its end"
}

# Three pages on one sheet of paper.
several_to_a_sheet() {
  rm -f "$work/paper.ps" "$work"/sheet*.png
  press ctrl+p
  expect_window '^Print$'
  press alt+g
  xdotool type --delay 20 1-3
  press alt+c
  xdotool type --delay 20 1
  press alt+h 4
  screenshot 38-print-several
  press Return
  expect_no_window '^Print$'
  patiently job_is_whole || fail "no job came to its end"
  gs -q -o "$work/sheet%d.png" -sDEVICE=png16m -r72 "$work/paper.ps"
  local sheets=("$work"/sheet*.png)
  [ ${#sheets[@]} = 1 ] || fail "${#sheets[@]} sheets were printed, not 1"
  cp "$work/sheet1.png" "$shots/39-sheet-of-several.png"
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
  press alt+h 4
  expect_window '^Print Preview - sheet 1 of 1 - 4 to a sheet - Paper$'
  screenshot 37-preview-of-several
  press alt+h 1
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
  cmp -s "$first" "$work/sheet4.png" || fail "copies differ"
  ! cmp -s "$first" "$work/sheet2.png" || fail "copies are not collated"
  expect_near "page 2" "$fitted" "$(box_on_sheet "$first")"
  several_to_a_sheet
  cancel_job
  expect_title 'set.tif (page 1 of 3) - *'
  press ctrl+shift+u
  expect_window 'Printer Setup'
  screenshot 36-printer-setup
  press Escape
  expect_no_window 'Printer Setup'
}
