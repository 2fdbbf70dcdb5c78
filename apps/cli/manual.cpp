#include "cli/manual.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <functional>

namespace vorel::cli {
namespace {

using Kind = Argument::Kind;

// Calls visit(names from the outermost verb on, verb) for every verb that has arguments of its own.
void for_each_verb(const Declared& tool, const std::function<void(const std::string& name, const Declared& verb)>& visit,
                   const std::string& before = "") {
  for (const auto& verb : tool.verbs) {
    const std::string name = before + verb->name;
    if (verb->verbs.empty()) visit(name, *verb);
    for_each_verb(*verb, visit, name + " ");
  }
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) text.replace(at, what.size(), by);
  return text;
}

// ---- Manual page ----

// Dashes that can be typed, and no line that begins as a request.
std::string roff(const std::string& text) {
  std::string safe = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
  if (safe.starts_with('.') || safe.starts_with('\'')) safe.insert(0, "\\&");
  return replaced(replaced(safe, "\n.", "\n\\&."), "\n'", "\n\\&'");
}

std::string synopsis_of(const std::string& name, const Declared& verb) {
  std::string line = fmt::format("\\fBvorel {}\\fR", roff(name));
  for (const Argument& argument : verb.arguments) {
    if (argument.kind != Kind::kPositional) continue;
    const std::string shown = fmt::format("\\fI{}\\fR{}", roff(argument.name), argument.repeats ? " ..." : "");
    line += argument.is_required ? " " + shown : " [" + shown + "]";
  }
  return line + " [\\fIoptions\\fR]";
}

std::string manual_of(const std::string& name, const Declared& verb) {
  std::string text = fmt::format(".SS {}\n{}\n.PP\n{}\n", roff(name), synopsis_of(name, verb), roff(verb.purpose));
  for (const Argument& argument : verb.arguments) {
    const std::string value = argument.value.empty() ? "" : fmt::format(" \\fI{}\\fR", roff(argument.value));
    text += fmt::format(".TP\n\\fB{}\\fR{}\n{}\n", roff(argument.name), value, roff(argument.help));
  }
  if (!verb.details.empty()) text += ".PP\n" + roff(verb.details) + "\n";
  if (!verb.examples.empty()) text += ".PP\n.nf\n" + roff(verb.examples) + "\n.fi\n";
  return text;
}

// ---- Completion ----

std::vector<std::string> positional_words(const Declared& verb) {
  std::vector<std::string> words;
  for (const Argument& argument : verb.arguments)
    if (argument.kind == Kind::kPositional) words.insert(words.end(), argument.words.begin(), argument.words.end());
  return words;
}

// Bash and, through its emulation, zsh: "VERB OPTION" selects the values, "VERB" the options.
std::string cases(const Declared& tool) {
  std::string values, options, nested;
  for (const auto& verb : tool.verbs)
    if (!verb->verbs.empty())
      nested += fmt::format("    {}) words=\"{}\" ;;\n", verb->name, fmt::join(verb->verb_names(), " "));
  for_each_verb(tool, [&](const std::string& name, const Declared& verb) {
    for (const Argument& argument : verb.arguments)
      if (argument.kind == Kind::kOption)
        values +=
            fmt::format("    \"{} {}\") words=\"{}\"; takes=1 ;;\n", name, argument.name, fmt::join(argument.words, " "));
    std::vector<std::string> offered = verb.option_names();
    offered.emplace_back("--help");
    options += fmt::format("    \"{}\") words=\"{}\"; options=\"{}\" ;;\n", name, fmt::join(positional_words(verb), " "),
                           fmt::join(offered, " "));
  });
  return fmt::format("  case \"$verb $prev\" in\n{}  esac\n  [ -n \"$takes\" ] || case \"$verb\" in\n{}{}  esac\n", values,
                     options, nested);
}

std::string bash_completion(const Declared& tool) {
  std::string with_nested;
  for (const auto& verb : tool.verbs)
    if (!verb->verbs.empty()) with_nested += (with_nested.empty() ? "" : "|") + verb->name;
  return fmt::format(
      "# Completion of vorel for bash and zsh.\n"
      "[ -z \"$ZSH_VERSION\" ] || {{ autoload -U +X bashcompinit && bashcompinit; }}\n"
      "_vorel() {{\n"
      "  local cur=\"${{COMP_WORDS[COMP_CWORD]}}\" prev=\"${{COMP_WORDS[COMP_CWORD-1]}}\" verb=\"${{COMP_WORDS[1]}}\"\n"
      "  local words=\"\" options=\"\" takes=\"\"\n"
      "  COMPREPLY=()\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ] || {{ [ \"$COMP_CWORD\" -eq 2 ] && [ \"$verb\" = help ]; }}; then\n"
      "    COMPREPLY=($(compgen -W \"{} help --help --version\" -- \"$cur\"))\n"
      "    return\n"
      "  fi\n"
      "  case \"$verb\" in {}) [ \"$COMP_CWORD\" -gt 2 ] && verb=\"$verb ${{COMP_WORDS[2]}}\" ;; esac\n"
      "{}"
      "  case \"$cur\" in -*) words=\"$options\" ;; esac\n"
      "  COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
      "  [ ${{#COMPREPLY[@]}} -gt 0 ] || COMPREPLY=($(compgen -f -- \"$cur\"))\n"
      "}}\n"
      "complete -o filenames -F _vorel vorel\n",
      fmt::join(tool.verb_names(), " "), with_nested, cases(tool));
}

std::string fish_quoted(const std::string& text) { return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'"; }

std::string fish_completion(const Declared& tool) {
  std::string text = "# Completion of vorel for fish.\n";
  for (const auto& verb : tool.verbs)
    text +=
        fmt::format("complete -c vorel -f -n __fish_use_subcommand -a {} -d {}\n", verb->name, fish_quoted(verb->purpose));
  for_each_verb(tool, [&](const std::string& name, const Declared& verb) {
    const size_t space = name.find(' ');
    const std::string outer = name.substr(0, space);
    std::string when = "__fish_seen_subcommand_from " + outer;
    if (space != std::string::npos) {
      const std::string inner = name.substr(space + 1);
      text += fmt::format("complete -c vorel -f -n '{}' -a {} -d {}\n", when, inner, fish_quoted(verb.purpose));
      when += "; and __fish_seen_subcommand_from " + inner;
    }
    for (const Argument& argument : verb.arguments) {
      const std::string words = fish_quoted(fmt::format("{}", fmt::join(argument.words, " ")));
      if (argument.kind == Kind::kPositional) {
        if (!argument.words.empty()) text += fmt::format("complete -c vorel -n '{}' -a {}\n", when, words);
        continue;
      }
      const std::string value = argument.kind == Kind::kFlag ? "" : argument.words.empty() ? " -r" : " -x -a " + words;
      text += fmt::format("complete -c vorel -n '{}' -l {}{} -d {}\n", when, argument.name.substr(2), value,
                          fish_quoted(argument.help));
    }
  });
  return text;
}

}  // namespace

std::string manual_page(const Declared& tool, const std::string& version) {
  std::string text =
      fmt::format(".TH VOREL 1 \"\" \"{}\"\n.SH NAME\nvorel \\- {}\n.SH SYNOPSIS\n\\fBvorel\\fR \\fIverb\\fR ...\n",
                  roff(version), roff(tool.purpose));
  text += ".SH DESCRIPTION\n.nf\n" + roff(tool.details) + "\n.fi\n.SH VERBS\n";
  for_each_verb(tool, [&](const std::string& name, const Declared& verb) { text += manual_of(name, verb); });
  return text + ".SH EXAMPLES\n.nf\n" + roff(tool.examples) + "\n.fi\n";
}

const std::vector<std::string>& shells() {
  static const std::vector<std::string> names = {"bash", "zsh", "fish"};
  return names;
}

std::string completion(const Declared& tool, const std::string& shell) {
  return shell == "fish" ? fish_completion(tool) : bash_completion(tool);
}

}  // namespace vorel::cli
