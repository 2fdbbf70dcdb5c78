// Dialogs, driven as a person would.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <windows.h>

#include "win32/support/window.h"

namespace test {

inline std::string text_of(HWND window) {
  char text[400] = "";
  SendMessageA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
  return text;
}
inline std::string text_of(HWND dialog, int control) { return text_of(GetDlgItem(dialog, control)); }

inline LRESULT send(HWND dialog, int control, UINT message, WPARAM wide = 0, LPARAM value = 0) {
  return SendDlgItemMessageA(dialog, control, message, wide, value);
}

inline void press(HWND dialog, int button) { SendMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0); }

// Does something, once, with the first dialog of this thread that comes up with a certain title: as soon as it waits for input.
class WithDialog {
 public:
  WithDialog(std::string title, std::function<void(HWND)> action) {
    title_ = std::move(title);
    action_ = std::move(action);
    dialog_ = nullptr;
    hook_ = SetWindowsHookExA(WH_CBT, notice, nullptr, GetCurrentThreadId());
  }
  WithDialog(const WithDialog&) = delete;
  WithDialog& operator=(const WithDialog&) = delete;
  ~WithDialog() { UnhookWindowsHookEx(hook_); }

  bool was_there() const { return action_ == nullptr; }

 private:
  static LRESULT CALLBACK notice(int code, WPARAM window, LPARAM details) {
    HWND dialog = reinterpret_cast<HWND>(window);
    if (code == HCBT_ACTIVATE && dialog_ == nullptr && text_of(dialog) == title_) {
      dialog_ = dialog;
      SetTimer(nullptr, 0, 1, act);
    }
    return CallNextHookEx(nullptr, code, window, details);
  }

  static void CALLBACK act(HWND, UINT, UINT_PTR timer, DWORD) {
    if (!IsWindowEnabled(dialog_)) return;  // it shows a message
    KillTimer(nullptr, timer);
    if (action_ != nullptr) std::exchange(action_, nullptr)(dialog_);
  }

  inline static std::string title_;
  inline static std::function<void(HWND)> action_;
  inline static HWND dialog_;
  HHOOK hook_;
};

}  // namespace test
