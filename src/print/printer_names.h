// Printers as the profile names them, and as the list of the printer set-up dialog does.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorel {

struct PrinterDevice {
  std::string name, driver, port;
};

// "NAME,DRIVER,PORT", as the default printer is written. What is missing is empty; further commas belong to the port.
PrinterDevice parse_device(std::string_view text);

// The entries of the list for one printer, one for each port: "NAME on PORT<tab>NAME=DRIVER,PORT". The part behind the tab is not
// seen. `value` is what the profile says of the printer: "DRIVER,PORT,PORT...". Ports named like the null port have no entry.
std::vector<std::string> list_entries(std::string_view name, std::string_view value, std::string_view null_port);

// The hidden part of an entry, as the default printer is written.
std::string device_text(std::string_view entry);

// The same taken apart. A driver's name without an extension gets the usual one.
PrinterDevice device_of(std::string_view entry);

}  // namespace vorel
