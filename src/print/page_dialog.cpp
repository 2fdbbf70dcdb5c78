#include "print/page_dialog.h"

#include <memory>

#include "frame/thread_context.h"
#include "print/dialog_ids.h"
#include "print/job_state.h"
#include "print/printers.h"

namespace vorel::print {
namespace {

struct CheckBox {
  int id;
  int ImgPrintOptions::*option;
};

constexpr CheckBox kCheckBoxes[] = {
    {IDC_IMAGE_DPI, &ImgPrintOptions::useImageDpi},
    {IDC_CENTER_VERTICALLY, &ImgPrintOptions::centreVertically},
    {IDC_CENTER_HORIZONTALLY, &ImgPrintOptions::centreHorizontally},
    {IDC_FIT, &ImgPrintOptions::fitProportionally},
    {IDC_STRETCH, &ImgPrintOptions::stretchToPage},
    {IDC_SHOW_PAGES, &ImgPrintOptions::showPageProgress},
};

// The printers in the list box of the thread's dialog; null while there is no dialog.
const PerThread<std::unique_ptr<InstalledPrinters>> shown_printers;

// ---- The box of printers ----

LRESULT add_text(HWND box, const std::string& text) {
  return SendMessageA(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void offer_only(HWND box, const char* printer) {
  SendMessageA(box, CB_SETCURSEL, static_cast<WPARAM>(add_text(box, printer)), 0);
  EnableWindow(box, FALSE);
}

void offer_installed(HWND dialog, HWND box) {
  *shown_printers = std::make_unique<InstalledPrinters>(InstalledPrinters::enumerate());
  for (LPARAM index = 0; const std::string& name : (*shown_printers)->names())
    SendMessageA(box, CB_SETITEMDATA, static_cast<WPARAM>(add_text(box, name)), index++);
  if (SendMessageA(box, CB_GETCOUNT, 0, 0) == 0) EnableWindow(GetDlgItem(dialog, IDOK), FALSE);

  const std::string name = parse_device(default_device_text()).name;
  const LRESULT item =
      SendMessageA(box, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(name.c_str()));
  SendMessageA(box, CB_SETCURSEL, static_cast<WPARAM>(item), 0);  // CB_ERR clears the selection
}

void fill_box(HWND dialog) {
  HWND box = GetDlgItem(dialog, IDC_PRINTERS);
  const char* chosen = current_job().printer;
  if (*chosen != '\0') {
    offer_only(box, chosen);
  } else {
    offer_installed(dialog, box);
  }
}

// The printer to make a context for: the selected one, or the job's printer if there is no other.
std::string device_name(HWND dialog) {
  HWND box = GetDlgItem(dialog, IDC_PRINTERS);
  const LRESULT item = SendMessageA(box, CB_GETCURSEL, 0, 0);
  if (!IsWindowEnabled(box)) return current_job().printer;
  if (item == CB_ERR || *shown_printers == nullptr) return {};
  const auto index = static_cast<size_t>(SendMessageA(box, CB_GETITEMDATA, static_cast<WPARAM>(item), 0));
  return (*shown_printers)->device_name(index).value_or("");
}

// ---- The dialog ----

void show_job(HWND dialog) {
  const PrintJob& job = current_job();
  SetDlgItemTextA(dialog, IDC_DOCUMENT, job.document);
  fill_box(dialog);
  SetDlgItemInt(dialog, IDC_COPIES, 1, TRUE);
  for (const auto& [id, option] : kCheckBoxes)
    CheckDlgButton(dialog, id, job.options.*option != 0 ? BST_CHECKED : BST_UNCHECKED);
}

// False if the number of copies is missing.
bool take_options(HWND dialog, ImgPrintOptions& options) {
  for (const auto& [id, option] : kCheckBoxes) options.*option = IsDlgButtonChecked(dialog, id) == BST_CHECKED;
  BOOL is_number = FALSE;
  const auto copies = static_cast<int>(GetDlgItemInt(dialog, IDC_COPIES, &is_number, TRUE));
  if (!is_number || copies <= 0) return false;
  options.copies = copies;
  return true;
}

void accept(HWND dialog) {
  PrintJob& job = current_job();
  const std::string name = device_name(dialog);
  OwnedDc dc = printer_dc(name);
  if (!take_options(dialog, job.options)) {
    MessageBeep(MB_OK);
    SendMessageA(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, IDC_COPIES)), TRUE);
    return;
  }
  if (dc) {
    lstrcpynA(job.printer, name.c_str(), kJobNameBytes);
    forget_settings(name);
  }
  EndDialog(dialog, reinterpret_cast<INT_PTR>(dc.release()));
}

}  // namespace

bool follow_page_dialog(HWND dialog, UINT message, WPARAM command) {
  switch (message) {
    case WM_INITDIALOG: show_job(dialog); return true;
    case WM_COMMAND:
      if (LOWORD(command) == IDOK) accept(dialog);
      if (LOWORD(command) == IDCANCEL) EndDialog(dialog, 0);
      return LOWORD(command) == IDOK || LOWORD(command) == IDCANCEL;
    case WM_DESTROY: shown_printers->reset(); return true;
    default: return false;
  }
}

}  // namespace vorel::print
