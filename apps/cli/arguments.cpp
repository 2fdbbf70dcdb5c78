#include "cli/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vorel::cli {
namespace {

// Names an argument the way people see it: options with their dashes.
std::string shown_name(const std::string& name) { return name.starts_with("--") ? name.substr(0, name.find(',')) : name; }

CLI::callback_t into(std::string& value, const std::string& name, const Check& check) {
  return [&value, check, name](const CLI::results_t& given) {
    if (const std::string wrong = check ? check(given.back()) : ""; !wrong.empty())
      throw CLI::ValidationError(shown_name(name), wrong);
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

CLI::callback_t into(int& value, const std::string& name, Range range) {
  return [&value, range, name](const CLI::results_t& given) {
    const std::string& text = given.back();
    const char* const first = text.data() + (text.starts_with('+') ? 1 : 0);
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(first, end, value);
    const bool is_number = first != end && parsed.ec == std::errc() && parsed.ptr == end;
    if (!is_number || value < range.least || value > range.most)
      throw CLI::ValidationError(shown_name(name), number_is_wrong(text, range));
    return true;
  };
}

// A blank stands instead of the type, which says nothing here.
CLI::Option* positional(CLI::App& app, const std::string& name, const CLI::callback_t& take, const std::string& help) {
  CLI::Option* option = app.add_option(name, take, help)->option_text(" ");
  option->expected(1);
  return option;
}

}  // namespace

Check one_of(std::vector<std::string> words) {
  return [words = std::move(words)](const std::string& value) {
    if (std::ranges::find(words, value) != words.end()) return std::string();
    return fmt::format("\"{}\" is none of {}", value, fmt::join(words, ", "));
  };
}

void Arguments::required(const std::string& name, std::string& value, const std::string& help, const Check& check) {
  positional(app_, name, into(value, name, check), help)->required();
}

void Arguments::required(const std::string& name, int& value, const std::string& help, Range range) {
  positional(app_, name, into(value, name, range), help)->required();
}

void Arguments::optional(const std::string& name, std::string& value, const std::string& help, const Check& check) {
  positional(app_, name, into(value, name, check), help);
}

void Arguments::one_or_more(const std::string& name, std::vector<std::string>& values, const std::string& help) {
  app_.add_option(name, values, help)->required()->option_text(" ");
}

void Arguments::any_number(const std::string& name, std::vector<std::string>& values, const std::string& help) {
  app_.add_option(name, values, help)->option_text(" ");
}

void Arguments::option(const std::string& name, std::string& value, const std::string& shown, const std::string& help,
                       const Check& check) {
  app_.add_option(name, into(value, name, check), help)->expected(1)->option_text(shown);
}

void Arguments::option(const std::string& name, int& value, const std::string& shown, const std::string& help, Range range) {
  app_.add_option(name, into(value, name, range), help)->expected(1)->option_text(shown);
}

void Arguments::flag(const std::string& name, bool& value, const std::string& help) { app_.add_flag(name, value, help); }

void Arguments::exclude(const std::string& one, const std::string& other) {
  app_.get_option(one)->excludes(app_.get_option(other));
}

void Arguments::explain(const std::string& text) { app_.footer(text); }

Arguments Arguments::verb(const std::string& name, const std::string& purpose) {
  app_.require_subcommand(1);
  return Arguments(*app_.add_subcommand(name, purpose));
}

bool Arguments::is_given() const { return app_.parsed(); }

}  // namespace vorel::cli
