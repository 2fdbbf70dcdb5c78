#include <algorithm>
#include <iterator>
#include <windows.h>
#include <winspool.h>

#include "common/printers.h"

namespace vorel::programs {

std::vector<std::wstring> printer_names() {
  constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, kNamesLevel = 4;
  DWORD needed = 0, count = 0;
  EnumPrintersW(kFlags, nullptr, kNamesLevel, nullptr, 0, &needed, &count);
  std::vector<BYTE> bytes(needed);
  if (!EnumPrintersW(kFlags, nullptr, kNamesLevel, bytes.data(), needed, &needed, &count)) return {};
  const auto* first = reinterpret_cast<const PRINTER_INFO_4W*>(bytes.data());
  std::vector<std::wstring> names;
  std::transform(first, first + count, std::back_inserter(names), [](const auto& printer) { return printer.pPrinterName; });
  const auto usual = std::ranges::find(names, default_printer_name());
  if (usual != names.end()) std::rotate(names.begin(), usual, usual + 1);
  return names;
}

// "NAME,DRIVER,PORT" in the profile, which is where the library's set-up dialog writes it.
std::wstring default_printer_name() {
  wchar_t device[1024];
  const DWORD length = GetProfileStringW(L"windows", L"device", L"", device, static_cast<DWORD>(std::size(device)));
  const std::wstring text(device, length);
  return text.substr(0, text.find(L','));
}

}  // namespace vorel::programs
