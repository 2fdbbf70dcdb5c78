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
  xdotool mousemove 400 200 keydown space
  sleep 0.5
  xdotool mousemove 420 230
  screenshot 30-lens-on-page
  xdotool keyup space
}

clipboard() {
  press ctrl+c ctrl+v
  expect_title 'Untitled\* - *'
  screenshot 37-pasted
}
