#include "viewer/full_screen.h"

namespace vorel::viewer {

void FullScreen::toggle(HWND window) {
  is_on_ = !is_on_;
  is_on_ ? enter(window) : leave(window);
}

void FullScreen::enter(HWND window) {
  placement_.length = sizeof placement_;
  GetWindowPlacement(window, &placement_);
  style_ = GetWindowLongPtrW(window, GWL_STYLE);
  menu_ = GetMenu(window);
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
  const RECT& screen = monitor.rcMonitor;
  SetMenu(window, nullptr);
  SetWindowLongPtrW(window, GWL_STYLE, style_ & ~(WS_CAPTION | WS_THICKFRAME));
  SetWindowPos(window, HWND_TOP, screen.left, screen.top, screen.right - screen.left, screen.bottom - screen.top,
               SWP_FRAMECHANGED);
}

void FullScreen::leave(HWND window) {
  SetWindowLongPtrW(window, GWL_STYLE, style_);
  SetMenu(window, menu_);
  SetWindowPlacement(window, &placement_);
  SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
}

}  // namespace vorel::viewer
