// What a verb of the tool is, and the list of all verbs.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/failure.h"

namespace vorel::cli {

struct Streams {
  std::istream& input;
  std::ostream& output;
  std::ostream& errors;
  bool is_watched = false;  // the errors go to a terminal
};

// Does the work once the arguments are known. Throws Failure.
using Action = std::function<ExitCode(const Streams&)>;

struct Verb {
  const char* name;
  const char* purpose;                      // one line
  Action (*declare)(Arguments& arguments);  // tells the verb's arguments and help
  bool needs_windows = false;
};

// In the order of the help. Every step (step.h) is a verb besides.
extern const Verb kInfo, kConvert, kRun, kBatch, kPages, kCut, kCombine, kCompare, kHistogram, kText, kPrint;
inline constexpr const Verb* kVerbs[] = {&kInfo,    &kConvert, &kRun,       &kBatch, &kPages, &kCut,
                                         &kCombine, &kCompare, &kHistogram, &kText,  &kPrint};

// Does the same for each of several files: one that fails is reported and left out. Returns the code for all of them.
ExitCode each_file(const std::vector<std::string>& files, const Streams& streams,
                   const std::function<void(const std::string&)>& work);

// Prints an error, or a note that ends nothing, as one line.
void print_error(std::ostream& errors, std::string text);
void print_note(std::ostream& errors, const std::string& text);

}  // namespace vorel::cli
