// The manual page and the completion for shells, made from the declared verbs and steps.
#pragma once

#include <string>
#include <vector>

#include "cli/declared.h"

namespace vorel::cli {

// vorel.1, in the language of man pages.
std::string manual_page(const Declared& tool, const std::string& version);

// For bash, zsh or fish, to be sourced or put where the shell looks for completions.
const std::vector<std::string>& shells();
std::string completion(const Declared& tool, const std::string& shell);

}  // namespace vorel::cli
