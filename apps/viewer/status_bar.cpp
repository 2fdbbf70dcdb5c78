#include "viewer/status_bar.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "viewer/dpi.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

enum Part : size_t { kName, kSize, kResolution, kPage, kZoom, kPixel, kParts };

// Long usual texts; the name has the rest.
constexpr const wchar_t* kUsual[kParts] = {L"",       L"9999 x 9999 pixels, 24 bits", L"1200 x 1200 dpi", L"page 100 of 100",
                                           L"1600 %", L"9999, 9999: 255 255 255"};

// Parts give way in this order where the window is narrow. The title has the page and the zoom too.
constexpr Part kGivingWay[] = {kPage, kResolution, kZoom, kSize};

using Widths = std::array<int, kParts>;

Widths widths_of_texts(HWND bar, HFONT font) {
  const WindowDc dc(bar);
  const HGDIOBJ previous = SelectObject(dc.get(), font);
  Widths widths{};
  for (size_t part = 0; part < kParts; ++part) {
    constexpr int kAround = 20;
    SIZE size{};
    const std::wstring text = kUsual[part];
    GetTextExtentPoint32W(dc.get(), text.c_str(), static_cast<int>(text.size()), &size);
    widths[part] = static_cast<int>(size.cx) + scaled_for(bar, kAround);
  }
  SelectObject(dc.get(), previous);
  return widths;
}

Widths fitted(Widths widths, int room) {
  const auto sum = [&] { return std::accumulate(widths.begin(), widths.end(), 0); };
  for (const Part part : kGivingWay)
    if (sum() > room) widths[part] = 0;
  widths[kName] = std::max(widths[kName] + room - sum(), 0);
  return widths;
}

void set_text(HWND bar, int part, const std::wstring& text) {
  SendMessageW(bar, SB_SETTEXTW, static_cast<WPARAM>(part), reinterpret_cast<LPARAM>(text.c_str()));
}

}  // namespace

bool StatusBar::create(HWND parent, WORD id) {
  window_ = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), this_program(), nullptr);
  if (window_ == nullptr) return false;
  follow_dpi();
  return true;
}

void StatusBar::follow_dpi() {
  OwnedFont font = text_font_for(window_);
  SendMessageW(window_, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
  font_ = std::move(font);
}

int StatusBar::lay_out(int width, bool is_hidden) const {
  ShowWindow(window_, is_hidden ? SW_HIDE : SW_SHOW);
  if (is_hidden) return 0;
  SendMessageW(window_, WM_SIZE, 0, 0);
  RECT bar{};
  GetWindowRect(window_, &bar);
  const int height = static_cast<int>(bar.bottom - bar.top);
  Widths texts = widths_of_texts(window_, font_.get());
  texts[kName] = width / 8;
  int edges[kParts], edge = 0;
  const Widths widths = fitted(texts, width - height);  // the grip is about as wide as it is high
  for (size_t part = 0; part < kParts; ++part) edges[part] = edge += widths[part];
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
