// How what the programs ask for can fail.
#pragma once

#include <stdexcept>
#include <string>

namespace vorel::programs {

enum class Fault { kWrongUse, kInput, kFormat, kOutput, kLimit, kModule };

// The text is "what is wrong; what to do", in UTF-8. It names no file: the caller knows which one it is about.
class Problem : public std::runtime_error {
 public:
  Problem(Fault fault, const std::string& text) : std::runtime_error(text), fault_(fault) {}

  Fault fault() const { return fault_; }

 private:
  Fault fault_;
};

}  // namespace vorel::programs
