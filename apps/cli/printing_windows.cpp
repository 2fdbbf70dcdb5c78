#include <utility>

#include "cli/failure.h"
#include "cli/printing.h"

namespace vorel::cli {
namespace {

HDC printer_dc(const std::string& printer) {
  if (printer.empty()) return nullptr;
  HDC dc = CreateDCA("WINSPOOL", printer.c_str(), nullptr, nullptr);
  if (dc != nullptr) return dc;
  throw Failure(ExitCode::kWrongUse, printer,
                "there is no such printer; give the name that the system lists, in quotation marks");
}

const char* reason_for(int code) {
  switch (code) {
    case IMG_E_PRINTER_DC: return "there is none, or it cannot be reached; choose one with --printer";
    case 1: return "it prints no pictures; choose another one with --printer";
    default: return "it does not take the document; look at its queue and whether its port can be written";
  }
}

}  // namespace

void require_printing() {}

PrintJob::PrintJob(const std::string& printer, const std::string& document, ImgPrintOptions options, int pages)
    : printer_(printer.empty() ? "default printer" : printer), dc_(printer_dc(printer)) {
  options.showDialog = 0;
  options.silent = 1;
  const int code = PrepareToPrint(nullptr, static_cast<HDC>(dc_), &options, document.c_str(), pages);
  if (code == 0) return;
  EndPrint(static_cast<HDC>(dc_));
  throw Failure(ExitCode::kOutput, printer_, reason_for(code));
}

PrintJob::~PrintJob() {
  if (is_open_) EndPrint(static_cast<HDC>(dc_));
}

// A page that the printer refuses cancels the job, which the abort procedure tells.
void PrintJob::print(const Picture& picture, int index) {
  const int code = PrintDIBPage(picture.dib.get(), nullptr, 0, index, 0, 0);
  if (code != 0 || !PrintAbortProc(static_cast<HDC>(dc_), 0)) {
    throw Failure(ExitCode::kOutput, printer_,
                  "page " + std::to_string(index + 1) + " was not printed; look at the printer's queue");
  }
}

void PrintJob::end() {
  is_open_ = false;
  if (EndPrint(static_cast<HDC>(dc_)) != 0) {
    throw Failure(ExitCode::kOutput, printer_, "the document was not handed over whole; look at the printer's queue");
  }
}

}  // namespace vorel::cli
