// The versions of the tool and of the codec modules.
#pragma once

#include <string>

namespace vorel::cli {

std::string version_line();  // "vorel 5.59 (avx2)"

// The same with a line for each codec module, and as JSON. Modules that are missing are named as such.
std::string version_text();
std::string version_json();

}  // namespace vorel::cli
