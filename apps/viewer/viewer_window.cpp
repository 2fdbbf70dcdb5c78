#include "viewer/viewer_window.h"

#include <algorithm>
#include <new>
#include <utility>

#include "viewer/clipboard.h"
#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/file_dialogs.h"
#include "viewer/logic/neighbours.h"
#include "viewer/print_dialog.h"
#include "viewer/print_preview.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

constexpr const wchar_t* kClassName = L"VorelViewer";
constexpr const wchar_t* kProgram = L"Vorel Viewer";
constexpr UINT kDpiMessage = 0x02E0;  // WM_DPICHANGED, which headers for older systems lack

enum StatusPart : int { kMessagePart, kSizePart, kPagePart, kZoomPart, kStatusParts };

void register_class() {
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = send_to_object<ViewerWindow>;
  window_class.hInstance = this_program();
  window_class.hIcon = LoadIconW(nullptr, MAKEINTRESOURCEW(32512));      // the system's for programs
  window_class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // the arrow
  window_class.lpszClassName = kClassName;
  RegisterClassW(&window_class);
}

std::vector<std::wstring> picture_names_in(const fs::path& folder) {
  std::vector<std::wstring> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (format_by_name(entry->path()) != nullptr) names.push_back(entry->path().filename().wstring());
  }
  return names;
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

}  // namespace

// No exception may leave through the system that called the window procedure.
void ViewerWindow::attempt(const std::function<void()>& action) {
  try {
    tell(L"");
    action();
  } catch (const Failure& failure) {
    tell(failure.text());
  } catch (const programs::Problem& problem) {
    tell(widened(problem.what()));
  } catch (const std::bad_alloc&) {
    tell(L"There is not enough memory");
  } catch (const fs::filesystem_error&) {
    tell(L"The system does not take this path");
  }
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
  ShowWindow(window, show);
  return true;
}

bool ViewerWindow::create_parts() {
  status_ = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, window_,
                            nullptr, this_program(), nullptr);
  return canvas_.create(window_,
                        {.changed = [this] { update_facts(); }, .failed = [this](const auto& text) { tell(text); }});
}

void ViewerWindow::lay_out() {
  SendMessageW(status_, WM_SIZE, 0, 0);
  RECT client{}, status{};
  GetClientRect(window_, &client);
  GetWindowRect(status_, &status);
  const int height = std::max(0, static_cast<int>(client.bottom - (status.bottom - status.top)));
  MoveWindow(canvas_.window(), 0, 0, client.right, height, TRUE);

  const int character = std::max(1, static_cast<int>(status.bottom - status.top) / 3);  // about as wide as a digit
  const int zoom = client.right - 12 * character, page = zoom - 16 * character, size = page - 32 * character;
  const int edges[kStatusParts] = {size, page, zoom, -1};
  SendMessageW(status_, SB_SETPARTS, kStatusParts, reinterpret_cast<LPARAM>(edges));
}

LRESULT ViewerWindow::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE: return create_parts() ? 0 : -1;
    case WM_SIZE: lay_out(); return 0;
    case WM_SETFOCUS: SetFocus(canvas_.window()); return 0;
    case WM_COMMAND: run_command(LOWORD(wParam)); return 0;
    case WM_QUERYNEWPALETTE: canvas_.realise_palette(); return TRUE;
    case WM_PALETTECHANGED: InvalidateRect(canvas_.window(), nullptr, FALSE); return 0;
    case WM_INITMENUPOPUP: show_command_states(reinterpret_cast<HMENU>(wParam)); return 0;
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
  attempt([&] { command->run(*this); });
}

void ViewerWindow::show_command_states(HMENU menu) const {
  for (int item = 0; item < GetMenuItemCount(menu); ++item) {
    const Command* command = command_of(static_cast<WORD>(GetMenuItemID(menu, item)));
    if (command == nullptr) continue;
    const bool is_enabled = !command->is_enabled || command->is_enabled(*this);
    const bool is_checked = command->is_checked && command->is_checked(*this);
    EnableMenuItem(menu, static_cast<UINT>(item), MF_BYPOSITION | (is_enabled ? MF_ENABLED : MF_GRAYED));
    CheckMenuItem(menu, static_cast<UINT>(item), MF_BYPOSITION | (is_checked ? MF_CHECKED : MF_UNCHECKED));
  }
}

void ViewerWindow::follow_dpi(const RECT& suggested) {
  SetWindowPos(window_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
               suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void ViewerWindow::take_dropped(HDROP drop) {
  constexpr UINT kFirst = 0;
  std::wstring path(DragQueryFileW(drop, kFirst, nullptr, 0), L'\0');
  DragQueryFileW(drop, kFirst, path.data(), static_cast<UINT>(path.size() + 1));
  DragFinish(drop);
  attempt([&] { open(path); });
}

// ---- Texts ----

void ViewerWindow::tell(const std::wstring& text) {
  SendMessageW(status_, SB_SETTEXTW, kMessagePart, reinterpret_cast<LPARAM>(text.c_str()));
}

void ViewerWindow::update_facts() {
  PictureFacts facts = document_.facts();
  const bool is_open = document_.is_open();
  if (is_open) facts.percent = percent(canvas_.view().scale());
  SetWindowTextW(window_, title_text(facts).c_str());
  const auto show = [&](StatusPart part, const std::wstring& text) {
    SendMessageW(status_, SB_SETTEXTW, static_cast<WPARAM>(part), reinterpret_cast<LPARAM>(is_open ? text.c_str() : L""));
  };
  show(kSizePart, size_text(facts));
  show(kPagePart, page_text(facts));
  show(kZoomPart, percent_text(facts));
}

void ViewerWindow::explain_mouse() {
  MessageBoxW(window_,
              L"Drag a rectangle with the left button to fill the window with it.\n"
              L"Click with the left button to zoom in, with the right one to zoom out.\n"
              L"The wheel scrolls, with Shift across; with Ctrl it zooms where the mouse is.\n"
              L"Arrow keys, Home and End scroll. Esc takes a rectangle back.\n"
              L"Hold the space bar for the magnifying lens.\n\n"
              L"All other keys stand in the menus.",
              kProgram, MB_OK | MB_ICONINFORMATION);
}

void ViewerWindow::tell_about() {
  constexpr int kVersionBytes = 13;
  char version[kVersionBytes];
  GetImageVersion(version, kVersionBytes);
  MessageBoxA(window_, version, "Vorel Viewer", MB_OK | MB_ICONINFORMATION);
}

// ---- Documents ----

// The picture that was shown lives until the new one is.
void ViewerWindow::show(Document document, Beginning beginning) {
  canvas_.change([&](View& view) {
    beginning == Beginning::kFirst ? view.show_first(document.picture().get()) : view.show_next(document.picture().get());
    std::swap(document_, document);
  });
}

void ViewerWindow::open(const fs::path& path) {
  if (!may_lose_changes()) return;
  place_ = fs::absolute(path);
  show(Document::from_file(place_, 1), Beginning::kFirst);
}

void ViewerWindow::ask_and_open() {
  if (const auto path = ask_for_file_to_open(window_)) open(*path);
}

// A file that cannot be loaded does not stand in the way of those beyond it.
void ViewerWindow::open_neighbour(int step) {
  const auto name = neighbour(picture_names_in(place_.parent_path()), place_.filename().wstring(), step);
  if (!name)
    throw Failure(step > 0 ? L"This is the last picture of the folder" : L"This is the first picture of the folder");
  open(place_.parent_path() / *name);
}

void ViewerWindow::load_again() {
  if (may_lose_changes()) show(Document::from_file(document_.path(), document_.page()), Beginning::kNext);
}

void ViewerWindow::go_to_page(int page) {
  if (page < 1 || page > document_.pages()) {
    throw Failure(page < 1 ? L"This is the first page of the file" : L"This is the last page of the file");
  }
  if (may_lose_changes()) show(Document::from_file(document_.path(), page), Beginning::kNext);
}

void ViewerWindow::save_as() {
  const fs::path offered = document_.path().empty() ? fs::path(L"Untitled.bmp") : document_.path();
  const auto choice = ask_for_file_to_save(window_, offered);
  if (!choice) return;
  keep_pages(choice->path);
  document_.save_as(choice->path, *choice->format);
  place_ = choice->path;
  update_facts();
  tell(L"Saved as " + choice->path.filename().wstring());
}

// One page would take the place of all.
void ViewerWindow::keep_pages(const fs::path& target) const {
  std::error_code ignored;
  if (document_.pages() == 1 || !fs::equivalent(target, document_.path(), ignored)) return;
  throw Failure(L"The file has " + std::to_wstring(document_.pages()) +
                L" pages, and this one would replace them: choose another name");
}

bool ViewerWindow::may_lose_changes() {
  if (!document_.is_changed()) return true;
  return MessageBoxW(window_, L"The picture has changed since it was saved. Go on without saving it?", kProgram,
                     MB_OKCANCEL | MB_ICONWARNING | MB_DEFBUTTON2) == IDOK;
}

void ViewerWindow::close() {
  if (may_lose_changes()) DestroyWindow(window_);
}

// ---- Printing ----

void ViewerWindow::print() {
  DocumentPages pages(document_);
  const std::vector<int> chosen = ask_how_to_print(window_, pages, print_settings_);
  if (chosen.empty()) return;
  const int sheets = print_pages(window_, print_settings_, pages, chosen);
  tell(L"Printed " + counted(sheets, L" sheet") + L" on " + print_settings_.printer.name());
}

void ViewerWindow::preview() {
  DocumentPages pages(document_);
  if (show_preview(window_, pages, print_settings_) == PreviewEnd::kPrint) print();
}

// Another default printer is the one to print on next.
void ViewerWindow::set_up_printer() {
  if (PrinterSetup(window_) != 0) print_settings_.printer = {};
}

// ---- Editing ----

void ViewerWindow::change(programs::Picture picture) {
  document_.change(std::move(picture));
  canvas_.change([this](View& view) { view.show_changed(document_.picture().get()); });
}

void ViewerWindow::undo() {
  document_.undo();
  canvas_.change([this](View& view) { view.show_changed(document_.picture().get()); });
}

void ViewerWindow::process(size_t number) {
  const Operation& operation = operations()[number];
  if (!operation.parameters.empty()) {
    const auto numbers = ask_for_numbers(window_, plain_name(operation.name), operation.parameters, last_numbers_[number]);
    if (!numbers) return;
    last_numbers_[number] = *numbers;
  }
  change(run_operation(operation, document_.picture(), last_numbers_[number]));
}

void ViewerWindow::copy() { copy_picture(window_, document_.picture()); }

void ViewerWindow::paste() {
  if (may_lose_changes()) show(Document::untitled(paste_picture(window_)), Beginning::kFirst);
}

}  // namespace vorel::viewer
