// Message boxes as a person would see them.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace test {

// Presses the button of every message box of this thread and reads the box, for a scope.
class MessageBoxes {
 public:
  MessageBoxes() : hook_(SetWindowsHookExA(WH_CBT, read_and_press, nullptr, GetCurrentThreadId())) { seen_.clear(); }
  MessageBoxes(const MessageBoxes&) = delete;
  MessageBoxes& operator=(const MessageBoxes&) = delete;
  ~MessageBoxes() { UnhookWindowsHookEx(hook_); }

  // Each as "TITLE: TEXT".
  const std::vector<std::string>& seen() const { return seen_; }

 private:
  static std::string text_of(HWND window) {
    char buffer[300] = "";
    GetWindowTextA(window, buffer, sizeof buffer);
    return buffer;
  }

  static LRESULT CALLBACK read_and_press(int code, WPARAM window, LPARAM details) {
    constexpr int kTextOfABox = 0xFFFF;
    HWND box = reinterpret_cast<HWND>(window);
    if (GetDlgItem(box, kTextOfABox) != nullptr) {
      if (code == HCBT_ACTIVATE) PostMessageW(box, WM_COMMAND, IDOK, 0);
      // Some boxes are activated before they have their text; all have it when they go.
      if (code == HCBT_DESTROYWND) seen_.push_back(text_of(box) + ": " + text_of(GetDlgItem(box, kTextOfABox)));
    }
    return CallNextHookEx(nullptr, code, window, details);
  }

  inline static std::vector<std::string> seen_;
  HHOOK hook_;
};

}  // namespace test
