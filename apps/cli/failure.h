// How the tool ends, and the one kind of error inside it.
#pragma once

#include <stdexcept>
#include <string>

namespace vorel::cli {

enum class ExitCode {
  kDone = 0,
  kSomeFailed = 1,
  kWrongUse = 2,
  kInput = 3,
  kFormat = 4,
  kOutput = 5,
  kLimit = 6,
  kModule = 7,
};

// Ends the work on one file. The text is "FILE: what was wrong; what to do".
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& file, const std::string& text)
      : std::runtime_error(file + ": " + text), code_(code) {}

  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace vorel::cli
