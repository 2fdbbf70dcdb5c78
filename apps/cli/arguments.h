// What a verb takes on the command line. The parser itself stays behind this.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vorel::cli {

// Looks at a value. Returns what is wrong with it, "" for nothing.
using Check = std::function<std::string(const std::string& value)>;

// The values that an option takes, in the order of the help.
Check one_of(std::vector<std::string> words);

struct Range {
  int least, most;
};
inline constexpr Range kAnyNumber = {-2'147'483'647, 2'147'483'647};
inline constexpr Range kFromOne = {1, 2'147'483'647};

class Arguments {
 public:
  explicit Arguments(CLI::App& app) : app_(app) {}

  // Values by their place, which must be there, in the order in which they are declared.
  void required(const std::string& name, std::string& value, const std::string& help, const Check& check = {});
  void required(const std::string& name, int& value, const std::string& help, Range range = kAnyNumber);
  void one_or_more(const std::string& name, std::vector<std::string>& values, const std::string& help);
  void any_number(const std::string& name, std::vector<std::string>& values, const std::string& help);
  void optional(const std::string& name, std::string& value, const std::string& help, const Check& check = {});

  // Options with a value, shown as `shown` in the help.
  void option(const std::string& name, std::string& value, const std::string& shown, const std::string& help,
              const Check& check = {});
  void option(const std::string& name, int& value, const std::string& shown, const std::string& help,
              Range range = kAnyNumber);
  void flag(const std::string& name, bool& value, const std::string& help);

  // Options that do not go together.
  void exclude(const std::string& one, const std::string& other);

  // Text below the list of options.
  void explain(const std::string& text);

  // A nested verb. A verb that has nested ones needs one of them.
  Arguments verb(const std::string& name, const std::string& purpose);
  bool is_given() const;

 private:
  CLI::App& app_;
};

}  // namespace vorel::cli
