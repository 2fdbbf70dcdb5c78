# Every way to show a picture, dialogs, files of several pages, the clipboard. Sourced by user_interface.sh.

sizes_and_wheel() {
  press w
  expect_title '* - 7[0-9] % - *'
  screenshot 12-fits-the-width
  press t
  screenshot 13-stretched
  expect_different 12-fits-the-width 13-stretched
  press f z 1
  expect_title '* - 67 % - *'  # 96 dots per inch of the screen to 150 of the picture, to the nearest step of the display's halving
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
  xdotool mousemove 400 200
  press o
  xdotool mousemove 420 230
  screenshot 30-lens-on-page
  press o
}

clipboard() {
  press ctrl+c ctrl+v
  expect_title 'Untitled\* - *'
  screenshot 49-pasted
}

windows_beside() {
  press F9
  screenshot 40-thumbnails-of-the-folder
  expect_different 29-page-at-its-size 40-thumbnails-of-the-folder
  press F9 F1
  expect_window 'Keys and mouse'
  screenshot 41-keys
  press Escape
  expect_no_window 'Keys and mouse'
  press ctrl+i
  expect_window 'Information'
  screenshot 42-information
  press Escape
  expect_no_window 'Information'
  press ctrl+shift+b
  expect_window 'Batch'
  screenshot 43-batch
  press Escape
  expect_no_window 'Batch'
  press F11
  screenshot 44-full-screen
  press Escape
  expect_title 'page-1bit.bmp - *'
}

# Pages in another order and saved, and what was done to one of them as steps for the tool.
page_work() {
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$pictures/set.tif")"
  expect_title 'set.tif (page 1 of 3) - *'
  press ctrl+i
  expect_window 'Information'
  screenshot 42-information-of-tags
  press Escape
  expect_no_window 'Information'
  press F8
  screenshot 42-pages
  press F8 ctrl+shift+Delete
  expect_title 'set.tif\* (page 1 of 2) - *'
  press ctrl+z
  expect_title 'set.tif (page 1 of 3) - *'
  press r n ctrl+shift+Next
  expect_title 'set.tif\* (page 2 of 3) - *'
  press F8
  screenshot 45-pages
  press F8 ctrl+shift+s
  expect_window 'Save As'
  enter "$(windows_path "$work/steps.txt")"
  expect_no_window 'Save As'
  printf 'rotate 90\ninvert\n' | cmp -s - "$work/steps.txt" || fail "the file of steps does not have what was done"
  press ctrl+s
  expect_window 'Save As'
  enter "$(windows_path "$work/ordered.tif")"
  expect_title 'ordered.tif (page 2 of 3) - *'
  tool vorel run "$pictures/set.tif" "$work/first.tif" --page 1 --steps "$work/steps.txt"
  tool vorel convert "$work/ordered.tif" "$work/second.tif" --page 2
  tool vorel compare "$work/first.tif" "$work/second.tif" || fail "the moved page is not what the steps make"
}

# The picture follows the numbers while they are entered.
preview_of_an_operation() {
  press ctrl+o
  expect_window 'Open'
  enter "$(windows_path "$pictures/chart-24bit.bmp")"
  expect_title 'chart-24bit.bmp - *'
  screenshot 46-before
  press v
  expect_window 'Black and white by a level'
  xdotool type --delay 30 200
  sleep 1
  screenshot 47-preview
  expect_different 46-before 47-preview
  press Escape
  expect_no_window 'Black and white by a level'
  screenshot 48-cancelled
  expect_same 46-before 48-cancelled
  expect_title 'chart-24bit.bmp - *'
}
