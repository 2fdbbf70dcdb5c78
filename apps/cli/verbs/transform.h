// What all verbs have in common that make one picture of another.
#pragma once

#include <memory>

#include "cli/pages.h"
#include "cli/verb.h"

namespace vorel::cli {

// Declares a verb that reads IN, changes each of its pages and writes OUT. Arguments declared later come after these two. The
// change gets pictures as they are loaded, and throws Problem or Failure.
Action declare_transform(Arguments& arguments, Change change);

// IN and OUT.
void declare_input(Arguments& arguments, std::string& input);
void declare_output(Arguments& arguments, std::string& output);

inline constexpr const char* kWhiteHelp =
    "fill what the picture leaves free with white, or the colour nearest to it (default: black)";

}  // namespace vorel::cli
