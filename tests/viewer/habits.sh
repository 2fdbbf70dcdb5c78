# Batches, deletion, slide show, loading that is stopped, unusual names and errors. Sourced by user_interface.sh.

open_file() {
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$1")"
}

# The steps that page_work saved, run over a folder.
batch_over_a_folder() {
  mkdir -p "$work/in"
  cp "$pictures"/chart-*.bmp "$pictures/page-1bit.bmp" "$work/in"
  open_file "$work/in/chart-24bit.bmp"
  expect_title 'chart-24bit.bmp - *'
  press ctrl+shift+b
  expect_window 'Batch'
  press alt+s
  xdotool type --delay 20 "$(windows_path "$work/steps.txt")"
  press alt+t ctrl+a
  xdotool type --delay 20 "$(windows_path "$work/done")"
  press alt+m
  press p p
  press alt+r
  patiently test -e "$work/done/page-1bit.png" || fail "the batch made no page-1bit.png"
  sleep 1
  screenshot 50-batch-done
  press Escape
  expect_no_window 'Batch'
  [ "$(ls "$work/done" | tr '\n' ' ')" = 'chart-24bit.png chart-4bit.png chart-8bit.png page-1bit.png ' ] || fail "the batch made $(ls "$work/done")"
  tool vorel run "$work/in/chart-24bit.bmp" "$work/steps.png" --steps "$work/steps.txt"
  tool vorel compare "$work/steps.png" "$work/done/chart-24bit.png" || fail "the batch made another picture than the steps"
}

deletion() {
  cp "$pictures/chart-8bit.bmp" "$work/in/unwanted.bmp"
  open_file "$work/in/unwanted.bmp"
  expect_title 'unwanted.bmp - *'
  press Delete
  expect_window '^Vorel Viewer$'
  screenshot 51-deletion
  press Return
  expect_no_window '^Vorel Viewer$'
  [ -e "$work/in/unwanted.bmp" ] || fail "the usual answer deletes"
  press Delete
  answer_question
  expect_title 'page-1bit.bmp - *'
  [ ! -e "$work/in/unwanted.bmp" ] || fail "the file is still there"
}

# From the last file of the folder to the first.
slide_show() {
  press F5
  screenshot 52-slide-show
  expect_title 'chart-4bit.bmp - *'
  press Escape
  expect_title 'chart-4bit.bmp - *'
  screenshot 53-slide-show-ended
}

# Backspace reads backwards: at the first page of a file it goes to the last one of the file before.
reading_backwards() {
  cp "$pictures/set.tif" "$work/in/a.tif"
  press ctrl+Left
  expect_title 'a.tif (page 1 of 3) - *'
  press ctrl+Right
  expect_title 'chart-4bit.bmp - *'
  press BackSpace
  expect_title 'a.tif (page 3 of 3) - *'
  press BackSpace
  expect_title 'a.tif (page 2 of 3) - *'
}

# A thumbnail follows its file, and a step that finds nothing to do is no change.
rewritten_file() {
  press F9
  screenshot 54-before-it-is-written
  cp "$pictures/page-1bit.bmp" "$work/in/chart-8bit.bmp"
  open_file "$work/in/chart-8bit.bmp"
  expect_title 'chart-8bit.bmp - *'
  screenshot 55-written
  press F9 ctrl+Right
  expect_title 'chart-24bit.bmp - *'
  press k
  expect_window 'Straighten'
  sleep 2
  press Return
  expect_no_window 'Straighten'
  screenshot 56-straight-already
  expect_title 'chart-24bit.bmp - *'
}

stopped_loading() {
  tool vorel scale "$pictures/chart-24bit.bmp" "$work/large.png" 900% --method linear
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$work/large.png")"
  expect_no_window 'Open'
  press plus
  screenshot_now 57-loading
  press Escape
  screenshot 58-stopped
  sleep 3
  expect_title 'chart-24bit.bmp - *'
}

names_and_errors() {
  local odd="$work/Größe 図形" deep=$work
  mkdir -p "$odd"
  cp "$pictures/chart-8bit.bmp" "$odd/päge & ☃.bmp"
  for letter in a b c d e f g h i j k l m n o p; do deep=$deep/$(printf "$letter%.0s" $(seq 20)); done
  mkdir -p "$deep"
  cp "$pictures/chart-4bit.bmp" "$deep/deep.bmp"
  cp "$pictures/set.tif" "$deep/deeper.tif"
  press ctrl+q
  wait "$viewer" || fail "the viewer ended with code $?"
  start_viewer "$(windows_path "$odd/päge & ☃.bmp")"
  expect_title 'p*ge & *.bmp - *'
  press F9 ctrl+i
  expect_window 'Information'
  screenshot 59-name-in-other-letters
  press Escape ctrl+q
  wait "$viewer" || fail "the viewer ended with code $?"
  start_viewer "$(windows_path "$deep/deep.bmp")"
  expect_title 'deep.bmp - *'
  press F9 ctrl+Right
  expect_title 'deeper.tif (page 1 of 3) - *'
  screenshot 60-long-path
  press F9 ctrl+q
  wait "$viewer" || fail "the viewer ended with code $?"
  start_viewer "$(windows_path "$pictures/gone.tif")"
  expect_window '^Vorel Viewer$'
  screenshot 61-not-found
  press Return
  open_file "$pictures/damaged.png"
  sleep 1
  screenshot 62-damaged
  press Return
  open_file "$pictures/chart-24bit.bmp"
  expect_title 'chart-24bit.bmp - *'
}
