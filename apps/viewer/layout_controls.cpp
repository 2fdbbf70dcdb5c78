#include "viewer/layout_controls.h"

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
}

PrintLayout chosen_layout(HWND dialog) {
  PrintLayout layout;
  for (const auto& [id, sizing] : kSizings)
    if (IsDlgButtonChecked(dialog, id) == BST_CHECKED) layout.sizing = sizing;
  for (const auto& [id, choice] : kChoices) layout.*choice = IsDlgButtonChecked(dialog, id) == BST_CHECKED;
  return layout;
}

}  // namespace vorel::viewer
