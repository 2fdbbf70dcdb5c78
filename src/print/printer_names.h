// Names of printers: in the profile, and in the list of the printer set-up dialog.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorel::print {

struct PrinterDevice {
  std::string name, driver, port;
};

// "NAME,DRIVER,PORT", the form of the default printer. Missing parts are empty; further commas belong to the port.
PrinterDevice parse_device(std::string_view text);

// The list entries for one printer, one for each port: "NAME on PORT<tab>NAME=DRIVER,PORT". The part behind the tab is
// hidden. `value` is the printer's value in the profile: "DRIVER,PORT,PORT...". Ports named like the null port have no
// entry.
std::vector<std::string> list_entries(std::string_view name, std::string_view value, std::string_view null_port);

// The hidden part of an entry, in the form of the default printer.
std::string device_text(std::string_view entry);

// The same, parsed. A driver's name without an extension gets the usual one.
PrinterDevice device_of(std::string_view entry);

}  // namespace vorel::print
