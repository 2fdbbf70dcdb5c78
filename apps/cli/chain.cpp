#include "cli/chain.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

#include "cli/failure.h"
#include "cli/files.h"
#include "cli/parser.h"
#include "cli/words.h"

namespace vorel::cli {
namespace {

[[noreturn]] void fail(const std::string& place, const std::string& text) {
  throw Failure(ExitCode::kWrongUse, place, text);
}

const Step& step_called(const std::string& name, const std::string& place) {
  const auto* found = std::ranges::find_if(kSteps, [&](const Step* step) { return name == step->name; });
  if (found != std::end(kSteps)) return **found;
  std::vector<std::string> names;
  for (const Step* step : kSteps) names.emplace_back(step->name);
  fail(place, fmt::format("there is no such step{}; see \"vorel --help\" for the list of steps", suggestion(name, names)));
}

// What messages call a step: "step 2, "rotate"".
std::string place_of(const std::string& source, size_t number, const std::string& word) {
  return fmt::format("{}step {}{}", source.empty() ? "" : source + ", ", number, word.empty() ? "" : ", \"" + word + "\"");
}

}  // namespace

void run_step(const Step& step, const Change& change, Page& page) {
  page.reports.push_back({step.name, {}, {}});
  change(page);
  page.limits.check(page.picture.header());
}

void Chain::add(const Step& step, const std::vector<std::string>& words) {
  Parser parser(step.name, step.purpose, Parser::Help::kNever);
  Arguments arguments = parser.arguments();
  Change change = step.declare(arguments);
  parser.parse(words);
  text_ += fmt::format("{}{}", links_.empty() ? "" : " | ", step.name);
  for (const std::string& word : parser.canonical_words()) text_ += " " + quoted(word);
  links_.push_back({&step, std::move(change)});
}

Chain Chain::of_text(const std::string& text, const std::string& source) {
  const auto pieces = pieces_of(text);
  if (!pieces) fail(source.empty() ? "steps" : source, "a quotation does not end; close it, or write \\' for an apostrophe");
  Chain chain;
  std::vector<std::string> words;
  bool awaits_step = false;  // behind a bar
  const auto end_step = [&] {
    if (words.empty()) return;
    const std::string place = place_of(source, chain.size() + 1, words.front());
    const Step& step = step_called(words.front(), place);
    try {
      chain.add(step, {words.begin() + 1, words.end()});
    } catch (const WrongUse& error) {
      fail(place, fmt::format("{}; see \"vorel help {}\"", error.what(), step.name));
    }
    words.clear();
    awaits_step = false;
  };
  const auto fail_for_emptiness = [&] {
    fail(place_of(source, chain.size() + 1, ""), "there is nothing beside the bar; write a step or leave the bar out");
  };
  for (const Piece& piece : *pieces) {
    if (piece.kind == Piece::Kind::kWord) {
      words.push_back(piece.text);
      continue;
    }
    end_step();
    if (piece.kind != Piece::Kind::kBar) continue;
    if (awaits_step || chain.size() == 0) fail_for_emptiness();
    awaits_step = true;
  }
  end_step();
  if (awaits_step) fail_for_emptiness();
  if (chain.size() == 0)
    fail(source.empty() ? "steps" : source, "there is no step; write some like \"clean 60 | scale 50%\"");
  return chain;
}

Chain Chain::of_step(const std::string& name, const std::vector<std::string>& words) {
  Chain chain;
  chain.add(step_called(name, "steps"), words);
  return chain;
}

Chain Chain::parse(const std::string& text) { return of_text(text, ""); }

Chain Chain::from_file(const std::string& name) {
  const auto text = contents_of(name);
  if (!text) throw Failure(ExitCode::kInput, name, "the file of steps cannot be read; check its name");
  return of_text(text->starts_with("\xEF\xBB\xBF") ? text->substr(3) : *text, name);
}

void Chain::apply(Page& page) const {
  for (size_t i = 0; i < links_.size() && !page.is_dropped; ++i) {
    const Link& link = links_[i];
    try {
      run_step(*link.step, link.change, page);
    } catch (const programs::Problem& problem) {
      if (links_.size() == 1) throw;
      throw programs::Problem(problem.fault(), place_of("", i + 1, link.step->name) + ": " + problem.what());
    }
  }
}

}  // namespace vorel::cli
