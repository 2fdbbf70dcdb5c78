#include "viewer/print_dialog.h"

#include <filesystem>
#include <utility>

#include "common/page_range.h"
#include "common/printers.h"
#include "viewer/failure.h"
#include "viewer/layout_controls.h"
#include "viewer/resource.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

constexpr int kMostCopies = 999;
constexpr WPARAM kLongestRange = 200;  // characters

std::wstring text_of(HWND control) {
  std::wstring text(static_cast<size_t>(GetWindowTextLengthW(control)), L'\0');
  GetWindowTextW(control, text.data(), static_cast<int>(text.size()) + 1);
  return text;
}

class PrintDialog {
 public:
  PrintDialog(const DocumentPages& pages, PrintSettings settings) : pages_(pages), settings_(std::move(settings)) {}

  bool run(HWND owner) {
    return DialogBoxParamW(this_program(), MAKEINTRESOURCEW(IDD_PRINT), owner, procedure, reinterpret_cast<LPARAM>(this)) ==
           IDOK;
  }
  const PrintSettings& settings() const { return settings_; }
  const std::vector<int>& chosen_pages() const { return chosen_pages_; }

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* self = reinterpret_cast<PrintDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (message == WM_INITDIALOG) return self->fill(dialog);
    if (message != WM_COMMAND) return FALSE;
    self->run_command(dialog, LOWORD(wParam), HIWORD(wParam));
    return TRUE;
  }

  BOOL fill(HWND dialog) {
    offer_printers(GetDlgItem(dialog, IDC_PRINTERS));
    SendDlgItemMessageW(dialog, IDC_PAGES, EM_LIMITTEXT, kLongestRange, 0);
    const bool has_pages = pages_.count() > 1;
    const std::wstring all = has_pages ? L"1-" + std::to_wstring(pages_.count()) : L"1";
    SetDlgItemTextW(dialog, IDC_PAGES, all.c_str());
    EnableWindow(GetDlgItem(dialog, IDC_PAGES), has_pages);
    SetDlgItemTextW(dialog, IDC_PAGES_HINT, has_pages ? L"such as 1-3,5" : L"");
    SetDlgItemInt(dialog, IDC_COPIES, static_cast<UINT>(settings_.copies), FALSE);
    CheckDlgButton(dialog, IDC_COLLATED, settings_.is_collated ? BST_CHECKED : BST_UNCHECKED);
    show_layout(dialog, settings_.layout);
    return TRUE;
  }

  void offer_printers(HWND box) const {
    for (const std::wstring& name : programs::printer_names()) {
      const LRESULT item = SendMessageW(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
      if (name == settings_.printer.name()) SendMessageW(box, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    }
  }

  void run_command(HWND dialog, WORD id, WORD notification) {
    if (id == IDC_PRINTERS && notification == CBN_SELCHANGE) take_printer(dialog);
    if (id == IDC_PROPERTIES) set_up(dialog);
    if (id == IDOK && take(dialog)) EndDialog(dialog, IDOK);
    if (id == IDCANCEL) EndDialog(dialog, IDCANCEL);
  }

  void take_printer(HWND dialog) {
    std::wstring name = text_of(GetDlgItem(dialog, IDC_PRINTERS));
    if (name != settings_.printer.name()) settings_.printer = Printer(std::move(name));
  }

  void set_up(HWND dialog) {
    try {
      settings_.printer.set_up(dialog);
    } catch (const Failure& failure) {
      MessageBoxW(dialog, failure.text().c_str(), L"Print", MB_OK | MB_ICONWARNING);
    }
  }

  bool take(HWND dialog) {
    take_printer(dialog);
    settings_.layout = chosen_layout(dialog);
    settings_.is_collated = IsDlgButtonChecked(dialog, IDC_COLLATED) == BST_CHECKED;
    const std::string list = std::filesystem::path(text_of(GetDlgItem(dialog, IDC_PAGES))).string();
    const auto pages = programs::parse_page_range(list, pages_.count());
    if (!pages) return point_at(dialog, IDC_PAGES);
    chosen_pages_ = *pages;
    settings_.copies = static_cast<int>(GetDlgItemInt(dialog, IDC_COPIES, nullptr, FALSE));
    return settings_.copies >= 1 && settings_.copies <= kMostCopies ? true : point_at(dialog, IDC_COPIES);
  }

  // At what cannot be taken. Returns false.
  static bool point_at(HWND dialog, int edit) {
    MessageBeep(MB_ICONWARNING);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, edit)), TRUE);
    SendDlgItemMessageW(dialog, edit, EM_SETSEL, 0, -1);
    return false;
  }

  const DocumentPages& pages_;
  PrintSettings settings_;
  std::vector<int> chosen_pages_;
};

}  // namespace

std::vector<int> ask_how_to_print(HWND owner, const DocumentPages& pages, PrintSettings& settings) {
  if (settings.printer.name().empty()) settings.printer = Printer::usual();
  PrintDialog dialog(pages, settings);
  if (!dialog.run(owner)) return {};
  settings = dialog.settings();
  return dialog.chosen_pages();
}

}  // namespace vorel::viewer
