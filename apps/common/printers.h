// The system's printers. On Windows alone.
#pragma once

#include <string>
#include <vector>

namespace vorel::programs {

// The default printer comes first.
std::vector<std::wstring> printer_names();

// Empty if there is none.
std::wstring default_printer_name();

}  // namespace vorel::programs
