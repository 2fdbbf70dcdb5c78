#include "viewer/view.h"

#include <algorithm>

#include "viewer/gdi.h"

namespace vorel::viewer {
namespace {

// A window's device context in image pixels.
class MappedDc {
 public:
  MappedDc(HWND window, ImgDisplayState& state) : dc_(window) { MapDisplayDC(dc_.get(), &state); }

  POINT to_image(POINT device) const {
    DPtoLP(dc_.get(), &device, 1);
    return device;
  }
  POINT to_device(POINT image) const {
    LPtoDP(dc_.get(), &image, 1);
    return image;
  }
  double scale() const {
    SIZE viewport{}, window{};
    GetViewportExtEx(dc_.get(), &viewport);
    GetWindowExtEx(dc_.get(), &window);
    return static_cast<double>(viewport.cx) / static_cast<double>(window.cx);
  }

 private:
  WindowDc dc_;
};

POINT middle_of_client(HWND window) {
  RECT client{};
  GetClientRect(window, &client);
  return {client.right / 2, client.bottom / 2};
}

UINT flag_of(Sizing sizing) {
  switch (sizing) {
    case Sizing::kFit: return IMG_DISPLAY_FIT;
    case Sizing::kFitWidth: return IMG_DISPLAY_FIT_WIDTH;
    case Sizing::kStretch: return IMG_DISPLAY_STRETCH;
    case Sizing::kRatio: break;
  }
  return 0;
}

}  // namespace

// ---- Messages of the window ----

void View::create(HWND window) {
  window_ = window;
  DisplayWmCreate(window, 0, 0, &state_);
  BZoomSetScaleSteps(kZoomBase, kEnlargeSteps, kReduceSteps);
}

void View::resized() {
  DisplayWmSize(window_, 0, 0, &state_);
  if (is_starting_ || !is_showing()) return;
  update_bars();
  keep_in_view(SB_HORZ);
  keep_in_view(SB_VERT);
}

void View::paint() { DisplayWmPaint(window_, &state_); }

void View::scroll(int bar, WPARAM wParam) {
  const int code = LOWORD(wParam);
  if (code == SB_THUMBTRACK || code == SB_THUMBPOSITION) {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    GetScrollInfo(window_, bar, &info);
    scroll_to(bar, info.nTrackPos);
  } else {
    (bar == SB_HORZ ? DisplayWmHorzScroll : DisplayWmVertScroll)(window_, wParam, 0, &state_);
    keep_in_view(bar);
  }
}

void View::realise_palette() {
  if (palette() == nullptr) return;
  const WindowDc dc(window_);
  const HPALETTE previous = SelectPalette(dc.get(), palette(), FALSE);
  if (RealizePalette(dc.get()) > 0) InvalidateRect(window_, nullptr, FALSE);
  SelectPalette(dc.get(), previous, TRUE);
}

void View::destroy() { DisplayWmDestroy(window_, 0, 0, &state_); }

// ---- Showing ----

UINT View::flags() const {
  return flag_of(sizing_) | options_ | (bars_.horizontal ? 0 : IMG_DISPLAY_NO_HSCROLL) |
         (bars_.vertical ? 0 : IMG_DISPLAY_NO_VSCROLL);
}

// Bars that come or go change the window's size in between.
void View::start_with_bars() {
  const int zoom[4] = {ratio_.viewport, ratio_.window, ratio_.viewport, ratio_.window};
  is_starting_ = true;
  DisplayDIBStart(window_, dib_, nullptr, zoom, flags(), &state_);
  is_starting_ = false;
  realise_palette();
}

// How large the picture gets is known once it is started.
void View::start() {
  start_with_bars();
  update_bars();
}

void View::update_bars() {
  const Extent picture = displayed(), window = whole_window();
  Bars bars{};
  if (sizing_ == Sizing::kRatio)
    bars = bars_needed(picture, window, {GetSystemMetrics(SM_CXVSCROLL), GetSystemMetrics(SM_CYHSCROLL)});
  if (sizing_ == Sizing::kFitWidth) bars.vertical = needs_bar_when_as_wide(picture, window);
  if (bars == bars_) return;
  bars_ = bars;
  const POINT corner = image_point({0, 0});
  start_with_bars();
  bring(corner, {0, 0});
}

// Starting brings a picture to its beginning. Here what is in the middle of the window stays there.
void View::start_in_place() {
  const POINT middle = middle_of_client(window_), point = image_point(middle);
  start();
  bring(point, middle);
}

void View::show_first(HGLOBAL dib) {
  dib_ = dib;
  sizing_ = Sizing::kRatio;
  ratio_ = kActualSize;
  start();
  if (bars_.horizontal || bars_.vertical) set_sizing(Sizing::kFit);
}

void View::show_next(HGLOBAL dib) {
  dib_ = dib;
  start();
}

void View::show_changed(HGLOBAL dib) {
  dib_ = dib;
  start_in_place();
}

double View::scale() const { return MappedDc(window_, state_).scale(); }

void View::set_sizing(Sizing sizing) {
  sizing_ = sizing;
  start();
}

void View::toggle(Option option) {
  options_ ^= option;
  start_in_place();
}

// ---- Zooming ----

// As numbers that the library's steps go on from, whatever made the size so far.
Ratio View::current_ratio() const { return sizing_ == Sizing::kRatio ? ratio_ : ratio_for(scale()); }

RECT View::current_ratio_rect() const {
  const Ratio ratio = current_ratio();
  return {ratio.viewport, ratio.window, ratio.viewport, ratio.window};
}

void View::zoom_to_actual_size() {
  const POINT middle = middle_of_client(window_);
  set_ratio(kActualSize, image_point(middle), middle);
}

void View::zoom_by_step(Step step, const POINT* at) {
  constexpr int kLargerMode = 0x22, kSmallerMode = 0x23;
  const POINT point = at != nullptr ? *at : middle_of_client(window_);
  const RECT current = current_ratio_rect();
  ImgZoomTracker tracker;
  BZoomStep(window_, &current, step == Step::kLarger ? kLargerMode : kSmallerMode, &tracker, &state_);
  set_ratio({tracker.resultViewportX, tracker.resultWindowX}, image_point(point), point);
}

// Makes the picture so large that a point of it lies at a point of the window.
void View::set_ratio(Ratio ratio, POINT image_point, POINT at) {
  sizing_ = Sizing::kRatio;
  ratio_ = ratio;
  start();
  bring(image_point, at);
}

// A stretched picture is first shown in its proportions, which are those that a ratio keeps.
void View::begin_band(POINT mouse, Step step_of_click) {
  constexpr int kLargerMode = 0x12, kSmallerMode = 0x13;
  if (sizing_ == Sizing::kStretch) set_sizing(Sizing::kFit);
  UpdateWindow(window_);  // what is painted later would cover the band
  const RECT current = current_ratio_rect();
  BZoomStart(window_, &mouse, &current, step_of_click == Step::kLarger ? kLargerMode : kSmallerMode, &tracker_, FALSE);
}

void View::move_band(POINT mouse) { BZoomUpdate(window_, &mouse, &tracker_); }

void View::end_band(POINT mouse) {
  BZoomEnd(window_, &mouse, &tracker_, &state_);
  set_ratio({tracker_.resultViewportX, tracker_.resultWindowX}, {tracker_.resultLeft, tracker_.resultTop}, {0, 0});
}

// Without a point the library only takes the band away.
void View::cancel_band() { BZoomEnd(window_, nullptr, &tracker_, &state_); }

// ---- Scrolling ----

Extent View::displayed() const {
  const MappedDc dc(window_, state_);
  const POINT from = dc.to_device({0, 0}), to = dc.to_device({state_.layout.imageWidth, state_.layout.imageHeight});
  return {static_cast<int>(to.x - from.x), static_cast<int>(to.y - from.y)};
}

// With the room that scroll bars take.
Extent View::whole_window() const {
  RECT whole{};
  GetWindowRect(window_, &whole);
  return {static_cast<int>(whole.right - whole.left), static_cast<int>(whole.bottom - whole.top)};
}

View::Axis View::axis(int bar) const {
  const ImgDisplayLayout& layout = state_.layout;
  const Extent picture = displayed();
  if (bar == SB_HORZ) return {layout.hScrollPos, layout.hScrollMin, picture.width, layout.clientRight - layout.clientLeft};
  return {layout.vScrollPos, layout.vScrollMin, picture.height, layout.clientBottom - layout.clientTop};
}

// Goes by messages, which move one direction alone: a position in both would bring a picture that is centred in the other one to
// the edge. A message's word holds small numbers only.
void View::scroll_to(int bar, int position) {
  constexpr int kLargestInWord = 0x7FFF;
  const Axis along = axis(bar);
  if (!along.is_larger_than_window()) return;
  const int wanted = position_in_view(position, along.first, along.picture, along.window);
  if (std::abs(wanted) <= kLargestInWord) {
    (bar == SB_HORZ ? DisplayWmHorzScroll : DisplayWmVertScroll)(window_, MAKEWPARAM(SB_THUMBPOSITION, wanted), 0, &state_);
  } else {
    const int both[2] = {bar == SB_HORZ ? wanted : state_.layout.hScrollPos,
                         bar == SB_VERT ? wanted : state_.layout.vScrollPos};
    DisplaySetScrollPos(window_, &state_, both);
  }
}

// The library lets a picture be scrolled out of the window.
void View::keep_in_view(int bar) {
  const Axis along = axis(bar);
  if (along.position != position_in_view(along.position, along.first, along.picture, along.window))
    scroll_to(bar, along.position);
}

void View::scroll_by(int x, int y) {
  if (x != 0) scroll_to(SB_HORZ, axis(SB_HORZ).position + x);
  if (y != 0) scroll_to(SB_VERT, axis(SB_VERT).position + y);
}

void View::bring(POINT image_point, POINT at) {
  const POINT now = MappedDc(window_, state_).to_device(image_point);
  scroll_by(now.x - at.x, now.y - at.y);
}

POINT View::image_point(POINT at) const { return MappedDc(window_, state_).to_image(at); }

}  // namespace vorel::viewer
