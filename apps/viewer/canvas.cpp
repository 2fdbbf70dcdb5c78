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
  window_class.style = CS_HREDRAW | CS_VREDRAW;  // a fitted picture changes everywhere
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
    case WM_KEYUP:
    case WM_KILLFOCUS: return handle_key(message, wParam, lParam);
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
    case WM_LBUTTONDOWN: begin_band(point_of(lParam), View::Step::kLarger); return 0;
    case WM_RBUTTONDOWN: begin_band(point_of(lParam), View::Step::kSmaller); return 0;
    case WM_MOUSEMOVE:
      if (has_band_) view_.move_band(point_of(lParam));
      if (lens_) lens_->move_to(point_of(lParam));
      return 0;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP: end_band(point_of(lParam)); return 0;
    case WM_CAPTURECHANGED:  // capture was lost; a repaint removes the band
      if (std::exchange(has_band_, false)) InvalidateRect(window_, nullptr, FALSE);
      return 0;
    case WM_MOUSEWHEEL:
    case kHorizontalWheelMessage: turn_wheel(message, wParam, lParam); return 0;
    case WM_SETCURSOR:
      if (lens_) return TRUE;  // the lens hides it
      break;
    default: break;
  }
  return DefWindowProcW(window_, message, wParam, lParam);
}

void Canvas::begin_band(POINT mouse, View::Step step) {
  SetFocus(window_);
  if (!view_.is_showing() || lens_ || has_band_) return;
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
constexpr ScrollKey kScrollKeys[] = {{VK_LEFT, WM_HSCROLL, SB_LINELEFT}, {VK_RIGHT, WM_HSCROLL, SB_LINERIGHT},
                                     {VK_UP, WM_VSCROLL, SB_LINEUP},     {VK_DOWN, WM_VSCROLL, SB_LINEDOWN},
                                     {VK_HOME, WM_VSCROLL, SB_TOP},      {VK_END, WM_VSCROLL, SB_BOTTOM}};

constexpr LPARAM kWasDownBefore = LPARAM{1} << 30;  // set when a held key repeats

}  // namespace

LRESULT Canvas::handle_key(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_KILLFOCUS || (message == WM_KEYUP && wParam == VK_SPACE)) {
    stop_lens();
  } else if (message == WM_KEYDOWN && wParam == VK_SPACE) {
    if (!(lParam & kWasDownBefore)) start_lens();
  } else if (message == WM_KEYDOWN && wParam == VK_ESCAPE) {
    cancel_band();
    stop_lens();
  } else if (message == WM_KEYDOWN && view_.is_showing()) {
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
