#include "viewer/layout_controls.h"

#include <string>

#include "viewer/resource.h"

namespace vorel::viewer {
namespace {

constexpr struct {
  int id;
  PageSizing sizing;
} kSizings[] = {{IDC_TRUE_SIZE, PageSizing::kTrueSize}, {IDC_FIT, PageSizing::kFit}, {IDC_STRETCH, PageSizing::kStretch}};

constexpr struct {
  int id;
  bool PrintLayout::*choice;
} kChoices[] = {{IDC_ACROSS, &PrintLayout::is_centred_across},
                {IDC_DOWN, &PrintLayout::is_centred_down},
                {IDC_BY_RESOLUTION, &PrintLayout::goes_by_resolution}};

}  // namespace

void show_layout(HWND dialog, const PrintLayout& layout) {
  for (const auto& [id, sizing] : kSizings)
    CheckDlgButton(dialog, id, layout.sizing == sizing ? BST_CHECKED : BST_UNCHECKED);
  for (const auto& [id, choice] : kChoices) CheckDlgButton(dialog, id, layout.*choice ? BST_CHECKED : BST_UNCHECKED);
  SendDlgItemMessageW(dialog, IDC_PER_SHEET, CB_RESETCONTENT, 0, 0);
  for (const int count : kPerSheet) {
    const std::wstring text = std::to_wstring(count);
    const LRESULT item = SendDlgItemMessageW(dialog, IDC_PER_SHEET, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    if (count == layout.per_sheet) SendDlgItemMessageW(dialog, IDC_PER_SHEET, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
  }
}

PrintLayout chosen_layout(HWND dialog) {
  PrintLayout layout;
  for (const auto& [id, sizing] : kSizings)
    if (IsDlgButtonChecked(dialog, id) == BST_CHECKED) layout.sizing = sizing;
  for (const auto& [id, choice] : kChoices) layout.*choice = IsDlgButtonChecked(dialog, id) == BST_CHECKED;
  const LRESULT item = SendDlgItemMessageW(dialog, IDC_PER_SHEET, CB_GETCURSEL, 0, 0);
  if (item >= 0) layout.per_sheet = kPerSheet[item];
  return layout;
}

}  // namespace vorel::viewer
