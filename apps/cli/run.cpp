#include "cli/run.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include <vorel32.h>

#include "cli/platform.h"
#include "cli/verb.h"
#include "kernels/levels.h"

namespace vorel::cli {
namespace {

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  done, and the output was checked\n"
    "  1  some of several inputs failed, or all of them for different reasons\n"
    "  2  wrong use: an unknown verb, option or value\n"
    "  3  the input is missing or cannot be read\n"
    "  4  the format is not recognised, damaged or not supported\n"
    "  5  the output was not written\n"
    "  6  not enough memory, or a picture past the size limit of 2 GB\n"
    "  7  a codec module is missing\n\n"
    "Results go to standard output, everything else to standard error. Existing files are replaced with --overwrite\n"
    "only. \"vorel VERB --help\" tells more about a verb.\n\n"
    "Examples:\n"
    "  vorel info scan.tif\n"
    "  vorel convert scan.tif scan.png\n"
    "  vorel rotate scan.tif upright.tif 90";

std::string version() {
  char text[32] = {};
  GetImageVersion(text, sizeof text);
  const std::string whole = text;
  return "vorel " + whole.substr(whole.rfind(' ') + 1) + " (" + std::string(name_of(cpu_level())) + ")";
}

class CommandLine {
 public:
  CommandLine() : app_("Look at, convert and transform picture files.", "vorel") {
    app_.allow_windows_style_options(false);  // a path may begin with a slash
    app_.set_version_flag("--version", version(), "Print the version and exit");
    app_.set_help_flag("-h,--help", "Print this help and exit");
    app_.require_subcommand(1);
    app_.get_formatter()->column_width(24);
    app_.get_formatter()->label("SUBCOMMAND", "VERB ...");
    app_.footer(kExitCodes);
    for (const Verb* verb : kVerbs) declare(*verb);
  }

  ExitCode run(std::vector<std::string> arguments, const Streams& streams) {
    const std::vector<std::string> given = arguments;
    try {
      std::ranges::reverse(arguments);  // the parser takes them from the back
      app_.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
      streams.output << app_.help();
      return ExitCode::kDone;
    } catch (const CLI::CallForVersion&) {
      streams.output << version() << '\n';
      return ExitCode::kDone;
    } catch (const CLI::ParseError& error) {
      print_error(streams.errors, wrong_use(error, given));
      return ExitCode::kWrongUse;
    }
    return action_(streams);
  }

 private:
  std::string wrong_use(const CLI::ParseError& error, const std::vector<std::string>& given) const {
    const std::string first = given.empty() ? "" : given.front();
    const auto chosen = app_.get_subcommands();
    if (!chosen.empty()) {
      const std::string verb = chosen.front()->get_name();
      return verb + ": " + error.what() + "; " + dash_hint(given) + "see \"vorel " + verb + " --help\"";
    }
    const bool is_word = !first.empty() && first[0] != '-';
    return (is_word ? first + ": there is no such verb" : "a verb is missing") + "; see \"vorel --help\"";
  }

  // A file whose name begins with a dash looks like an option.
  static std::string dash_hint(const std::vector<std::string>& given) {
    const auto looks_like_a_file = [](const std::string& text) {
      return text.starts_with('-') && text.find('.') != std::string::npos && text.find('=') == std::string::npos;
    };
    const bool has_end = std::ranges::find(given, "--") != given.end();
    const auto found = std::ranges::find_if(given, looks_like_a_file);
    if (has_end || found == given.end()) return {};
    return "write -- in front of file names that begin with a dash, as in \"-- " + *found + "\"; ";
  }

  void declare(const Verb& verb) {
    CLI::App* app = app_.add_subcommand(verb.name, verb.purpose);
    app->group("Verbs");
    Arguments arguments(*app);
    const Action action = verb.declare(arguments);
    app->final_callback([this, action] { action_ = action; });
  }

  CLI::App app_;
  Action action_;
};

ExitCode run_checked(std::vector<std::string> arguments, const Streams& streams) {
  const ExitCode code = CommandLine().run(std::move(arguments), streams);
  if (!streams.output.flush()) {
    throw Failure(ExitCode::kOutput, "standard output", "not all could be written; check that its reader is still there");
  }
  return code;
}

}  // namespace

void print_error(std::ostream& errors, std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < ' ' || c == 127; }, ' ');
  errors << "vorel: " << text << std::endl;
}

void print_note(std::ostream& errors, const std::string& text) { print_error(errors, "note: " + text); }

ExitCode each_file(const std::vector<std::string>& files, const Streams& streams,
                   const std::function<void(const std::string&)>& work) {
  std::vector<ExitCode> failures;
  for (const std::string& file : files) {
    try {
      work(file);
    } catch (const Failure& failure) {
      print_error(streams.errors, failure.what());
      failures.push_back(failure.code());
    }
  }
  if (failures.empty()) return ExitCode::kDone;
  const bool all_alike =
      failures.size() == files.size() && std::ranges::count(failures, failures[0]) == std::ssize(failures);
  return all_alike ? failures[0] : ExitCode::kSomeFailed;
}

int run(std::vector<std::string> arguments, std::istream& input, std::ostream& output, std::ostream& errors) noexcept {
  const Streams streams{input, output, errors, &errors == &std::cerr && standard_error_is_terminal()};
  try {
    try {
      return static_cast<int>(run_checked(std::move(arguments), streams));
    } catch (const Failure& failure) {
      print_error(errors, failure.what());
      return static_cast<int>(failure.code());
    } catch (const programs::Problem& problem) {
      print_error(errors, problem.what());
      return static_cast<int>(code_for(problem.fault()));
    } catch (const std::exception& error) {
      print_error(errors,
                  std::string("out of memory or at another limit (") + error.what() + "); close programs and try again");
    }
  } catch (...) {  // not even memory for the message
  }
  return static_cast<int>(ExitCode::kLimit);
}

}  // namespace vorel::cli
