#include "viewer/view.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include <vorel32.h>

#include "viewer/gdi.h"

namespace vorel::viewer {
namespace {

// A window's device context with the display's mapping: logical units are image pixels.
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
    const Ratio across = ratio(SB_HORZ);
    return static_cast<double>(across.viewport) / across.window;
  }
  Ratio ratio(int bar) const {
    SIZE viewport{}, window{};
    GetViewportExtEx(dc_.get(), &viewport);
    GetWindowExtEx(dc_.get(), &window);
    return bar == SB_HORZ ? Ratio{static_cast<int>(viewport.cx), static_cast<int>(window.cx)}
                          : Ratio{static_cast<int>(viewport.cy), static_cast<int>(window.cy)};
  }

 private:
  WindowDc dc_;
};

// Suspends painting for a scope, then repaints the whole window once. Intermediate positions are never shown.
class PausedPainting {
 public:
  explicit PausedPainting(HWND window)
      : window_(window), is_visible_((GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0) {
    if (is_visible_) SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
  }
  PausedPainting(const PausedPainting&) = delete;
  PausedPainting& operator=(const PausedPainting&) = delete;
  ~PausedPainting() {
    if (!is_visible_) return;  // hidden, or within another pause
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME);
  }

 private:
  HWND window_;
  bool is_visible_;
};

POINT middle_of_client(HWND window) {
  RECT client{};
  GetClientRect(window, &client);
  return {client.right / 2, client.bottom / 2};
}

// The thumb position with 32 bits; the message has only 16.
int thumb_position(HWND window, int bar) {
  SCROLLINFO info{};
  info.cbSize = sizeof info;
  info.fMask = SIF_TRACKPOS;
  GetScrollInfo(window, bar, &info);
  return info.nTrackPos;
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
  scroll_by(0, 0);
}

void View::paint() { is_reduced() ? paint_reduced() : static_cast<void>(DisplayWmPaint(window_, &state_)); }

void View::scroll(int bar, WPARAM wParam) { scroll_to(bar, wanted_position(bar, LOWORD(wParam))); }

void View::realise_palette() {
  if (palette() == nullptr) return;
  const WindowDc dc(window_);
  const SelectedPalette selected(dc.get(), palette(), false);
  if (selected.changed() > 0) InvalidateRect(window_, nullptr, FALSE);
}

void View::destroy() { DisplayWmDestroy(window_, 0, 0, &state_); }

// ---- Drawing of reduced pictures ----

namespace {

bool has_palette(HDC dc) { return (GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE) != 0; }

// As many of the mixtures as leave the system room for its own colours.
OwnedPalette palette_of_mixtures(std::span<const uint32_t> mixtures) {
  constexpr WORD kEntries = 64;
  constexpr WORD kVersion = 0x300;
  struct {
    WORD version = kVersion, count = kEntries;
    PALETTEENTRY entries[kEntries] = {};
  } palette;
  for (size_t i = 0; i < kEntries; ++i) {
    const uint32_t color = mixtures[i * (mixtures.size() - 1) / (kEntries - 1)];
    palette.entries[i] = {static_cast<BYTE>(color >> 16), static_cast<BYTE>(color >> 8), static_cast<BYTE>(color), 0};
  }
  return OwnedPalette(CreatePalette(reinterpret_cast<const LOGPALETTE*>(&palette)));
}

void fill_around(HDC dc, const RECT& image, const RECT& area, HWND window) {
  const int saved = SaveDC(dc);
  ExcludeClipRect(dc, image.left, image.top, image.right, image.bottom);
  FillRect(dc, &area, reinterpret_cast<HBRUSH>(GetClassLongPtrW(window, GCLP_HBRBACKGROUND)));
  RestoreDC(dc, saved);
}

}  // namespace

bool View::is_reduced() const {
  const Extent size = displayed();
  return size.width < picture().width() || size.height < picture().height();
}

void View::paint_reduced() {
  const Extent size = displayed();
  const POINT corner = MappedDc(window_, state_).to_device({0, 0});
  const RECT image = {corner.x, corner.y, corner.x + size.width, corner.y + size.height};
  const Painting painting(window_);
  RECT part{};
  if (IntersectRect(&part, &image, &painting.area())) {
    const Size extent = {static_cast<int>(part.right - part.left), static_cast<int>(part.bottom - part.top)};
    pixels_.resize(static_cast<size_t>(extent.width) * static_cast<size_t>(extent.height));
    const POINT from = {part.left - image.left, part.top - image.top};
    picture_->reductions().draw({size.width, size.height},
                                {static_cast<int>(from.x), static_cast<int>(from.y), extent.width, extent.height}, pixels_);
    if (has(IMG_DISPLAY_INVERTED))
      for (uint32_t& pixel : pixels_) pixel ^= 0xFFFFFF;
    const SelectedPalette selected(painting.dc(), palette(), true);
    put_pixels(painting.dc(), {part.left, part.top}, extent, pixels_);
  }
  fill_around(painting.dc(), image, painting.area(), window_);
}

// ---- Showing ----

UINT View::flags() const {
  return flag_of(sizing_) | options_ | (bars_.horizontal ? 0 : IMG_DISPLAY_NO_HSCROLL) |
         (bars_.vertical ? 0 : IMG_DISPLAY_NO_VSCROLL);
}

// Scroll bars that appear or disappear resize the window during the start; resized() then only lays out.
void View::start_with_bars() {
  const int zoom[4] = {ratio_.viewport, ratio_.window, ratio_.viewport, ratio_.window};
  is_starting_ = true;
  DisplayDIBStart(window_, dib(), nullptr, zoom, flags(), &state_);
  is_starting_ = false;
  realise_palette();
}

// The displayed size is known after the start, so the bars are updated then.
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
  const PausedPainting paused(window_);
  const POINT corner = image_point({0, 0});
  start_with_bars();
  bring(corner, {0, 0});
}

// A start resets the scroll positions. This one keeps the middle of the window.
void View::start_in_place() {
  const PausedPainting paused(window_);
  const POINT middle = middle_of_client(window_), point = image_point(middle);
  start();
  bring(point, middle);
}

// The library holds the new picture from the next start on.
void View::show(SharedPicture picture) {
  const WindowDc dc(window_);
  mixtures_.reset();
  if (picture && has_palette(dc.get()) && picture->picture.depth() == 1)
    mixtures_ = palette_of_mixtures(picture->reductions().mixtures());
  picture_ = std::move(picture);
}

void View::show_first(SharedPicture picture) {
  if (sizing_ == Sizing::kFitWidth) return show_next(std::move(picture));
  show(std::move(picture));
  sizing_ = Sizing::kRatio;
  ratio_ = kActualSize;
  start();
  if (bars_.horizontal || bars_.vertical) set_sizing(Sizing::kFit);
}

void View::show_next(SharedPicture picture) {
  show(std::move(picture));
  start();
  if (is_showing()) scroll_to_end(Way::kBack);
}

void View::show_changed(SharedPicture picture) {
  show(std::move(picture));
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

// The current ratio, or for other sizings the nearest one that the library's steps can continue from.
Ratio View::current_ratio() const { return sizing_ == Sizing::kRatio ? ratio_ : ratio_for(scale()); }

RECT View::current_ratio_rect() const {
  const Ratio ratio = current_ratio();
  return {ratio.viewport, ratio.window, ratio.viewport, ratio.window};
}

void View::zoom_to_actual_size(const POINT* at) {
  const POINT point = at != nullptr ? *at : middle_of_client(window_);
  set_ratio(kActualSize, image_point(point), point);
}

void View::zoom_by_step(Step step, const POINT* at) {
  constexpr int kLargerMode = 0x22, kSmallerMode = 0x23;
  const POINT point = at != nullptr ? *at : middle_of_client(window_);
  const RECT current = current_ratio_rect();
  ImgZoomTracker tracker;
  BZoomStep(window_, &current, step == Step::kLarger ? kLargerMode : kSmallerMode, &tracker, &state_);
  set_ratio({tracker.resultViewportX, tracker.resultWindowX}, image_point(point), point);
}

// Shows the picture at a ratio, with image_point at the window point `at`.
void View::set_ratio(Ratio ratio, POINT image_point, POINT at) {
  const PausedPainting paused(window_);
  sizing_ = Sizing::kRatio;
  ratio_ = ratio;
  start();
  bring(image_point, at);
}

// A ratio keeps the proportions, so a stretched picture is fitted first.
void View::begin_band(POINT mouse, Step step_of_click) {
  constexpr int kLargerMode = 0x12, kSmallerMode = 0x13;
  if (sizing_ == Sizing::kStretch) set_sizing(Sizing::kFit);
  UpdateWindow(window_);  // a later WM_PAINT would erase the band
  const RECT current = current_ratio_rect();
  BZoomStart(window_, &mouse, &current, step_of_click == Step::kLarger ? kLargerMode : kSmallerMode, &tracker_, FALSE);
}

void View::move_band(POINT mouse) { BZoomUpdate(window_, &mouse, &tracker_); }

// The library computes the corner of a fitted picture for the fitted size, so the middle of the band is used instead.
void View::end_band(POINT mouse) {
  move_band(mouse);
  const bool is_rectangle = tracker_.bandShown != 0;
  const POINT middle = is_rectangle ? POINT{(tracker_.anchorX + mouse.x) / 2, (tracker_.anchorY + mouse.y) / 2} : mouse;
  const POINT point = image_point(middle);
  BZoomEnd(window_, &mouse, &tracker_, &state_);
  set_ratio({tracker_.resultViewportX, tracker_.resultWindowX}, point, middle_of_client(window_));
}

// Without a point the library only erases the band.
void View::cancel_band() { BZoomEnd(window_, nullptr, &tracker_, &state_); }

// ---- Scrolling ----

// It does not depend on the place.
Extent View::displayed() const {
  const MappedDc dc(window_, state_);
  return {scaled_length(state_.layout.imageWidth, dc.ratio(SB_HORZ)),
          scaled_length(state_.layout.imageHeight, dc.ratio(SB_VERT))};
}

// Including the area of the scroll bars.
Extent View::whole_window() const {
  RECT whole{};
  GetWindowRect(window_, &whole);
  return {static_cast<int>(whole.right - whole.left), static_cast<int>(whole.bottom - whole.top)};
}

ScrolledAxis View::axis(int bar) const {
  const ImgDisplayLayout& layout = state_.layout;
  const Extent picture = displayed();
  const int step = scroll_step(MappedDc(window_, state_).ratio(bar));
  if (bar == SB_HORZ)
    return {layout.hScrollPos, layout.hScrollMin, picture.width, layout.clientRight - layout.clientLeft, step};
  return {layout.vScrollPos, layout.vScrollMin, picture.height, layout.clientBottom - layout.clientTop, step};
}

int View::wanted_position(int bar, int code) const {
  constexpr int kLinesInWindow = 10;
  const ScrolledAxis along = axis(bar);
  const int line = std::max(along.window / kLinesInWindow, along.step);
  switch (code) {
    case SB_LINEUP: return along.position - line;
    case SB_LINEDOWN: return along.position + line;
    case SB_PAGEUP: return along.position - (along.window - line);
    case SB_PAGEDOWN: return along.position + (along.window - line);
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK: return thumb_position(window_, bar);
    case SB_TOP: return along.first;
    case SB_BOTTOM: return along.last();
    default: return along.position;
  }
}

// Keeps the picture in view; the library would let it be scrolled out of the window. Uses scroll messages because they move
// one axis only: DisplaySetScrollPos would also move a picture that is centred on the other axis to the edge. Messages hold
// 16 bits only.
void View::scroll_to(int bar, int position) {
  constexpr int kLargestInWord = 0x7FFF;
  const ScrolledAxis along = axis(bar);
  const int wanted = position_in_view(along, position);
  if (wanted == along.position) return;
  if (std::abs(wanted) <= kLargestInWord) {
    (bar == SB_HORZ ? DisplayWmHorzScroll : DisplayWmVertScroll)(window_, MAKEWPARAM(SB_THUMBPOSITION, wanted), 0, &state_);
  } else {
    const int both[2] = {bar == SB_HORZ ? wanted : state_.layout.hScrollPos,
                         bar == SB_VERT ? wanted : state_.layout.vScrollPos};
    DisplaySetScrollPos(window_, &state_, both);
  }
}

void View::scroll_by(int x, int y) {
  scroll_to(SB_HORZ, axis(SB_HORZ).position + x);
  scroll_to(SB_VERT, axis(SB_VERT).position + y);
}

bool View::scroll_by_screen(Way way) {
  const auto scroll = [this](int bar, int code) {
    const int before = axis(bar).position;
    scroll_to(bar, wanted_position(bar, code));
    return axis(bar).position != before;
  };
  const bool is_on = way == Way::kOn;
  if (scroll(SB_VERT, is_on ? SB_PAGEDOWN : SB_PAGEUP)) return true;
  if (!scroll(SB_HORZ, is_on ? SB_PAGERIGHT : SB_PAGELEFT)) return false;
  scroll(SB_VERT, is_on ? SB_TOP : SB_BOTTOM);
  return true;
}

void View::scroll_to_end(Way way) {
  for (const int bar : {SB_HORZ, SB_VERT}) scroll_to(bar, way == Way::kOn ? axis(bar).last() : axis(bar).first);
}

void View::bring(POINT image_point, POINT at) {
  const POINT now = MappedDc(window_, state_).to_device(image_point);
  scroll_by(now.x - at.x, now.y - at.y);
}

// The pixel that a window's pixel shows.
POINT View::pixel_at(POINT at) const {
  const MappedDc dc(window_, state_);
  const POINT corner = dc.to_device({0, 0});
  return {pixel_under(at.x - corner.x, dc.ratio(SB_HORZ)), pixel_under(at.y - corner.y, dc.ratio(SB_VERT))};
}

POINT View::image_point(POINT at) const { return MappedDc(window_, state_).to_image(at); }

}  // namespace vorel::viewer
