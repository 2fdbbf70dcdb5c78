#include "print/printer_names.h"

#include <algorithm>

#include "platform/ascii.h"

namespace vorel::print {
namespace {

constexpr const char* kDriverExtension = ".DRV";

// The text before the first of some characters; it is removed from `text`, with the character.
std::string_view take_until(std::string_view& text, const char* ends) {
  const size_t end = std::min(text.find_first_of(ends), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

PrinterDevice split_device(std::string_view text, const char* name_ends) {
  const std::string_view name = take_until(text, name_ends);
  const std::string_view driver = take_until(text, ",");
  return {std::string(name), std::string(driver), std::string(text)};
}

std::string_view hidden_part(std::string_view entry) {
  take_until(entry, "\t");
  return entry;
}

}  // namespace

PrinterDevice parse_device(std::string_view text) { return split_device(text, ","); }

std::vector<std::string> list_entries(std::string_view name, std::string_view value, std::string_view null_port) {
  std::vector<std::string> entries;
  const std::string printer(name), driver(take_until(value, ","));
  while (!value.empty()) {
    const std::string port(take_until(value, ","));
    if (port.empty() || equal_ignoring_case(port, null_port)) continue;
    std::string& entry = entries.emplace_back(printer);
    for (const char* part : {" on ", port.c_str(), "\t", printer.c_str(), "=", driver.c_str(), ",", port.c_str()})
      entry += part;
  }
  return entries;
}

std::string device_text(std::string_view entry) {
  std::string text(hidden_part(entry));
  std::ranges::replace(text, '=', ',');
  std::erase(text, '\t');
  return text;
}

PrinterDevice device_of(std::string_view entry) {
  PrinterDevice device = split_device(hidden_part(entry), "=,");
  if (device.driver.find('.') == std::string::npos) device.driver += kDriverExtension;
  return device;
}

}  // namespace vorel::print
