// The declared arguments of a verb or a step: the source of completion, the manual page and suggestions.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vorel::cli {

struct Argument {
  enum class Kind { kPositional, kOption, kFlag };
  Kind kind;
  std::string name;                // options with their dashes
  std::string value;               // of an option, as help shows it
  std::string help;                // what it means
  std::vector<std::string> words;  // the values it may have; empty for any
  bool is_required = false;
  bool repeats = false;
};

struct Declared {
  std::string name, purpose;
  std::string group;     // heading in the list of verbs
  std::string details;   // paragraphs
  std::string examples;  // lines
  std::vector<Argument> arguments;
  std::vector<std::unique_ptr<Declared>> verbs;  // nested ones
  std::function<std::string()> check_together;   // see Arguments

  const Declared* verb(const std::string& verb_name) const;  // null if there is none
  std::vector<std::string> verb_names() const;
  std::vector<std::string> option_names() const;  // flags are options, too
};

}  // namespace vorel::cli
