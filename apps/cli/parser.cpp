#include "cli/parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/words.h"

namespace vorel::cli {
namespace {

using Kind = Argument::Kind;

constexpr size_t kFewVerbs = 5;  // few enough to be listed in a message

bool is_option(const std::string& word) { return word.size() > 1 && word.starts_with('-'); }

// A word that is none of the declared arguments.
std::string stray_word(const std::string& word, const Declared& declared) {
  const std::string name = word.substr(0, word.find('='));
  if (is_option(word)) return fmt::format("there is no option {}{}", name, suggestion(name, declared.option_names()));
  if (!declared.verbs.empty())
    return fmt::format("there is no verb \"{}\"{}", word, suggestion(word, declared.verb_names()));
  return fmt::format("\"{}\" is one argument too many", word);
}

// The required arguments that were left out.
std::string missing_arguments(const CLI::App& app, const Declared& declared) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options())
    if (option->get_required() && option->count() == 0) names.push_back(option->get_name(true));
  if (names.empty() && declared.verbs.size() > kFewVerbs) return "a verb is missing";
  if (names.empty()) return fmt::format("a verb is missing, one of {}", fmt::join(declared.verb_names(), ", "));
  return fmt::format("{} {} missing", fmt::join(names, " and "), names.size() == 1 ? "is" : "are");
}

// Which option a message of the parser is about.
const Argument* argument_in(const std::string& message, const Declared& declared) {
  const auto found = std::ranges::find_if(declared.arguments, [&](const Argument& argument) {
    if (argument.kind == Kind::kFlag && message.starts_with(argument.name.substr(2) + " ")) return true;
    return message.starts_with(argument.name + " ") || message.starts_with(argument.name + ":") ||
           message.find(" " + argument.name + " ") != std::string::npos || message.ends_with(" " + argument.name);
  });
  return found == declared.arguments.end() ? nullptr : &*found;
}

std::string wrong_count(const std::string& message, const Declared& declared) {
  const Argument* argument = argument_in(message, declared);
  if (argument == nullptr) return message;
  if (argument->kind == Kind::kFlag) return argument->name + " takes no value";
  const bool is_missing = message.find("missing") != std::string::npos || message.find("got 0") != std::string::npos;
  return is_missing ? fmt::format("{} needs a value: {}", argument->name, argument->value)
                    : fmt::format("{} is given more than once", argument->name);
}

std::string excluded(const std::string& message) {
  const size_t at = message.find(" excludes ");
  return fmt::format("{} and {} do not go together", message.substr(0, at), message.substr(at + 10));
}

}  // namespace

Parser::Parser(const std::string& name, const std::string& purpose, Help help)
    : app_(std::make_unique<CLI::App>(purpose, name)) {
  declared_.name = name;
  declared_.purpose = purpose;
  app_->allow_windows_style_options(false);  // a path may begin with a slash
  app_->get_formatter()->column_width(24);
  app_->get_formatter()->label("SUBCOMMAND", "VERB ...");
  if (help == Help::kNever)
    app_->set_help_flag();
  else
    app_->set_help_flag("-h,--help", "Print this help and exit");
}

Parser::~Parser() = default;

Arguments Parser::arguments() { return {*app_, declared_}; }

std::string Parser::parse(const std::vector<std::string>& words) {
  try {
    app_->parse(std::vector<std::string>(words.rbegin(), words.rend()));  // taken from the back
  } catch (const CLI::CallForHelp&) {
    return app_->help();
  } catch (const CLI::ParseError& error) {
    throw WrongUse(reason_for(error));
  }
  const Declared* declared = &declared_;
  for (const std::string& verb : chosen()) declared = declared->verb(verb);
  const std::string wrong = declared->check_together ? declared->check_together() : "";
  if (!wrong.empty()) throw WrongUse(wrong);
  return {};
}

std::vector<std::string> Parser::chosen() const {
  std::vector<std::string> names;
  for (const CLI::App* app = app_.get(); !app->get_subcommands().empty();) {
    app = app->get_subcommands().front();
    names.push_back(app->get_name());
  }
  return names;
}

std::string Parser::reason_for(const std::exception& error) const {
  const CLI::App* app = app_.get();
  const Declared* declared = &declared_;
  for (const std::string& verb : chosen()) {
    app = app->get_subcommand(verb);
    declared = declared->verb(verb);
  }
  const std::string message = error.what();
  const std::vector<std::string> strays = app_->remaining(true);
  const bool is_value = dynamic_cast<const CLI::ValidationError*>(&error) != nullptr;
  const auto stray = std::ranges::find_if(strays, is_option);
  if (!is_value && stray != strays.end()) return stray_word(*stray, *declared);
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && (strays.empty() || declared->verbs.empty()))
    return missing_arguments(*app, *declared);
  if (!is_value && !strays.empty()) return stray_word(strays.front(), *declared);
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) return excluded(message);
  return is_value ? message : wrong_count(message, *declared);
}

std::vector<std::string> Parser::canonical_words() {
  std::vector<std::string> words;
  for (const CLI::Option* option : app_->get_options())
    if (option->get_positional()) words.insert(words.end(), option->results().begin(), option->results().end());
  const std::vector<std::string> options = arguments().given_options();
  words.insert(words.end(), options.begin(), options.end());
  return words;
}

}  // namespace vorel::cli
