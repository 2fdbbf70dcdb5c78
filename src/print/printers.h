// The printers of this system, and contexts of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/windows/gdi.h"
#include "print/printer_names.h"

namespace vorel {

// The printers that the spooler knows, local ones and connections: their names, and all it knows of them.
class InstalledPrinters {
 public:
  static InstalledPrinters enumerate();

  std::vector<std::string> names() const;

  // What a context of one is made for; none if the list has no such printer.
  std::optional<std::string> device_name(size_t index) const;

 private:
  struct List {
    std::vector<BYTE> bytes;
    DWORD count = 0;
  };
  static List enumerate(DWORD level);

  List names_, records_;
};

// What the profile says of the default printer.
std::string default_device_text();

// Contexts of a printer by its name alone, and of the default printer, as the thread has last set it up.
OwnedDc printer_dc(const std::string& name);
OwnedDc default_printer_dc();

// How the thread has set a printer up is kept for its next job on that printer, in place of what was kept before. False when
// memory is short.
bool keep_settings(const std::string& printer, const DEVMODEA& mode);
void forget_settings(const std::string& printer);

}  // namespace vorel
