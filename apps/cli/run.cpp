#include "cli/run.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iostream>
#include <map>

#include "cli/batch/worker.h"
#include "cli/manual.h"
#include "cli/parser.h"
#include "cli/platform.h"
#include "cli/step.h"
#include "cli/verb.h"
#include "cli/verbs/step_verb.h"
#include "cli/version.h"
#include "common/platform.h"

namespace vorel::cli {
namespace {

constexpr const char* kVerbGroup = "Verbs";
constexpr const char* kStepGroup = "Verbs that change pages, also the steps of \"vorel run\"";

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  done, and all of the output was written\n"
    "  1  some of several inputs failed, or all of them with different codes; or \"compare\" found a difference\n"
    "  2  wrong use: an unknown verb, option or value\n"
    "  3  the input is missing or cannot be read\n"
    "  4  the format is not recognised, damaged or not supported, or --strict found a loss\n"
    "  5  the output was not written\n"
    "  6  not enough memory, or a picture past the size limit of 2 GB\n"
    "  7  a codec module is missing\n\n"
    "Results go to standard output, everything else to standard error. Existing files are replaced with --overwrite\n"
    "only. \"vorel help VERB\" tells more about a verb.";

constexpr const char* kExamples =
    "  vorel info scan.tif\n"
    "  vorel convert scan.tif scan.png\n"
    "  vorel rotate scan.tif upright.tif 90\n"
    "  vorel run scan.tif page.tif \"clean 60 | rotate -1 --white | scale 50%\"";

bool is_offered(const Verb& verb) { return !verb.needs_windows || programs::has_drawing(); }

// A file whose name begins with a dash looks like an option.
std::string dash_hint(const std::vector<std::string>& given) {
  const auto looks_like_a_file = [](const std::string& text) {
    return text.starts_with('-') && text.find('.') != std::string::npos && text.find('=') == std::string::npos;
  };
  const bool has_end = std::ranges::find(given, "--") != given.end();
  const auto found = std::ranges::find_if(given, looks_like_a_file);
  if (has_end || found == given.end()) return {};
  return "write -- in front of file names that begin with a dash, as in \"-- " + *found + "\"; ";
}

class CommandLine {
 public:
  // Declares the verb that the first word names, and all verbs only where it names none: declaring them takes time.
  explicit CommandLine(const std::vector<std::string>& words)
      : parser_("vorel", "Look at, convert and transform picture files.", Parser::Help::kOnRequest) {
    Arguments tool = parser_.arguments();
    tool.flag("--version", shows_version_,
              "Print the version and those of the codec libraries (with --json, as JSON) and exit");
    const auto is_named = [&](const auto* verb) { return !words.empty() && words.front() == verb->name; };
    const bool names_one = std::ranges::any_of(kVerbs, is_named) || std::ranges::any_of(kSteps, is_named);
    for (const Verb* verb : kVerbs) {
      if (!is_offered(*verb) || (names_one && !is_named(verb))) continue;
      Arguments arguments = tool.verb(verb->name, verb->purpose, kVerbGroup);
      actions_[verb->name] = verb->declare(arguments);
    }
    for (const Step* step : kSteps) {
      if (names_one && !is_named(step)) continue;
      Arguments arguments = tool.verb(step->name, step->purpose, kStepGroup);
      actions_[step->name] = declare_step_verb(arguments, *step);
    }
    declare_own_verbs(tool);
    tool.explain(kExitCodes, kExamples);
  }

  ExitCode run(std::vector<std::string> words, const Streams& streams) {
    if (!words.empty() && words.front() == "help") {
      words.erase(words.begin());
      words.emplace_back("--help");
    }
    if (!words.empty() && words.front() == "--version") {
      return print_version(words, streams);
    }
    refuse_unoffered(words);
    const std::string help = parsed(words);
    if (!help.empty()) {
      streams.output << help;
      return ExitCode::kDone;
    }
    return actions_.at(parser_.chosen().front())(streams);
  }

 private:
  // Verbs about the tool itself.
  void declare_own_verbs(Arguments& tool) {
    Arguments completing = tool.verb("completion", "Print the completion of a shell.", kVerbGroup);
    completing.required("SHELL", shell_, "bash, zsh or fish", one_of(shells()));
    completing.explain("",
                       "  vorel completion bash > /etc/bash_completion.d/vorel\n"
                       "  source <(vorel completion zsh)\n"
                       "  vorel completion fish > ~/.config/fish/completions/vorel.fish");
    actions_["completion"] = [this](const Streams& streams) {
      streams.output << completion(parser_.declared(), shell_);
      return ExitCode::kDone;
    };
    Arguments manual = tool.verb("manual", "Print the manual page.", kVerbGroup);
    manual.explain("", "  vorel manual | man -l -");
    actions_["manual"] = [this](const Streams& streams) {
      streams.output << manual_page(parser_.declared(), version_line());
      return ExitCode::kDone;
    };
  }

  static ExitCode print_version(const std::vector<std::string>& words, const Streams& streams) {
    const bool as_json = words.size() == 2 && words[1] == "--json";
    if (words.size() > 1 && !as_json)
      throw programs::Problem(programs::Fault::kWrongUse, "--version goes with --json alone; leave the rest out");
    streams.output << (as_json ? version_json() : version_text());
    return ExitCode::kDone;
  }

  // Fills in the values, or returns a help text.
  std::string parsed(const std::vector<std::string>& words) {
    try {
      return parser_.parse(words);
    } catch (const WrongUse& error) {
      const std::vector<std::string> chosen = parser_.chosen();
      const std::string verb = fmt::format("{}", fmt::join(chosen, " "));
      if (verb.empty())
        throw programs::Problem(programs::Fault::kWrongUse, fmt::format("{}; see \"vorel --help\"", error.what()));
      throw Failure(ExitCode::kWrongUse, verb,
                    fmt::format("{}; {}see \"vorel {} --help\"", error.what(), dash_hint(words), verb));
    }
  }

  static void refuse_unoffered(const std::vector<std::string>& words) {
    for (const Verb* verb : kVerbs) {
      if (words.empty() || words.front() != verb->name || is_offered(*verb)) continue;
      throw Failure(ExitCode::kWrongUse, verb->name,
                    "this verb needs the Windows build; use the Windows build of this tool, vorel.exe");
    }
  }

  Parser parser_;
  bool shows_version_ = false;
  std::string shell_;
  std::map<std::string, Action> actions_;
};

ExitCode run_checked(std::vector<std::string> arguments, const Streams& streams) {
  if (!arguments.empty() && arguments.front() == batch::kWorkerWord) {
    batch::serve(streams.input, streams.output);  // nobody reads its complaints
    streams.output.clear();
    return ExitCode::kDone;
  }
  const ExitCode code = CommandLine(arguments).run(arguments, streams);
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
