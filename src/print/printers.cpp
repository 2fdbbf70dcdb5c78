#include "print/printers.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <winspool.h>

#include "frame/thread_context.h"
#include "platform/ascii.h"
#include "platform/memory.h"
#include "print/job_state.h"

namespace vorel::print {
namespace {

// A thread's settings of a printer, for its next job on that printer.
struct PrinterSettings {
  char printer[kJobNameBytes];
  ZeroedBuffer device_mode;  // empty if nothing is kept

  bool are_of(const std::string& name) const { return !device_mode.bytes().empty() && equal_ignoring_case(name, printer); }
};

const PerThread<PrinterSettings> kept_settings;

OwnedDc printer_dc(const char* driver, const std::string& name, const char* port) {
  if (name.empty()) return OwnedDc(nullptr);
  const uint8_t* mode = kept_settings->are_of(name) ? kept_settings->device_mode.bytes().data() : nullptr;
  return OwnedDc(CreateDCA(driver, name.c_str(), port, reinterpret_cast<const DEVMODEA*>(mode)));
}

}  // namespace

// Printers may be added between counting and listing: a list that no longer fits is requested once more.
InstalledPrinters::List InstalledPrinters::enumerate(DWORD level) {
  constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
  List list;
  for (int attempt = 0; attempt < 3; ++attempt) {
    DWORD needed = 0;
    const auto size = static_cast<DWORD>(list.bytes.size());
    if (EnumPrintersA(kFlags, nullptr, level, list.bytes.data(), size, &needed, &list.count)) return list;
    list.bytes.resize(needed);
  }
  return {};
}

InstalledPrinters InstalledPrinters::enumerate() {
  InstalledPrinters printers;
  printers.names_ = enumerate(1);
  printers.records_ = enumerate(2);
  return printers;
}

std::vector<std::string> InstalledPrinters::names() const {
  const auto* first = reinterpret_cast<const PRINTER_INFO_1A*>(names_.bytes.data());
  std::vector<std::string> names;
  std::transform(first, first + names_.count, std::back_inserter(names),
                 [](const PRINTER_INFO_1A& printer) { return printer.pName; });
  return names;
}

std::optional<std::string> InstalledPrinters::device_name(size_t index) const {
  if (index >= records_.count) return std::nullopt;
  const auto& record = reinterpret_cast<const PRINTER_INFO_2A*>(records_.bytes.data())[index];
  const bool has_server = record.pServerName != nullptr && *record.pServerName != '\0';
  if (!has_server) return record.pPrinterName;
  return std::string(record.pServerName) + "\\" + (record.pShareName == nullptr ? "" : record.pShareName);
}

std::string default_device_text() {
  constexpr size_t kMostBytes = 1024;
  std::string text(kMostBytes, '\0');
  text.resize(GetProfileStringA("windows", "device", "", text.data(), kMostBytes));
  return text;
}

OwnedDc printer_dc(const std::string& name) { return printer_dc("WINSPOOL", name, nullptr); }

OwnedDc default_printer_dc() {
  const PrinterDevice device = parse_device(default_device_text());
  OwnedDc dc = printer_dc(device.driver.c_str(), device.name, device.port.c_str());
  if (dc) forget_settings(device.name);
  return dc;
}

bool keep_settings(const std::string& printer, const DEVMODEA& mode) {
  const size_t bytes = size_t{mode.dmSize} + mode.dmDriverExtra;
  auto copy = ZeroedBuffer::allocate(std::max(bytes, sizeof mode));
  if (!copy) return false;
  std::memcpy(copy->bytes().data(), &mode, bytes);
  kept_settings->device_mode = std::move(*copy);
  lstrcpynA(kept_settings->printer, printer.c_str(), kJobNameBytes);
  return true;
}

void forget_settings(const std::string& printer) {
  if (kept_settings->are_of(printer)) kept_settings->device_mode = {};
}

}  // namespace vorel::print
