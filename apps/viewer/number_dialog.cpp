#include "viewer/number_dialog.h"

#include "viewer/resource.h"
#include "viewer/window.h"

namespace vorel::viewer {
namespace {

class NumberDialog {
 public:
  NumberDialog(const std::wstring& title, std::span<const Parameter> parameters, const Numbers& numbers,
               NumberPreview* preview)
      : title_(title), parameters_(parameters), numbers_(numbers), preview_(preview) {}

  std::optional<Numbers> run(HWND owner) {
    const INT_PTR result =
        DialogBoxParamW(this_program(), MAKEINTRESOURCEW(IDD_NUMBERS), owner, procedure, reinterpret_cast<LPARAM>(this));
    return result == IDOK ? std::optional(numbers_) : std::nullopt;
  }

 private:
  static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* self = reinterpret_cast<NumberDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (message == WM_INITDIALOG) return self->fill(dialog);
    if (message == WM_TIMER) return self->begin_preview(dialog), TRUE;
    if (message == kPreviewMessage) return self->show_preview(dialog), TRUE;
    if (message != WM_COMMAND) return FALSE;
    if (HIWORD(wParam) == EN_CHANGE) SetTimer(dialog, kTypingTimer, kTypingMilliseconds, nullptr);
    if (LOWORD(wParam) == IDOK && self->take(dialog)) EndDialog(dialog, IDOK);
    if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
    return TRUE;
  }

  BOOL fill(HWND dialog) {
    SetWindowTextW(dialog, title_.c_str());
    for (size_t i = 0; i < kMostParameters; ++i) {
      const bool is_used = i < parameters_.size();
      for (const int control : {label(i), edit(i), range(i)})
        ShowWindow(GetDlgItem(dialog, control), is_used ? SW_SHOW : SW_HIDE);
      if (is_used) fill_row(dialog, i);
    }
    SendDlgItemMessageW(dialog, edit(0), EM_SETSEL, 0, -1);
    SetFocus(GetDlgItem(dialog, edit(0)));
    return FALSE;  // the focus is set
  }

  void fill_row(HWND dialog, size_t i) {
    const Parameter& parameter = parameters_[i];
    SetDlgItemTextW(dialog, label(i), parameter.label);
    SetDlgItemInt(dialog, edit(i), static_cast<UINT>(numbers_[i]), TRUE);
    const std::wstring bounds = std::to_wstring(parameter.least) + L" to " + std::to_wstring(parameter.most);
    SetDlgItemTextW(dialog, range(i), bounds.c_str());
  }

  // Once nothing was typed for a while.
  void begin_preview(HWND dialog) {
    KillTimer(dialog, kTypingTimer);
    if (preview_ == nullptr) return;
    for (size_t i = 0; i < parameters_.size(); ++i)
      if (!take_number(dialog, i)) return;
    SetDlgItemTextW(dialog, IDC_NUMBER_REPORT, L"...");
    preview_->begin(numbers_, dialog, kPreviewMessage);
  }

  void show_preview(HWND dialog) { SetDlgItemTextW(dialog, IDC_NUMBER_REPORT, preview_->show().c_str()); }

  bool take_number(HWND dialog, size_t i) {
    BOOL is_number = FALSE;
    numbers_[i] = static_cast<int>(GetDlgItemInt(dialog, edit(i), &is_number, TRUE));
    return is_number && numbers_[i] >= parameters_[i].least && numbers_[i] <= parameters_[i].most;
  }

  // What is no number within its bounds is pointed at.
  bool take(HWND dialog) {
    for (size_t i = 0; i < parameters_.size(); ++i) {
      if (take_number(dialog, i)) continue;
      MessageBeep(MB_ICONWARNING);
      SendDlgItemMessageW(dialog, edit(i), EM_SETSEL, 0, -1);
      SetFocus(GetDlgItem(dialog, edit(i)));
      return false;
    }
    return true;
  }

  static int label(size_t i) { return IDC_FIRST_LABEL + static_cast<int>(i); }
  static int edit(size_t i) { return IDC_FIRST_EDIT + static_cast<int>(i); }
  static int range(size_t i) { return IDC_FIRST_RANGE + static_cast<int>(i); }

  const std::wstring& title_;
  std::span<const Parameter> parameters_;
  Numbers numbers_;
  NumberPreview* preview_;

  static constexpr UINT kPreviewMessage = WM_APP + 1, kTypingMilliseconds = 200;
  static constexpr UINT_PTR kTypingTimer = 1;
};

}  // namespace

std::optional<Numbers> ask_for_numbers(HWND owner, const std::wstring& title, std::span<const Parameter> parameters,
                                       const Numbers& numbers, NumberPreview* preview) {
  return NumberDialog(title, parameters, numbers, preview).run(owner);
}

}  // namespace vorel::viewer
