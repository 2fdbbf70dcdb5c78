#include "print/driver_setup.h"

#include <algorithm>
#include <optional>
#include <winspool.h>

#include "platform/memory.h"
#include "platform/module.h"
#include "print/printers.h"

namespace vorel::print {
namespace {

using ExtDeviceModeEntry = INT(WINAPI*)(HWND, HANDLE driver, DEVMODEA* chosen, LPSTR name, LPSTR port, DEVMODEA* before,
                                        LPSTR profile, DWORD flags);
using DeviceModeEntry = void(WINAPI*)(HWND, HANDLE driver, LPSTR name, LPSTR port);

// Runs a set-up dialog that reports its outcome: `ask` takes a buffer for a device mode and the request's flags; without
// flags it returns the size of the buffer.
template <class Ask>
DriverSetup ask_and_keep(const std::string& printer, Ask ask) {
  const LONG needed = ask(nullptr, 0);
  if (needed <= 0) return DriverSetup::kInvalidDriver;
  const auto size = std::max(static_cast<size_t>(needed), sizeof(DEVMODEA));
  const auto room = ZeroedBuffer::allocate(size);
  if (!room) return DriverSetup::kNoMemory;
  auto* mode = reinterpret_cast<DEVMODEA*>(room->bytes().data());
  const LONG answer = ask(mode, DM_IN_PROMPT | DM_OUT_BUFFER);
  if (answer != IDOK) return answer < 0 ? DriverSetup::kInvalidDriver : DriverSetup::kDone;
  if (mode->dmSize == 0 || size_t{mode->dmSize} + mode->dmDriverExtra > size) return DriverSetup::kInvalidDriver;
  return keep_settings(printer, *mode) ? DriverSetup::kDone : DriverSetup::kNoMemory;
}

// A printer opened for a scope.
class OpenedPrinter {
 public:
  explicit OpenedPrinter(std::string& name) {
    if (!OpenPrinterA(name.data(), &handle_, nullptr)) handle_ = nullptr;
  }
  OpenedPrinter(const OpenedPrinter&) = delete;
  OpenedPrinter& operator=(const OpenedPrinter&) = delete;
  ~OpenedPrinter() {
    if (handle_ != nullptr) ClosePrinter(handle_);
  }

  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_ = nullptr;
};

// None if the spooler does not know the printer.
std::optional<DriverSetup> set_up_by_spooler(HWND owner, PrinterDevice& device) {
  const OpenedPrinter printer(device.name);
  if (printer.get() == nullptr) return std::nullopt;
  return ask_and_keep(device.name, [&](DEVMODEA* mode, DWORD wanted) {
    return DocumentPropertiesA(owner, printer.get(), device.name.data(), mode, nullptr, wanted);
  });
}

// None if the driver has no entry point for it.
std::optional<DriverSetup> set_up_by_driver(HWND owner, PrinterDevice& device, const LoadedModule& driver) {
  const auto handle = reinterpret_cast<HANDLE>(driver.result());
  if (const auto set_up = reinterpret_cast<ExtDeviceModeEntry>(driver.entry("ExtDeviceMode"))) {
    return ask_and_keep(device.name, [&](DEVMODEA* mode, DWORD wanted) -> LONG {
      return set_up(owner, handle, mode, device.name.data(), device.port.data(), nullptr, nullptr, wanted);
    });
  }
  if (const auto set_up = reinterpret_cast<DeviceModeEntry>(driver.entry("DeviceMode"))) {
    set_up(owner, handle, device.name.data(), device.port.data());
    return DriverSetup::kDone;
  }
  return std::nullopt;
}

}  // namespace

DriverSetup set_up_driver(HWND owner, PrinterDevice device) {
  const LoadedModule driver(device.driver.c_str());
  if (driver.is_loaded()) {
    if (const auto result = set_up_by_driver(owner, device, driver)) return *result;
  }
  if (const auto result = set_up_by_spooler(owner, device)) return *result;
  return driver.is_loaded() ? DriverSetup::kInvalidDriver : DriverSetup::kNoDriver;
}

}  // namespace vorel::print
