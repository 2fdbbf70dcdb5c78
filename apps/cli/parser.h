// The parser of command lines, and of the steps of a chain.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/arguments.h"

namespace vorel::cli {

// The text is "what is wrong; what to do".
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Parser {
 public:
  enum class Help { kOnRequest, kNever };
  Parser(const std::string& name, const std::string& purpose, Help help);
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  ~Parser();

  Arguments arguments();
  const Declared& declared() const { return declared_; }

  // Fills in the values. Throws WrongUse. Returns a help text instead where the words ask for it.
  std::string parse(const std::vector<std::string>& words);

  // The verbs that were given, from the outermost on.
  std::vector<std::string> chosen() const;

  // The given values in the order of their declaration, as words that mean the same again.
  std::vector<std::string> canonical_words();

 private:
  std::string reason_for(const std::exception& error) const;

  Declared declared_;
  std::unique_ptr<CLI::App> app_;
};

}  // namespace vorel::cli
