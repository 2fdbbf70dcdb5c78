#include "viewer/printer.h"

#include <algorithm>
#include <winspool.h>

#include "common/printers.h"
#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

struct ClosePrinterHandle {
  void operator()(HANDLE printer) const { ClosePrinter(printer); }
};
using PrinterHandle = std::unique_ptr<void, ClosePrinterHandle>;

PrinterHandle open_printer(std::wstring name) {
  HANDLE printer = nullptr;
  return PrinterHandle(OpenPrinterW(name.data(), &printer, nullptr) ? printer : nullptr);
}

}  // namespace

Printer Printer::usual() {
  const std::vector<std::wstring> names = programs::printer_names();
  if (names.empty()) throw Failure(L"There is no printer: add one to the system");
  return Printer(names.front());
}

void Printer::set_up(HWND owner) {
  const PrinterHandle printer = open_printer(name_);
  const LONG bytes = DocumentPropertiesW(owner, printer.get(), name_.data(), nullptr, nullptr, 0);
  if (!printer || bytes <= 0) throw Failure(L"\"" + name_ + L"\" cannot be set up: it does not answer");
  std::vector<uint8_t> chosen(std::max(static_cast<size_t>(bytes), sizeof(DEVMODEW)));
  auto* out = reinterpret_cast<DEVMODEW*>(chosen.data());
  const DWORD flags = DM_IN_PROMPT | DM_OUT_BUFFER | (settings_.empty() ? 0 : DM_IN_BUFFER);
  if (DocumentPropertiesW(owner, printer.get(), name_.data(), out, const_cast<DEVMODEW*>(settings()), flags) == IDOK)
    settings_ = std::move(chosen);
}

const DEVMODEW* Printer::settings() const {
  return settings_.empty() ? nullptr : reinterpret_cast<const DEVMODEW*>(settings_.data());
}

OwnedDc Printer::dc(decltype(&CreateDCW) create) const {
  OwnedDc dc(create(L"WINSPOOL", name_.c_str(), nullptr, settings()));
  if (!dc) throw Failure(L"The printer \"" + name_ + L"\" cannot be reached");
  return dc;
}

OwnedDc Printer::job_dc() const { return dc(CreateDCW); }

Sheet Printer::sheet() const {
  const OwnedDc information = dc(CreateICW);
  const auto capability = [&](int index) { return GetDeviceCaps(information.get(), index); };
  const Rect printable = {capability(PHYSICALOFFSETX), capability(PHYSICALOFFSETY), capability(HORZRES),
                          capability(VERTRES)};
  const Size paper = {std::max(capability(PHYSICALWIDTH), printable.width),
                      std::max(capability(PHYSICALHEIGHT), printable.height)};  // devices without paper state none
  const print::DotDensity resolution = {static_cast<float>(capability(LOGPIXELSX)),
                                        static_cast<float>(capability(LOGPIXELSY))};
  if (printable.width <= 0 || printable.height <= 0 || resolution.x <= 0 || resolution.y <= 0)
    throw Failure(L"The printer \"" + name_ + L"\" does not say how large its paper is");
  return {resolution, paper, printable};
}

}  // namespace vorel::viewer
