#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>

#include "cli/decimal.h"
#include "cli/words.h"

namespace vorel::cli {
namespace {

using Kind = Argument::Kind;

CLI::callback_t into(std::string& value, const std::string& name, const Check& check) {
  return [&value, look = check.wrong, name](const CLI::results_t& given) {
    if (const std::string wrong = look ? look(given.back()) : ""; !wrong.empty()) throw CLI::ValidationError(name, wrong);
    value = given.back();
    return true;
  };
}

std::string number_is_wrong(const std::string& text, Range range) {
  if (range.most < kAnyNumber.most)
    return fmt::format("\"{}\" is no whole number from {} to {}", text, range.least, range.most);
  if (range.least > kAnyNumber.least) return fmt::format("\"{}\" is no whole number from {} on", text, range.least);
  return fmt::format("\"{}\" is no whole number", text);
}

CLI::callback_t into(double& value, const std::string& name, std::optional<Range> range = {}) {
  return [&value, range, name](const CLI::results_t& given) {
    const std::string& text = given.back();
    const auto number = parse_decimal(text);
    if (!number) throw CLI::ValidationError(name, fmt::format("\"{}\" is no number", text));
    if (range && (*number < range->least || *number > range->most))
      throw CLI::ValidationError(name, fmt::format("{} is not within {} and {}", text, range->least, range->most));
    value = *number;
    return true;
  };
}

CLI::callback_t into(int& value, const std::string& name, Range range) {
  return [&value, range, name](const CLI::results_t& given) {
    const auto number = parse_whole(given.back());
    if (!number || *number < range.least || *number > range.most)
      throw CLI::ValidationError(name, number_is_wrong(given.back(), range));
    value = *number;
    return true;
  };
}

}  // namespace

const Declared* Declared::verb(const std::string& verb_name) const {
  const auto found = std::ranges::find_if(verbs, [&](const auto& verb) { return verb->name == verb_name; });
  return found == verbs.end() ? nullptr : found->get();
}

std::vector<std::string> Declared::verb_names() const {
  std::vector<std::string> names;
  for (const auto& verb : verbs) names.push_back(verb->name);
  return names;
}

std::vector<std::string> Declared::option_names() const {
  std::vector<std::string> names;
  for (const Argument& argument : arguments)
    if (argument.kind != Kind::kPositional) names.push_back(argument.name);
  return names;
}

Check one_of(std::vector<std::string> words) {
  return {[words](const std::string& value) {
            if (std::ranges::find(words, value) != words.end()) return std::string();
            return fmt::format("\"{}\" is none of {}{}", value, fmt::join(words, ", "), suggestion(value, words));
          },
          words};
}

// The help would show the type, which tells the user nothing; a blank replaces it.
void Arguments::positional(const Argument& argument, const std::function<bool(const std::vector<std::string>&)>& take) {
  app_->add_option(argument.name, take, argument.help)->option_text(" ")->expected(1)->required(argument.is_required);
  declared_->arguments.push_back(argument);
}

void Arguments::positional(const Argument& argument, std::vector<std::string>& values) {
  app_->add_option(argument.name, values, argument.help)->option_text(" ")->required(argument.is_required);
  declared_->arguments.push_back(argument);
}

void Arguments::required(const std::string& name, std::string& value, const std::string& help, const Check& check) {
  positional({Kind::kPositional, name, "", help, check.words, true}, into(value, name, check));
}

void Arguments::required(const std::string& name, int& value, const std::string& help, Range range) {
  positional({Kind::kPositional, name, "", help, {}, true}, into(value, name, range));
}

void Arguments::required(const std::string& name, double& value, const std::string& help) {
  positional({Kind::kPositional, name, "", help, {}, true}, into(value, name));
}

void Arguments::optional(const std::string& name, std::string& value, const std::string& help, const Check& check) {
  positional({Kind::kPositional, name, "", help, check.words}, into(value, name, check));
}

void Arguments::one_or_more(const std::string& name, std::vector<std::string>& values, const std::string& help) {
  positional({Kind::kPositional, name, "", help, {}, true, true}, values);
}

void Arguments::any_number(const std::string& name, std::vector<std::string>& values, const std::string& help) {
  positional({Kind::kPositional, name, "", help, {}, false, true}, values);
}

void Arguments::option(const std::string& name, std::string& value, const std::string& shown, const std::string& help,
                       const Check& check) {
  app_->add_option(name, into(value, name, check), help)->expected(1)->option_text(shown);
  declared_->arguments.push_back({Kind::kOption, name, shown, help, check.words});
}

void Arguments::option(const std::string& name, int& value, const std::string& shown, const std::string& help, Range range) {
  app_->add_option(name, into(value, name, range), help)->expected(1)->option_text(shown);
  declared_->arguments.push_back({Kind::kOption, name, shown, help, {}});
}

void Arguments::option(const std::string& name, double& value, const std::string& shown, const std::string& help,
                       Range range) {
  app_->add_option(name, into(value, name, range), help)->expected(1)->option_text(shown);
  declared_->arguments.push_back({Kind::kOption, name, shown, help, {}});
}

void Arguments::flag(const std::string& name, bool& value, const std::string& help) {
  app_->add_flag(name, value, help)->disable_flag_override();
  declared_->arguments.push_back({Kind::kFlag, name, "", help, {}});
}

void Arguments::exclude(const std::string& one, const std::string& other) {
  app_->get_option(one)->excludes(app_->get_option(other));
}

void Arguments::check_together(const std::function<std::string()>& look) { declared_->check_together = look; }

void Arguments::explain(const std::string& details, const std::string& examples) {
  declared_->details += details;
  declared_->examples += examples;
  const bool is_one = declared_->examples.find('\n') == std::string::npos;
  const std::string blank_line = declared_->details.empty() || declared_->examples.empty() ? "" : "\n\n";
  app_->footer(declared_->details + blank_line +
               (declared_->examples.empty() ? "" : (is_one ? "Example:\n" : "Examples:\n") + declared_->examples));
}

Arguments Arguments::verb(const std::string& name, const std::string& purpose, const std::string& group) {
  app_->require_subcommand(1);
  declared_->verbs.push_back(std::make_unique<Declared>());
  Declared& nested = *declared_->verbs.back();
  nested.name = name;
  nested.purpose = purpose;
  nested.group = group;
  CLI::App* app = app_->add_subcommand(name, purpose);
  if (!group.empty()) app->group(group);
  return {*app, nested};
}

bool Arguments::is_given() const { return app_->parsed(); }

std::vector<std::string> Arguments::given_options() const {
  std::vector<std::string> options;
  for (const CLI::Option* option : app_->get_options()) {
    if (option->count() == 0 || option->get_positional()) continue;
    const bool is_flag = option->get_expected_max() == 0;
    options.push_back(option->get_name() + (is_flag ? "" : "=" + option->results().back()));
  }
  return options;
}

}  // namespace vorel::cli
