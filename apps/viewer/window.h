// Windows whose messages are handled by an object.
#pragma once

#include "viewer/system.h"

namespace vorel::viewer {

// The window procedure for a class with `LRESULT handle(UINT, WPARAM, LPARAM)` and `void attach(HWND)`. The object is the
// last argument of CreateWindowEx.
template <class Object>
LRESULT CALLBACK send_to_object(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    static_cast<Object*>(create->lpCreateParams)->attach(window);
  }
  auto* object = reinterpret_cast<Object*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return object != nullptr ? object->handle(message, wParam, lParam) : DefWindowProcW(window, message, wParam, lParam);
}

inline HINSTANCE this_program() { return GetModuleHandleW(nullptr); }

// The mouse position in a message, in client coordinates; it can be negative.
inline POINT point_of(LPARAM lParam) { return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))}; }

}  // namespace vorel::viewer
