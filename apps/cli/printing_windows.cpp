#include <utility>

#include "cli/failure.h"
#include "cli/file_names.h"
#include "cli/printing.h"
#include "common/printers.h"

namespace vorel::cli {
namespace {

std::wstring wide(const std::string& text) { return path_of(text).wstring(); }

std::string narrow(const std::wstring& text) {
  const std::u8string utf8 = std::filesystem::path(text).u8string();
  return {utf8.begin(), utf8.end()};
}

// Names of documents are in the system's code page. What that lacks is replaced by something similar.
std::string in_system_code_page(const std::string& text) {
  const std::wstring characters = wide(text);
  std::string plain(characters.size() * 2 + 1, '\0');
  const int length = WideCharToMultiByte(CP_ACP, 0, characters.data(), static_cast<int>(characters.size()), plain.data(),
                                         static_cast<int>(plain.size()), nullptr, nullptr);
  plain.resize(static_cast<size_t>(length));
  return plain;
}

std::string name_or_default(const std::string& printer) {
  if (!printer.empty()) return printer;
  const std::string usual = narrow(programs::default_printer_name());
  if (!usual.empty()) return usual;
  throw Failure(ExitCode::kWrongUse, "default printer",
                "there is none; choose one of \"vorel print --list\" with --printer");
}

HDC printer_dc(const std::string& printer) {
  HDC dc = CreateDCW(L"WINSPOOL", wide(printer).c_str(), nullptr, nullptr);
  if (dc != nullptr) return dc;
  throw Failure(ExitCode::kWrongUse, printer, "there is no such printer; give a name that \"vorel print --list\" shows");
}

Paper paper_in(HDC dc) {
  const auto capability = [dc](int index) { return GetDeviceCaps(dc, index); };
  return {{static_cast<float>(capability(LOGPIXELSX)), static_cast<float>(capability(LOGPIXELSY))},
          {capability(HORZRES), capability(VERTRES)}};
}

const char* reason_for(int code) {
  constexpr int kNoBitmaps = 1;
  return code == kNoBitmaps ? "it prints no pictures; choose another one with --printer"
                            : "it does not take the document; look at its queue and whether its port can be written";
}

}  // namespace

void require_printing() {}

std::vector<std::string> names_of_printers() {
  std::vector<std::string> names;
  for (const std::wstring& name : programs::printer_names()) names.push_back(narrow(name));
  return names;
}

PrintJob::PrintJob(const std::string& printer, const std::string& document, const PaperLayout& layout, int pages)
    : printer_(name_or_default(printer)), dc_(printer_dc(printer_)) {
  const auto dc = static_cast<HDC>(dc_);
  paper_ = paper_in(dc);
  ImgPrintOptions options = print_options(layout);
  int code = -1;
  if (paper_.dots.width > 0 && paper_.dots.height > 0 && paper_.resolution.x > 0 && paper_.resolution.y > 0)
    code = PrepareToPrint(nullptr, dc, &options, in_system_code_page(document).c_str(), pages);
  if (code == 0) return;
  EndPrint(dc);
  throw Failure(ExitCode::kOutput, printer_, reason_for(code));
}

PrintJob::~PrintJob() {
  if (dc_ == nullptr) return;
  AbortDoc(static_cast<HDC>(dc_));
  EndPrint(static_cast<HDC>(dc_));
}

// A page that the printer refuses cancels the job, which the abort procedure tells.
void PrintJob::print(const programs::Picture& picture, int index) {
  const int code = PrintDIBPage(picture.get(), nullptr, 0, index, 0, 0);
  if (code == 0 && PrintAbortProc(static_cast<HDC>(dc_), 0)) return;
  throw Failure(
      ExitCode::kOutput, printer_,
      "page " + std::to_string(index + 1) + " was not printed, and the document is dropped; look at the printer's queue");
}

void PrintJob::end() {
  if (EndPrint(static_cast<HDC>(std::exchange(dc_, nullptr))) != 0) {
    throw Failure(ExitCode::kOutput, printer_, "the document was not handed over whole; look at the printer's queue");
  }
}

}  // namespace vorel::cli
