// The message box that a person would see.
#include <gtest/gtest.h>
#include <string>

#include <vorel32.h>

namespace {

std::wstring seen_title, seen_text;

std::wstring text_of(HWND window) {
  wchar_t buffer[200] = L"";
  GetWindowTextW(window, buffer, 200);
  return buffer;
}

// Reads the box as it is activated and presses its button.
LRESULT CALLBACK read_and_press(int code, WPARAM window, LPARAM details) {
  constexpr int kTextOfABox = 0xFFFF;
  HWND box = reinterpret_cast<HWND>(window);
  if (code == HCBT_ACTIVATE && GetDlgItem(box, kTextOfABox) != nullptr) {
    seen_title = text_of(box);
    seen_text = text_of(GetDlgItem(box, kTextOfABox));
    PostMessageW(box, WM_COMMAND, IDOK, 0);
  }
  return CallNextHookEx(nullptr, code, window, details);
}

TEST(ErrorMessage, IsShownWhereThereIsNoBuffer) {
  HHOOK hook = SetWindowsHookExW(WH_CBT, read_and_press, nullptr, GetCurrentThreadId());
  EXPECT_EQ(ImgErrorString(nullptr, 3), nullptr);
  UnhookWindowsHookEx(hook);
  EXPECT_EQ(seen_title, L"VOREL error");
  EXPECT_EQ(seen_text, L"Can't open file");
}

}  // namespace
