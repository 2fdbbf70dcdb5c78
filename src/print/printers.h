// The printers of this system, and device contexts for them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/windows/gdi.h"
#include "print/printer_names.h"

namespace vorel::print {

// The printers that the spooler knows, local ones and connections: their names and details.
class InstalledPrinters {
 public:
  static InstalledPrinters enumerate();

  std::vector<std::string> names() const;

  // The name that a context is made for; none if the list has no such printer.
  std::optional<std::string> device_name(size_t index) const;

 private:
  struct List {
    std::vector<BYTE> bytes;
    DWORD count = 0;
  };
  static List enumerate(DWORD level);

  List names_, records_;
};

// The profile's value for the default printer.
std::string default_device_text();

// Contexts of a printer by its name alone, and of the default printer with the thread's last settings.
OwnedDc printer_dc(const std::string& name);
OwnedDc default_printer_dc();

// Keeps a thread's settings of a printer for its next job on it, in place of earlier ones. False when memory is short.
bool keep_settings(const std::string& printer, const DEVMODEA& mode);
void forget_settings(const std::string& printer);

}  // namespace vorel::print
