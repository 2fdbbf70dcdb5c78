#include "viewer/printing.h"

#include <utility>

#include "viewer/failure.h"
#include "viewer/picture_file.h"

namespace vorel::viewer {
namespace {

std::string in_system_code_page(const std::wstring& text) {
  char plain[MAX_PATH * 2] = {};
  WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, plain, sizeof plain - 1, nullptr, nullptr);
  return plain;
}

std::wstring preparation_reason(int code) {
  constexpr int kNoBitmaps = 1, kNoCancelDialog = -5;
  switch (code) {
    case kNoBitmaps: return L"it prints no pictures";
    case kNoCancelDialog: return L"there is no room for another window";
    default: return L"it does not take the document; look at its queue";
  }
}

// A window that takes no input for a scope, as behind a dialog.
class DisabledWindow {
 public:
  explicit DisabledWindow(HWND window) : window_(window) { EnableWindow(window, FALSE); }
  DisabledWindow(const DisabledWindow&) = delete;
  DisabledWindow& operator=(const DisabledWindow&) = delete;
  ~DisabledWindow() { EnableWindow(window_, TRUE); }

 private:
  HWND window_;
};

class Job {
 public:
  Job(HWND owner, const PrintSettings& settings, const std::wstring& document, int sheets)
      : printer_(settings.printer.name()), dc_(settings.printer.job_dc().release()) {
    ImgPrintOptions options = print_options(settings.layout);
    const int code = PrepareToPrint(owner, dc_, &options, in_system_code_page(document).c_str(), sheets);
    if (code == 0) return;
    EndPrint(dc_);
    fail(preparation_reason(code));
  }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;
  ~Job() {
    if (dc_ != nullptr) EndPrint(dc_);
  }

  // The library draws nothing once the job is cancelled, but has the printer drop what it has got.
  void print(const programs::Picture& picture, int sheet) {
    SetImgError(IMG_OK);
    const int code = print_sheet(picture, sheet);
    if (code != 0) fail(reason(code, L"it does not take the page; look at its queue"));
    if (PrintAbortProc(dc_, 0)) return;
    print_sheet(picture, sheet);
    throw Failure(L"Printing was cancelled, or the printer refused a page");
  }

  void end() {
    if (EndPrint(std::exchange(dc_, nullptr)) != 0) fail(L"the document was not handed over whole; look at its queue");
  }

 private:
  static int print_sheet(const programs::Picture& picture, int sheet) {
    return PrintDIBPage(picture.get(), nullptr, 0, sheet, 0, 0);
  }
  [[noreturn]] void fail(const std::wstring& why) const {
    throw Failure(L"Nothing more is printed on \"" + printer_ + L"\": " + why);
  }

  std::wstring printer_;
  HDC dc_;  // EndPrint deletes it
};

// The owner takes input again before the job's window goes, so that the system goes on with it.
void print_sheets(Job& job, HWND owner, DocumentPages& pages, std::span<const int> numbers, int copies) {
  const DisabledWindow disabled(owner);
  int sheet = 0;
  for (const int number : numbers) {
    const programs::Picture& picture = pages.page(number);
    for (int copy = 0; copy < copies; ++copy) job.print(picture, sheet++);
  }
}

}  // namespace

const programs::Picture& DocumentPages::page(int number) {
  if (number == document_.page()) return document_.picture();
  if (number != loaded_number_) {
    loaded_ = load_page(document_.path(), number).picture;
    loaded_number_ = number;
  }
  return loaded_;
}

int print_pages(HWND owner, const PrintSettings& settings, DocumentPages& pages, std::span<const int> numbers) {
  const int sheets = static_cast<int>(numbers.size()) * settings.copies;
  Job job(owner, settings, pages.name(), sheets);
  print_sheets(job, owner, pages, numbers, settings.copies);
  job.end();
  return sheets;
}

}  // namespace vorel::viewer
