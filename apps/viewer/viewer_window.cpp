#include "viewer/viewer_window.h"

#include <algorithm>
#include <new>
#include <utility>

#include "core/pixel.h"
#include "viewer/commands.h"
#include "viewer/dpi.h"
#include "viewer/failure.h"
#include "viewer/resource.h"
#include "viewer/settings.h"
#include "viewer/text_dialog.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

constexpr const wchar_t* kClassName = L"VorelViewer";
constexpr const wchar_t* kProgram = L"Vorel Viewer";
constexpr UINT kDpiMessage = 0x02E0;  // WM_DPICHANGED, which headers for older systems lack
constexpr UINT kPageMessage = WM_APP + 1, kThumbnailMessage = WM_APP + 2;

void register_class() {
  WNDCLASSEXW window_class{};
  window_class.cbSize = sizeof window_class;
  window_class.lpfnWndProc = send_to_object<ViewerWindow>;
  window_class.hInstance = this_program();
  window_class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // the arrow
  window_class.lpszClassName = kClassName;
  RegisterClassExW(&window_class);
}

std::vector<Numbers> usual_numbers() {
  std::vector<Numbers> all;
  for (const Operation& operation : operations()) {
    Numbers numbers{};
    std::ranges::transform(operation.parameters, numbers.begin(), &Parameter::usual);
    all.push_back(numbers);
  }
  return all;
}

uint32_t color_at(const programs::Picture& picture, POINT pixel) {
  uint32_t color = 0;
  const int x = static_cast<int>(pixel.x), y = static_cast<int>(pixel.y);
  const uint8_t* const row = picture.pixels().row_from_top(y).data();
  with_depth(picture.depth(), [&](auto depth) { color = programs::color_of(picture, Pixel<depth>::load(row, x)); });
  return color;
}

}  // namespace

// The messages tell the window from other threads that something arrived.
ViewerWindow::ViewerWindow()
    : loader_([this] { PostMessageW(window_, kPageMessage, 0, 0); }),
      side_bar_(loader_.queue(), [this] { PostMessageW(window_, kThumbnailMessage, 0, 0); }),
      recent_files_(load_recent_files()) {}

// No exception may leave through the system that called the window procedure.
void ViewerWindow::attempt(const std::function<void()>& action, Telling telling) {
  try {
    action();
  } catch (const Failure& failure) {
    complain(failure.text(), telling);
  } catch (const programs::Problem& problem) {
    complain(widened(problem.what()), telling);
  } catch (const std::bad_alloc&) {
    complain(L"There is not enough memory", telling);
  } catch (const fs::filesystem_error&) {
    complain(L"The system does not take this path", telling);
  }
}

void ViewerWindow::complain(const std::wstring& text, Telling telling) {
  tell(text);
  if (telling == Telling::kBox) MessageBoxW(window_, text.c_str(), kProgram, MB_OK | MB_ICONWARNING);
}

// Cancel is the usual answer.
bool ViewerWindow::confirms(const std::wstring& question) const {
  return MessageBoxW(window_, question.c_str(), kProgram, MB_OKCANCEL | MB_ICONWARNING | MB_DEFBUTTON2) == IDOK;
}

// ---- The window and its parts ----

bool ViewerWindow::create(int show) {
  register_class();
  last_numbers_ = usual_numbers();
  accelerators_ = create_accelerators();
  const HWND window =
      CreateWindowExW(WS_EX_ACCEPTFILES, kClassName, kProgram, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                      CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, create_menu(), this_program(), this);
  if (window == nullptr) return false;
  show_icons();
  ShowWindow(window, show);
  return true;
}

bool ViewerWindow::create_parts() {
  return status_.create(window_, IDC_STATUS) && side_bar_.create(window_, IDC_THUMBNAILS) &&
         canvas_.create(window_, {.changed = [this] { update_facts(); },
                                  .failed = [this](const auto& text) { tell(text); },
                                  .pointed = [this](std::optional<POINT> pixel) { tell_pixel(pixel); },
                                  .escaped = [this] { escape(); }});
}

// Keys without Ctrl that move in a list stay the list's while it has the focus; Esc leaves it.
bool ViewerWindow::take_key(MSG& message) {
  const bool is_in_list = message.hwnd == side_bar_.window();
  if (is_in_list && message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
    is_loading() ? stop_loading() : static_cast<void>(SetFocus(canvas_.window()));
    return true;
  }
  const bool is_for_list = is_in_list && message.wParam < VK_F1 && GetKeyState(VK_CONTROL) >= 0;
  return !is_for_list && TranslateAcceleratorW(window_, accelerators_, &message);
}

void ViewerWindow::lay_out() {
  RECT client{};
  GetClientRect(window_, &client);
  const int width = static_cast<int>(client.right);
  const int height = std::max(0, static_cast<int>(client.bottom) - status_.lay_out(width, is_full_screen()));
  const bool has_list = thumbnails_ != Thumbnails::kNone;
  const int list = has_list ? std::min(side_bar_.width(), width / 2) : 0;
  ShowWindow(side_bar_.window(), has_list ? SW_SHOWNA : SW_HIDE);
  MoveWindow(side_bar_.window(), 0, 0, list, height, TRUE);
  MoveWindow(canvas_.window(), list, 0, width - list, height, TRUE);
}

LRESULT ViewerWindow::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE: return create_parts() ? 0 : -1;
    case WM_SIZE: lay_out(); return 0;
    case WM_ACTIVATEAPP:  // other programs may have written to the folder
      if (wParam != FALSE && thumbnails_ != Thumbnails::kNone) update_thumbnails();
      return 0;
    case WM_SETFOCUS: SetFocus(canvas_.window()); return 0;
    case WM_COMMAND:
      if (LOWORD(wParam) != IDC_THUMBNAILS)
        run_command(LOWORD(wParam));
      else if (HIWORD(wParam) == LBN_SELCHANGE)
        choose_thumbnail();
      return 0;
    case WM_DRAWITEM: side_bar_.draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)); return TRUE;
    case kPageMessage: attempt([this] { take_arrival(); }); return 0;
    case kThumbnailMessage: side_bar_.collect(); return 0;
    case WM_TIMER: attempt([this] { show_next_slide(); }); return 0;
    case WM_QUERYNEWPALETTE: canvas_.realise_palette(); return TRUE;
    case WM_PALETTECHANGED: InvalidateRect(canvas_.window(), nullptr, FALSE); return 0;
    case WM_SYSCOLORCHANGE:
      SendMessageW(status_.window(), message, wParam, lParam);
      RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
      return 0;
    case WM_INITMENUPOPUP: update_menu(reinterpret_cast<HMENU>(wParam), *this); return 0;
    case WM_DROPFILES: take_dropped(reinterpret_cast<HDROP>(wParam)); return 0;
    case kDpiMessage: follow_dpi(*reinterpret_cast<const RECT*>(lParam)); return 0;
    case WM_CLOSE: close(); return 0;
    case WM_DESTROY: PostQuitMessage(0); return 0;
    default: return DefWindowProcW(window_, message, wParam, lParam);
  }
}

void ViewerWindow::run_command(WORD id) {
  const Command* command = command_of(id);
  if (command == nullptr || (command->is_enabled && !command->is_enabled(*this))) return;
  is_loading() ? tell_loading() : tell(L"");
  attempt([&] { command->run(*this); }, command->telling);
}

void ViewerWindow::follow_dpi(const RECT& suggested) {
  SetWindowPos(window_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
               suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
  show_icons();
  status_.follow_dpi();
  side_bar_.follow_dpi();
  lay_out();
}

void ViewerWindow::show_icons() {
  SendMessageW(window_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon_for(window_, IconSize::kSmall)));
  SendMessageW(window_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon_for(window_, IconSize::kLarge)));
}

void ViewerWindow::take_dropped(HDROP drop) {
  constexpr UINT kFirst = 0;
  std::wstring path(DragQueryFileW(drop, kFirst, nullptr, 0), L'\0');
  DragQueryFileW(drop, kFirst, path.data(), static_cast<UINT>(path.size() + 1));
  DragFinish(drop);
  attempt([&] { open(path, Telling::kBox); }, Telling::kBox);
}

void ViewerWindow::toggle_band_mode() {
  const bool is_band = canvas_.dragging() == Canvas::Dragging::kBand;
  canvas_.set_dragging(is_band ? Canvas::Dragging::kMove : Canvas::Dragging::kBand);
}

void ViewerWindow::toggle_full_screen() { full_screen_.toggle(window_); }

// What Esc ends when nothing on the canvas is to be ended: one thing at a time.
void ViewerWindow::escape() {
  if (is_loading()) return stop_loading();
  if (has_slide_show_) return end_slide_show();
  if (is_full_screen()) toggle_full_screen();
}

// ---- Texts ----

void ViewerWindow::tell(const std::wstring& text) { status_.tell(text); }

void ViewerWindow::tell_pixel(std::optional<POINT> pixel) {
  std::wstring text;
  if (pixel)
    text = pixel_text({static_cast<int>(pixel->x), static_cast<int>(pixel->y), color_at(canvas_.view().picture(), *pixel)});
  status_.show_pixel(text);
}

void ViewerWindow::update_facts() {
  PictureFacts facts = document_.facts();
  if (document_.is_open()) facts.percent = percent(canvas_.view().scale());
  tell_pixel({});  // another one may be under the mouse
  SetWindowTextW(window_, title_text(facts).c_str());
  status_.show(facts);
}

void ViewerWindow::explain_keys() { show_text(window_, L"Keys and mouse", keys_text()); }

void ViewerWindow::tell_about() {
  constexpr int kVersionBytes = 13;
  char version[kVersionBytes];
  GetImageVersion(version, kVersionBytes);
  MessageBoxA(window_, version, "Vorel Viewer", MB_OK | MB_ICONINFORMATION);
}

}  // namespace vorel::viewer
