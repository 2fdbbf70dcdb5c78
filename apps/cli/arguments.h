// The arguments that a verb takes on the command line, or a step in a chain. Hides the parser.
#pragma once

#include <concepts>
#include <functional>
#include <string>
#include <vector>

#include "cli/declared.h"

namespace CLI {
class App;
}

namespace vorel::cli {

// Checks a value.
struct Check {
  Check() = default;
  template <class Function>
  requires std::is_invocable_r_v<std::string, Function, const std::string&> Check(Function look,
                                                                                  std::vector<std::string> known = {})
      : wrong(std::move(look)), words(std::move(known)) {}

  std::function<std::string(const std::string& value)> wrong;  // returns what is wrong with it; "" if nothing is
  std::vector<std::string> words;                              // the usual values
};

// Only these values, listed in this order in the help.
Check one_of(std::vector<std::string> words);

struct Range {
  int least, most;
};
inline constexpr Range kAnyNumber = {-2'147'483'647, 2'147'483'647};
inline constexpr Range kFromOne = {1, 2'147'483'647};

class Arguments {
 public:
  Arguments(CLI::App& app, Declared& declared) : app_(&app), declared_(&declared) {}

  // Positional values, in the order of declaration.
  void required(const std::string& name, std::string& value, const std::string& help, const Check& check = {});
  void required(const std::string& name, int& value, const std::string& help, Range range = kAnyNumber);
  void required(const std::string& name, double& value, const std::string& help);
  void one_or_more(const std::string& name, std::vector<std::string>& values, const std::string& help);
  void any_number(const std::string& name, std::vector<std::string>& values, const std::string& help);
  void optional(const std::string& name, std::string& value, const std::string& help, const Check& check = {});

  // Options with a value, shown as `shown` in the help.
  void option(const std::string& name, std::string& value, const std::string& shown, const std::string& help,
              const Check& check = {});
  void option(const std::string& name, int& value, const std::string& shown, const std::string& help,
              Range range = kAnyNumber);
  void option(const std::string& name, double& value, const std::string& shown, const std::string& help, Range range);
  void flag(const std::string& name, bool& value, const std::string& help);

  // Options that do not go together.
  void exclude(const std::string& one, const std::string& other);

  // Called once all values are filled in. Returns what is wrong with their combination; "" if nothing is.
  void check_together(const std::function<std::string()>& look);

  // Text below the list of options: paragraphs, and lines of examples.
  void explain(const std::string& details, const std::string& examples = "");

  // A nested verb. A verb that has nested ones needs one of them.
  Arguments verb(const std::string& name, const std::string& purpose, const std::string& group = "");
  bool is_given() const;

  // The options that were given, in the order of their declaration, as words that mean the same again.
  std::vector<std::string> given_options() const;

 private:
  void positional(const Argument& argument, const std::function<bool(const std::vector<std::string>&)>& take);
  void positional(const Argument& argument, std::vector<std::string>& values);

  CLI::App* app_;
  Declared* declared_;
};

}  // namespace vorel::cli
