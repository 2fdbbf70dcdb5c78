// The whole tool as one function.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vorel::cli {

// Does what the arguments ask for (without the program's name, in UTF-8) and returns the exit code. Throws nothing.
// Input and output streams are binary; "-" as a file name stands for them.
int run(std::vector<std::string> arguments, std::istream& input, std::ostream& output, std::ostream& errors) noexcept;

}  // namespace vorel::cli
