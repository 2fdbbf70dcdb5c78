# The way of one picture: shown, zoomed, changed, saved. Sourced by user_interface.sh.

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
  xdotool keydown shift
  drag 180 540 310 680
  screenshot 03-band
  expect_different 01-fits-the-window 03-band
  xdotool mouseup 1 keyup shift
  expect_title 'chart-24bit.bmp - [34]?? % - *'
  screenshot 04-zoomed-by-band
  expect_color 04-zoomed-by-band 470 380 ffff00
  press f
  expect_title '* - 79 % - *'
}

lens() {
  xdotool mousemove 470 390
  screenshot 05-without-lens
  press o
  xdotool mousemove 560 500 mousemove 640 540
  screenshot 06-lens
  press o
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
