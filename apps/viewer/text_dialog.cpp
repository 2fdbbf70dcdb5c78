#include "viewer/text_dialog.h"

#include "viewer/resource.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

struct TextToShow {
  const std::wstring &title, &text;
};

void fill(HWND dialog, const TextToShow& shown) {
  constexpr UINT kSecondColumn = 100;  // quarters of a character's width
  SetWindowTextW(dialog, shown.title.c_str());
  SendDlgItemMessageW(dialog, IDC_TEXT, EM_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&kSecondColumn));
  SetDlgItemTextW(dialog, IDC_TEXT, shown.text.c_str());
  SetFocus(GetDlgItem(dialog, IDC_TEXT));
  SendDlgItemMessageW(dialog, IDC_TEXT, EM_SETSEL, 0, 0);
}

INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) return fill(dialog, *reinterpret_cast<const TextToShow*>(lParam)), FALSE;
  if (message != WM_COMMAND) return FALSE;
  if (LOWORD(wParam) == IDCANCEL || LOWORD(wParam) == IDOK) EndDialog(dialog, IDCANCEL);
  return TRUE;
}

}  // namespace

void show_text(HWND owner, const std::wstring& title, const std::wstring& text) {
  const TextToShow shown{title, text};
  DialogBoxParamW(this_program(), MAKEINTRESOURCEW(IDD_TEXT), owner, procedure, reinterpret_cast<LPARAM>(&shown));
}

}  // namespace vorel::viewer
