#include "viewer/batch_dialog.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/formats.h"
#include "viewer/failure.h"
#include "viewer/file_dialogs.h"
#include "viewer/resource.h"
#include "viewer/tool_run.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace fs = std::filesystem;
namespace {

constexpr UINT kWroteMessage = WM_APP + 1, kEndedMessage = WM_APP + 2;
constexpr const wchar_t* kAsInput = L"as the input";

std::wstring text_of(HWND dialog, int id) {
  const HWND control = GetDlgItem(dialog, id);
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control)), L'\0');
  GetWindowTextW(control, text.data(), static_cast<int>(text.size()) + 1);
  return text;
}

std::optional<fs::path> ask_for_folder(HWND owner, const wchar_t* title) {
  BROWSEINFOW browse{};
  browse.hwndOwner = owner;
  browse.lpszTitle = title;
  browse.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
  LPITEMIDLIST const chosen = SHBrowseForFolderW(&browse);
  wchar_t path[MAX_PATH] = {};
  const bool has_path = chosen != nullptr && SHGetPathFromIDListW(chosen, path);
  CoTaskMemFree(chosen);
  return has_path ? std::optional(fs::path(path)) : std::nullopt;
}

fs::path tool_path() {
  std::wstring path(MAX_PATH, L'\0');
  while (GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())) >= path.size())
    path.resize(path.size() * 2);
  return fs::path(path.c_str()).parent_path() / L"vorel.exe";
}

// Lines of the tool end with a line feed alone, those of the control need both.
std::wstring for_control(const std::string& text) {
  std::string lines;
  for (const char character : text)
    if (character != '\r') lines += character == '\n' ? "\r\n" : std::string(1, character);
  return widened(lines);
}

class BatchDialog {
 public:
  explicit BatchDialog(fs::path folder) : folder_(std::move(folder)) {}

  void run(HWND owner) {
    DialogBoxParamW(this_program(), MAKEINTRESOURCEW(IDD_BATCH), owner, procedure, reinterpret_cast<LPARAM>(this));
  }

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* self = reinterpret_cast<BatchDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    switch (message) {
      case WM_INITDIALOG: return self->fill(dialog);
      case WM_COMMAND: self->run_command(dialog, LOWORD(wParam)); return TRUE;
      case kWroteMessage:
        self->write(dialog, *std::unique_ptr<std::string>(reinterpret_cast<std::string*>(lParam)));
        return TRUE;
      case kEndedMessage: self->end(dialog, static_cast<DWORD>(wParam)); return TRUE;
      default: return FALSE;
    }
  }

  BOOL fill(HWND dialog) const {
    SetDlgItemTextW(dialog, IDC_BATCH_IN, folder_.c_str());
    if (!folder_.empty()) SetDlgItemTextW(dialog, IDC_BATCH_OUT, (folder_ / L"done").c_str());
    SendDlgItemMessageW(dialog, IDC_BATCH_FORMAT, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(kAsInput));
    for (const FileFormat* format : programs::picture_formats()) {
      if (format->endings[0] == nullptr) continue;
      const std::wstring word = widened(format->word);
      SendDlgItemMessageW(dialog, IDC_BATCH_FORMAT, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(word.c_str()));
    }
    SendDlgItemMessageW(dialog, IDC_BATCH_FORMAT, CB_SETCURSEL, 0, 0);
    return TRUE;
  }

  void run_command(HWND dialog, int id) {
    const auto take = [&](int edit, const std::optional<fs::path>& path) {
      if (path) SetDlgItemTextW(dialog, edit, path->c_str());
    };
    switch (id) {
      case IDC_BATCH_CHOOSE_IN: take(IDC_BATCH_IN, ask_for_folder(dialog, L"Folder with pictures")); break;
      case IDC_BATCH_CHOOSE_STEPS: take(IDC_BATCH_STEPS, ask_for_steps_to_open(dialog)); break;
      case IDC_BATCH_CHOOSE_OUT: take(IDC_BATCH_OUT, ask_for_folder(dialog, L"Folder for what is made")); break;
      case IDOK: begin(dialog); break;
      case IDCANCEL: run_ ? run_->stop() : static_cast<void>(EndDialog(dialog, IDCANCEL)); break;
      default: break;
    }
  }

  std::vector<std::wstring> arguments(HWND dialog) const {
    std::vector<std::wstring> arguments = {
        tool_path().wstring(),         L"batch", L"--steps", text_of(dialog, IDC_BATCH_STEPS), L"--out",
        text_of(dialog, IDC_BATCH_OUT)};
    const std::wstring format = text_of(dialog, IDC_BATCH_FORMAT);
    if (format != kAsInput) arguments.insert(arguments.end(), {L"--to", format});
    if (IsDlgButtonChecked(dialog, IDC_BATCH_RECURSIVE) == BST_CHECKED) arguments.push_back(L"--recursive");
    if (IsDlgButtonChecked(dialog, IDC_BATCH_OVERWRITE) == BST_CHECKED) arguments.push_back(L"--overwrite");
    arguments.push_back(text_of(dialog, IDC_BATCH_IN));
    return arguments;
  }

  void begin(HWND dialog) {
    for (const int edit : {IDC_BATCH_IN, IDC_BATCH_STEPS, IDC_BATCH_OUT})
      if (text_of(dialog, edit).empty()) return static_cast<void>(SetFocus(GetDlgItem(dialog, edit)));
    SetDlgItemTextW(dialog, IDC_TEXT, L"");
    try {
      run_ = std::make_unique<ToolRun>(
          arguments(dialog), ToolRun::Events{[dialog](const std::string& text) {
                                               PostMessageW(dialog, kWroteMessage, 0,
                                                            reinterpret_cast<LPARAM>(new std::string(text)));
                                             },
                                             [dialog](DWORD code) { PostMessageW(dialog, kEndedMessage, code, 0); }});
      show_running(dialog, true);
    } catch (const Failure& failure) {
      MessageBoxW(dialog, failure.text().c_str(), L"Batch", MB_OK | MB_ICONWARNING);
    }
  }

  void end(HWND dialog, DWORD code) {
    run_.reset();
    show_running(dialog, false);
    write(dialog, code == 0 ? "Done.\n" : code == ToolRun::kStopped ? "Stopped.\n" : "Ended with failures.\n");
  }

  static void show_running(HWND dialog, bool is_running) {
    EnableWindow(GetDlgItem(dialog, IDOK), !is_running);
    SetDlgItemTextW(dialog, IDCANCEL, is_running ? L"Stop" : L"Close");
    if (is_running) SetFocus(GetDlgItem(dialog, IDCANCEL));
  }

  static void write(HWND dialog, const std::string& text) {
    const HWND log = GetDlgItem(dialog, IDC_TEXT);
    const int end = GetWindowTextLengthW(log);
    SendMessageW(log, EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(log, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(for_control(text).c_str()));
  }

  fs::path folder_;
  std::unique_ptr<ToolRun> run_;
};

}  // namespace

void run_batch(HWND owner, const fs::path& folder) { BatchDialog(folder).run(owner); }

}  // namespace vorel::viewer
