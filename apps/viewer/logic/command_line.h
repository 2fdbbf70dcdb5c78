// Command lines of the system, from separate arguments.
#pragma once

#include <string>
#include <vector>

namespace vorel::viewer {

// What a program takes apart into these arguments again.
std::wstring command_line(const std::vector<std::wstring>& arguments);

}  // namespace vorel::viewer
