#include "viewer/printing.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/pixel.h"
#include "viewer/failure.h"

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

// Several pages as one picture of the sheet, with as many dots as the printer has or, of finer ones, a part of them.
programs::Picture sheet_of(const std::vector<SharedPicture>& pictures, const PrintLayout& layout, Sheet sheet) {
  constexpr float kEnough = 300;
  const float part = std::min(1.0f, kEnough / std::max(sheet.resolution.x, sheet.resolution.y));
  const auto reduced = [part](int dots) { return std::max(1, static_cast<int>(static_cast<float>(dots) * part)); };
  sheet.resolution = {sheet.resolution.x * part, sheet.resolution.y * part};
  sheet.printable = {0, 0, reduced(sheet.printable.width), reduced(sheet.printable.height)};
  std::vector<DibHeader> headers;
  for (const SharedPicture& picture : pictures) headers.push_back(picture->picture.header());
  const auto boxes = printed_boxes(layout, headers, sheet);
  programs::Picture result =
      programs::Picture::blank({.width = sheet.printable.width, .height = sheet.printable.height, .depth = 24});
  std::ranges::fill(result.image_bytes(), uint8_t{0xFF});
  for (size_t i = 0; i < pictures.size(); ++i) {
    const Rect& box = boxes[i];
    std::vector<uint32_t> pixels(static_cast<size_t>(box.width) * static_cast<size_t>(box.height));
    pictures[i]->reductions().draw({box.width, box.height}, {0, 0, box.width, box.height}, pixels);
    for (int y = 0; y < box.height; ++y) {
      uint8_t* const row = result.pixels().row_from_top(box.y + y).data();
      for (int x = 0; x < box.width; ++x) Pixel<24>::store(row, box.x + x, pixels[static_cast<size_t>(y * box.width + x)]);
    }
  }
  return result;
}

// One at a time in memory.
class Sheets {
 public:
  Sheets(const PrintSettings& settings, DocumentPages& pages, std::span<const int> numbers)
      : settings_(settings),
        pages_(pages),
        numbers_(numbers),
        places_(sheets_of(numbers.size(), settings.layout.per_sheet)) {}

  size_t count() const { return places_.size(); }

  void print(Job& job, size_t number, int sheet) {
    std::vector<SharedPicture> pictures;
    for (const size_t place : places_[number]) pictures.push_back(pages_.page(numbers_[place]));
    if (settings_.layout.per_sheet == 1) return job.print(pictures.front()->picture, sheet);
    if (!composed_ || number != composed_number_) composed_ = sheet_of(pictures, settings_.layout, paper_);
    composed_number_ = number;
    job.print(composed_, sheet);
  }

 private:
  const PrintSettings& settings_;
  DocumentPages& pages_;
  std::span<const int> numbers_;
  std::vector<std::vector<size_t>> places_;
  Sheet paper_ = settings_.printer.sheet();
  programs::Picture composed_;
  size_t composed_number_ = 0;
};

// A composed sheet covers all that can be printed.
PrintSettings of_job(PrintSettings settings) {
  if (settings.layout.per_sheet > 1) settings.layout.sizing = PageSizing::kStretch;
  return settings;
}

// The owner takes input again before the job's window goes, so that the system goes on with it.
void print_sheets(Job& job, HWND owner, Sheets& sheets, const std::vector<size_t>& order) {
  const DisabledWindow disabled(owner);
  int sheet = 0;
  for (const size_t number : order) sheets.print(job, number, sheet++);
}

}  // namespace

SharedPicture DocumentPages::page(int number) {
  if (number == document_.page()) return document_.shared();
  const Document::Page& page = document_.page_at(number);
  return page.picture ? page.picture : loader_.load(page.file).picture;
}

int print_pages(HWND owner, const PrintSettings& settings, DocumentPages& pages, std::span<const int> numbers) {
  Sheets sheets(settings, pages, numbers);
  const auto order = printing_order(sheets.count(), settings.copies, settings.is_collated);
  Job job(owner, of_job(settings), pages.name(), static_cast<int>(order.size()));
  print_sheets(job, owner, sheets, order);
  job.end();
  return static_cast<int>(order.size());
}

}  // namespace vorel::viewer
