#include "viewer/canvas.h"

#include <utility>

#include "viewer/failure.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

constexpr const wchar_t* kClassName = L"VorelViewerCanvas";
constexpr UINT kHorizontalWheelMessage = 0x020E;  // WM_MOUSEHWHEEL, which headers for older systems lack

void register_class() {
  WNDCLASSW window_class{};
  window_class.style = CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS;  // a fitted picture changes everywhere
  window_class.lpfnWndProc = send_to_object<Canvas>;
  window_class.hInstance = this_program();
  window_class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32515));  // the cross
  window_class.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_APPWORKSPACE + 1);
  window_class.lpszClassName = kClassName;
  RegisterClassW(&window_class);
}

POINT mouse_in(HWND window) {
  POINT point{};
  GetCursorPos(&point);
  ScreenToClient(window, &point);
  return point;
}

}  // namespace

bool Canvas::create(HWND parent, Events events) {
  events_ = std::move(events);
  register_class();
  return CreateWindowExW(0, kClassName, nullptr, WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, 0, 0, 0, 0, parent,
                         nullptr, this_program(), this) != nullptr;
}

void Canvas::change(const std::function<void(View&)>& action) {
  cancel_band();
  stop_lens();
  action(view_);
  events_.changed();
}

bool Canvas::scroll_by_screen(View::Way way) {
  stop_lens();
  return view_.is_showing() && view_.scroll_by_screen(way);
}

void Canvas::scroll_to_end(View::Way way) {
  stop_lens();
  if (view_.is_showing()) view_.scroll_to_end(way);
}

LRESULT Canvas::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
    case WM_SIZE:
    case WM_PAINT:
    case WM_ERASEBKGND:
    case WM_HSCROLL:
    case WM_VSCROLL:
    case WM_DESTROY: return handle_display(message, wParam, lParam);
    case WM_KEYDOWN:
    case WM_KILLFOCUS: return handle_key(message, wParam);
    default: return handle_mouse(message, wParam, lParam);
  }
}

// Messages that are forwarded to the library's display.
LRESULT Canvas::handle_display(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE: view_.create(window_); break;
    case WM_SIZE:
      stop_lens();
      view_.resized();
      events_.changed();
      break;
    case WM_ERASEBKGND:  // painting fills the area around the picture
      return view_.is_showing() ? TRUE : DefWindowProcW(window_, message, wParam, lParam);
    case WM_PAINT:
      if (!view_.is_showing()) return DefWindowProcW(window_, message, wParam, lParam);
      view_.paint();
      break;
    case WM_HSCROLL: view_.scroll(SB_HORZ, wParam); break;
    case WM_VSCROLL: view_.scroll(SB_VERT, wParam); break;
    case WM_DESTROY:
      stop_lens();
      view_.destroy();
      break;
    default: break;
  }
  return 0;
}

// ---- Mouse ----

LRESULT Canvas::handle_mouse(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_LBUTTONDOWN: press_button(point_of(lParam), wParam, View::Step::kLarger); return 0;
    case WM_RBUTTONDOWN: press_button(point_of(lParam), wParam, View::Step::kSmaller); return 0;
    case WM_LBUTTONDBLCLK: switch_size(point_of(lParam)); return 0;
    case WM_MOUSEMOVE: move_mouse(point_of(lParam)); return 0;
    case WM_MOUSELEAVE: events_.pointed({}); return 0;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP: release_button(point_of(lParam)); return 0;
    case WM_CAPTURECHANGED:  // capture was lost; a repaint removes the band
      held_.reset();
      if (std::exchange(has_band_, false)) InvalidateRect(window_, nullptr, FALSE);
      return 0;
    case WM_MOUSEWHEEL:
    case kHorizontalWheelMessage: turn_wheel(message, wParam, lParam); return 0;
    case WM_SETCURSOR:
      if (lens_) return TRUE;  // the lens hides it
      if (LOWORD(lParam) != HTCLIENT) break;
      SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(dragging_ == Dragging::kBand ? 32515 : 32512)));
      return TRUE;
    default: break;
  }
  return DefWindowProcW(window_, message, wParam, lParam);
}

void Canvas::press_button(POINT mouse, WPARAM keys, View::Step step) {
  SetFocus(window_);
  if (!view_.is_showing() || lens_ || has_band_ || held_) return;
  const bool makes_band = (dragging_ == Dragging::kBand) != ((keys & MK_SHIFT) != 0);
  if (makes_band) return begin_band(mouse, step);
  if (step == View::Step::kSmaller) return;
  SetCapture(window_);
  held_ = view_.image_point(mouse);
}

void Canvas::release_button(POINT mouse) {
  if (has_band_) return end_band(mouse);
  if (held_) ReleaseCapture();
}

void Canvas::move_mouse(POINT mouse) {
  TRACKMOUSEEVENT leaving{sizeof leaving, TME_LEAVE, window_, 0};
  TrackMouseEvent(&leaving);
  if (has_band_) view_.move_band(mouse);
  if (held_) view_.bring(*held_, mouse);
  if (lens_) lens_->move_to(mouse);
  events_.pointed(pixel_at(mouse));
}

// Between the whole picture and its actual size, at the mouse.
void Canvas::switch_size(POINT mouse) {
  if (!view_.is_showing() || lens_ || has_band_) return;
  change(
      [&](View& view) { view.sizing() == Sizing::kFit ? view.zoom_to_actual_size(&mouse) : view.set_sizing(Sizing::kFit); });
}

std::optional<POINT> Canvas::pixel_at(POINT at) const {
  if (!view_.is_showing()) return std::nullopt;
  const POINT pixel = view_.pixel_at(at);
  const RECT whole = {0, 0, view_.picture().width(), view_.picture().height()};
  return PtInRect(&whole, pixel) ? std::optional(pixel) : std::nullopt;
}

void Canvas::begin_band(POINT mouse, View::Step step) {
  view_.begin_band(mouse, step);
  has_band_ = true;
}

void Canvas::end_band(POINT mouse) {
  if (!std::exchange(has_band_, false)) return;
  view_.end_band(mouse);
  events_.changed();
}

void Canvas::cancel_band() {
  if (std::exchange(has_band_, false)) view_.cancel_band();
}

// Scrolls vertically, with Shift horizontally; with Ctrl zooms at the mouse.
void Canvas::turn_wheel(UINT message, WPARAM wParam, LPARAM lParam) {
  if (!view_.is_showing() || has_band_) return;
  const int units = static_cast<short>(HIWORD(wParam));
  if (LOWORD(wParam) & MK_CONTROL) {
    POINT mouse = point_of(lParam);
    ScreenToClient(window_, &mouse);
    const int steps = zoom_wheel_.turn(units);
    for (int i = 0; i < std::abs(steps); ++i)
      change([&](View& view) { view.zoom_by_step(steps > 0 ? View::Step::kLarger : View::Step::kSmaller, &mouse); });
    return;
  }
  stop_lens();
  const int pixels = scroll_wheel_.turn(units);
  if (message == kHorizontalWheelMessage) {
    view_.scroll_by(pixels, 0);
  } else if (LOWORD(wParam) & MK_SHIFT) {
    view_.scroll_by(-pixels, 0);
  } else {
    view_.scroll_by(0, -pixels);
  }
}

// ---- Keys ----

namespace {

struct ScrollKey {
  WPARAM key;
  UINT message;
  WORD code;
};
constexpr ScrollKey kScrollKeys[] = {{VK_LEFT, WM_HSCROLL, SB_LINELEFT},
                                     {VK_RIGHT, WM_HSCROLL, SB_LINERIGHT},
                                     {VK_UP, WM_VSCROLL, SB_LINEUP},
                                     {VK_DOWN, WM_VSCROLL, SB_LINEDOWN}};

}  // namespace

LRESULT Canvas::handle_key(UINT message, WPARAM wParam) {
  if (message == WM_KILLFOCUS) {
    stop_lens();
  } else if (wParam == VK_ESCAPE) {
    const bool has_something = has_band_ || lens_;
    cancel_band();
    stop_lens();
    if (!has_something) events_.escaped();
  } else if (view_.is_showing()) {
    for (const ScrollKey& row : kScrollKeys)
      if (row.key == wParam) handle(row.message, row.code, 0);
  }
  return 0;
}

// ---- Lens ----

void Canvas::toggle_lens() { lens_ ? stop_lens() : start_lens(); }

void Canvas::start_lens() {
  if (lens_ || has_band_ || !view_.is_showing()) return;
  try {
    lens_.emplace(window_, view_);
    lens_->move_to(mouse_in(window_));
  } catch (const Failure& failure) {
    events_.failed(failure.text());
  }
}

void Canvas::stop_lens() { lens_.reset(); }

}  // namespace vorel::viewer
