// How the tool ends, and the one kind of error inside it.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "common/problem.h"

namespace vorel::cli {

enum class ExitCode {
  kDone = 0,
  kSomeFailed = 1,
  kDifferent = 1,
  kWrongUse = 2,
  kInput = 3,
  kFormat = 4,
  kOutput = 5,
  kLimit = 6,
  kModule = 7,
};

constexpr ExitCode code_for(programs::Fault fault) {
  switch (fault) {
    case programs::Fault::kWrongUse: return ExitCode::kWrongUse;
    case programs::Fault::kInput: return ExitCode::kInput;
    case programs::Fault::kFormat: return ExitCode::kFormat;
    case programs::Fault::kOutput: return ExitCode::kOutput;
    case programs::Fault::kLimit: return ExitCode::kLimit;
    case programs::Fault::kModule: return ExitCode::kModule;
  }
  return ExitCode::kLimit;
}

// Ends the work on one file. The text is "FILE: what is wrong; what to do".
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& file, const std::string& text)
      : std::runtime_error(file + ": " + text), code_(code) {}

  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// Does something with a file: problems become failures in its name.
template <class Work>
auto about(const std::string& file, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const programs::Problem& problem) {
    throw Failure(code_for(problem.fault()), file, problem.what());
  }
}

}  // namespace vorel::cli
