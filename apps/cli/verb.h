// What a verb of the tool is, and the list of all verbs.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>
#include <string>

#include "cli/failure.h"

namespace vorel::cli {

struct Streams {
  std::istream& input;
  std::ostream& output;
  std::ostream& errors;
};

// Does the work once the arguments are known. Throws Failure.
using Action = std::function<ExitCode(const Streams&)>;

struct Verb {
  const char* name;
  const char* purpose;               // one line
  Action (*declare)(CLI::App& app);  // tells the verb's arguments and help
};

// In the order of the help.
extern const Verb kInfo, kConvert, kRotate, kMirror, kInvert;
inline constexpr const Verb* kVerbs[] = {&kInfo, &kConvert, &kRotate, &kMirror, &kInvert};

// Prints an error as one line.
void print_error(std::ostream& errors, std::string text);

}  // namespace vorel::cli
