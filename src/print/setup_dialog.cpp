#include "print/setup_dialog.h"

#include <string>
#include <vector>

#include "platform/windows/instance.h"
#include "print/dialog_ids.h"
#include "print/driver_setup.h"
#include "print/printer_names.h"
#include "print/printers.h"

namespace vorel::print {
namespace {

constexpr DWORD kNamesBytes = 1090, kValueBytes = 109, kDeviceBytes = 122;

// The dialog's data while it exists, in a block of its own.
struct DialogData {
  char null_port[kValueBytes];
  char default_device[kDeviceBytes];
};
static_assert(sizeof(DialogData) == 231);

DialogData* data_of(HWND dialog) { return reinterpret_cast<DialogData*>(GetWindowLongPtrA(dialog, DWLP_USER)); }

void complain(HWND dialog, const char* text) { MessageBoxA(dialog, text, "", MB_ICONEXCLAMATION); }

HWND list_of(HWND dialog) { return GetDlgItem(dialog, IDC_DEVICES); }

std::string entry_at(HWND list, LRESULT index) {
  const LRESULT length = SendMessageA(list, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
  if (length == LB_ERR) return {};
  std::string text(static_cast<size_t>(length), '\0');
  SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
  return text;
}

// Empty if nothing is selected.
std::string selected_entry(HWND dialog) {
  const LRESULT index = SendMessageA(list_of(dialog), LB_GETCURSEL, 0, 0);
  return index == LB_ERR ? std::string() : entry_at(list_of(dialog), index);
}

// ---- The list ----

// The names of the printers, each zero-terminated, and another zero at the end.
std::string printer_names(HWND dialog) {
  std::string names(kNamesBytes, '\0');
  // Systems differ in whether the length of a truncated list includes a zero.
  const DWORD length = GetProfileStringA("devices", nullptr, "", names.data(), kNamesBytes);
  if (length >= kNamesBytes - 2) complain(dialog, "Too many printers installed.\tList truncated.");
  return names;
}

std::vector<std::string> entries_of(const char* printer, const char* null_port) {
  char value[kValueBytes] = "";
  GetProfileStringA("devices", printer, "", value, kValueBytes);
  return list_entries(printer, value, null_port);
}

void select_default(HWND dialog) {
  DialogData* data = data_of(dialog);
  if (data == nullptr) return;
  GetProfileStringA("windows", "device", "", data->default_device, kDeviceBytes);
  HWND list = list_of(dialog);
  const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
  LRESULT index = 0;
  while (index < count && lstrcmpiA(device_text(entry_at(list, index)).c_str(), data->default_device) != 0) ++index;
  SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(index < count ? index : -1), 0);
}

void fill(HWND dialog) {
  DialogData* data = data_of(dialog);
  if (data == nullptr) return;
  HWND list = list_of(dialog);
  const std::string names = printer_names(dialog);
  GetProfileStringA("windows", "NullPort", "", data->null_port, kValueBytes);
  SendMessageA(list, WM_SETREDRAW, FALSE, 0);
  SendMessageA(list, LB_RESETCONTENT, 0, 0);
  for (const char* name = names.c_str(); *name != '\0'; name += lstrlenA(name) + 1)
    for (const std::string& entry : entries_of(name, data->null_port))
      SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
  if (SendMessageA(list, LB_GETCOUNT, 0, 0) == 0) {
    complain(dialog, "No printers installed.");
    SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    return;
  }
  SendMessageA(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, TRUE);
  select_default(dialog);
}

// ---- The dialog ----

void open_dialog(HWND dialog) {
  void* data = GlobalAlloc(GPTR, sizeof(DialogData));
  SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(data));
  if (data == nullptr) {
    complain(dialog, "Insufficient memory.");
    EndDialog(dialog, 0);
    return;
  }
  const int beyond_every_edge = 2000;  // start of the hidden parts of the entries
  SendMessageA(list_of(dialog), LB_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&beyond_every_edge));
  SendMessageA(dialog, WM_FILL_DEVICES, 0, 0);
}

void close_dialog(HWND dialog) {
  GlobalFree(data_of(dialog));
  SetWindowLongPtrA(dialog, DWLP_USER, 0);
}

void make_default_button(HWND dialog, WORD id) {
  SendMessageA(dialog, DM_SETDEFID, id, 0);
  for (const WORD button : {WORD{IDOK}, WORD{IDC_SETUP}})
    SendDlgItemMessageA(dialog, button, BM_SETSTYLE, button == id ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
}

void accept(HWND dialog) {
  const std::string entry = selected_entry(dialog);
  if (entry.empty()) {
    MessageBeep(MB_OK);
    return;
  }
  WriteProfileStringA("windows", "device", device_text(entry).c_str());
  EndDialog(dialog, IDOK);
}

const char* complaint_about(DriverSetup result) {
  switch (result) {
    case DriverSetup::kNoDriver: return "Cannot find printer driver.";
    case DriverSetup::kInvalidDriver: return "Invalid printer driver.";
    case DriverSetup::kNoMemory: return "Insufficient memory.";
    default: return nullptr;
  }
}

// The list may have changed; the user's choice stays if it is still there.
void refill(HWND dialog, const std::string& chosen) {
  SendMessageA(dialog, WM_FILL_DEVICES, 0, 0);
  HWND list = list_of(dialog);
  const LRESULT index =
      SendMessageA(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(chosen.c_str()));
  if (index != LB_ERR) SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

void set_up(HWND dialog) {
  const std::string entry = selected_entry(dialog);
  if (entry.empty()) {
    MessageBeep(MB_OK);
    return;
  }
  make_default_button(dialog, IDC_SETUP);
  if (const char* complaint = complaint_about(set_up_driver(dialog, device_of(entry)))) complain(dialog, complaint);
  make_default_button(dialog, IDOK);
  refill(dialog, entry);
}

void press_default_button(HWND dialog) {
  const LRESULT answer = SendMessageA(dialog, DM_GETDEFID, 0, 0);
  if (HIWORD(answer) == DC_HASDEFID) SendMessageA(dialog, WM_COMMAND, LOWORD(answer), 0);
}

bool follow_command(HWND dialog, WPARAM command) {
  switch (LOWORD(command)) {
    case IDOK: accept(dialog); return true;
    case IDC_SETUP: set_up(dialog); return true;
    case IDCANCEL: EndDialog(dialog, 0); return true;
    case IDC_DEVICES:
      if (HIWORD(command) == LBN_DBLCLK) press_default_button(dialog);
      return true;
    default: return false;
  }
}

}  // namespace

int run_setup_dialog(HWND owner, DLGPROC procedure) {
  return static_cast<int>(DialogBoxParamA(module_instance(), "PRINTERSETUP", owner, procedure, 0));
}

bool follow_setup_dialog(HWND dialog, UINT message, WPARAM command) {
  switch (message) {
    case WM_INITDIALOG: open_dialog(dialog); return true;
    case WM_FILL_DEVICES: fill(dialog); return true;
    case WM_SELECT_DEFAULT: select_default(dialog); return true;
    case WM_COMMAND: return follow_command(dialog, command);
    case WM_DESTROY: close_dialog(dialog); return true;
    default: return false;
  }
}

}  // namespace vorel::print
