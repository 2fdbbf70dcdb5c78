#include "viewer/printer.h"

#include <algorithm>
#include <winspool.h>

#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

// "NAME,DRIVER,PORT" in the profile, which is where the library's set-up dialog writes it.
std::wstring default_printer_name() {
  wchar_t device[1024];
  const DWORD length = GetProfileStringW(L"windows", L"device", L"", device, static_cast<DWORD>(std::size(device)));
  const std::wstring text(device, length);
  return text.substr(0, text.find(L','));
}

struct ClosePrinterHandle {
  void operator()(HANDLE printer) const { ClosePrinter(printer); }
};
using PrinterHandle = std::unique_ptr<void, ClosePrinterHandle>;

PrinterHandle open_printer(std::wstring name) {
  HANDLE printer = nullptr;
  return PrinterHandle(OpenPrinterW(name.data(), &printer, nullptr) ? printer : nullptr);
}

}  // namespace

std::vector<std::wstring> printer_names() {
  constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, kNamesLevel = 4;
  std::vector<BYTE> bytes;
  DWORD needed = 0, count = 0;
  EnumPrintersW(kFlags, nullptr, kNamesLevel, nullptr, 0, &needed, &count);
  bytes.resize(needed);
  if (!EnumPrintersW(kFlags, nullptr, kNamesLevel, bytes.data(), needed, &needed, &count)) return {};
  const auto* first = reinterpret_cast<const PRINTER_INFO_4W*>(bytes.data());
  std::vector<std::wstring> names;
  std::transform(first, first + count, std::back_inserter(names), [](const auto& printer) { return printer.pPrinterName; });
  return names;
}

Printer Printer::usual() {
  const std::vector<std::wstring> names = printer_names();
  if (names.empty()) throw Failure(L"There is no printer: add one to the system");
  const auto found = std::ranges::find(names, default_printer_name());
  return Printer(found != names.end() ? *found : names.front());
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
  const DotDensity resolution = {static_cast<float>(capability(LOGPIXELSX)), static_cast<float>(capability(LOGPIXELSY))};
  if (printable.width <= 0 || printable.height <= 0 || resolution.x <= 0 || resolution.y <= 0)
    throw Failure(L"The printer \"" + name_ + L"\" does not say how large its paper is");
  return {resolution, paper, printable};
}

}  // namespace vorel::viewer
