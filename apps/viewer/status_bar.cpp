#include "viewer/status_bar.h"

#include <algorithm>

#include "viewer/window.h"

namespace vorel::viewer {
namespace {

enum Part : int { kName, kSize, kResolution, kPage, kZoom, kPixel, kParts };
constexpr int kCharacters[kParts] = {0, 28, 15, 16, 10, 27};  // the name has the rest

void set_text(HWND bar, int part, const std::wstring& text) {
  SendMessageW(bar, SB_SETTEXTW, static_cast<WPARAM>(part), reinterpret_cast<LPARAM>(text.c_str()));
}

}  // namespace

bool StatusBar::create(HWND parent, WORD id) {
  window_ = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), this_program(), nullptr);
  return window_ != nullptr;
}

int StatusBar::lay_out(int width, bool is_hidden) const {
  ShowWindow(window_, is_hidden ? SW_HIDE : SW_SHOW);
  if (is_hidden) return 0;
  SendMessageW(window_, WM_SIZE, 0, 0);
  RECT bar{};
  GetWindowRect(window_, &bar);
  const int height = static_cast<int>(bar.bottom - bar.top);
  const int character = std::max(1, height / 3);  // about as wide as a digit
  int edges[kParts], edge = width;
  for (int part = kParts - 1; part >= 0; edge -= kCharacters[part--] * character) edges[part] = std::max(edge, 0);
  edges[kParts - 1] = -1;
  SendMessageW(window_, SB_SETPARTS, kParts, reinterpret_cast<LPARAM>(edges));
  return height;
}

void StatusBar::show(const PictureFacts& facts) const {
  const bool has_picture = !facts.name.empty();
  set_text(window_, kName, facts.name);
  set_text(window_, kSize, has_picture ? size_text(facts) : L"");
  set_text(window_, kResolution, resolution_text(facts));
  set_text(window_, kPage, has_picture ? page_text(facts) : L"");
  set_text(window_, kZoom, has_picture ? percent_text(facts) : L"");
}

void StatusBar::show_pixel(const std::wstring& text) const { set_text(window_, kPixel, text); }

void StatusBar::tell(const std::wstring& message) const {
  set_text(window_, SB_SIMPLEID, message);
  SendMessageW(window_, SB_SIMPLE, message.empty() ? FALSE : TRUE, 0);
}

}  // namespace vorel::viewer
