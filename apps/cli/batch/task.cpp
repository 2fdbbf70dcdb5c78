#include "cli/batch/task.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <istream>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "cli/extent.h"
#include "cli/page_work.h"
#include "cli/parser.h"
#include "cli/report.h"

namespace vorel::cli::batch {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

// "50M": a whole number, of thousands and so on with a letter.
std::optional<uint64_t> amount(const std::string& text) {
  uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || end - rest > 1) return std::nullopt;
  const uint64_t unit = rest == end ? 1 : *rest == 'k' ? 1'000 : *rest == 'M' ? 1'000'000 : *rest == 'G' ? 1'000'000'000 : 0;
  if (unit == 0 || value == 0 || value > std::numeric_limits<uint64_t>::max() / unit) return std::nullopt;
  return value * unit;
}

std::string amount_is_wrong(const std::string& text) {
  return amount(text) ? "" : fmt::format("\"{}\" is no amount; write a whole number, with k, M or G if you like", text);
}

Json size_of(const programs::Picture& picture) {
  return {{"width", picture.width()}, {"height", picture.height()}, {"bits", picture.depth()}};
}

// The limit of memory also makes work fail that does not tell why.
std::string memory_hint(const Settings& settings, ExitCode code, const std::string& text) {
  const bool may_lack_memory = code == ExitCode::kLimit || code == ExitCode::kOutput;
  if (settings.most_memory.empty() || !may_lack_memory || text.find("--max-memory") != std::string::npos) return "";
  return fmt::format(" (--max-memory allows {} bytes, which may be too little)", settings.limits().bytes);
}

}  // namespace

void Settings::declare(Arguments& arguments) {
  arguments.option("--name", name, "TEMPLATE", fmt::format("names of outputs below DIR (default: {})", kUsualName),
                   Naming::wrong);
  declare_pages(arguments, pages);
  declare_dpi(arguments, dpi);
  saving.declare(arguments, {.numbering = false});
  arguments.option("--max-pixels", most_pixels, "N", "refuse pages of more pixels, such as 200M (default: no limit)",
                   amount_is_wrong);
  arguments.option("--max-memory", most_memory, "N",
                   "refuse pages that need more bytes, such as 2G, and let no worker use more (default: no limit)",
                   amount_is_wrong);
}

std::vector<std::string> Settings::own_words(std::vector<std::string> options) {
  Parser parser("batch", "", Parser::Help::kNever);
  Arguments arguments = parser.arguments();
  Settings settings;
  settings.declare(arguments);
  std::erase_if(options, [&](const std::string& option) {
    const std::string name = option.substr(0, option.find('='));
    return std::ranges::find(parser.declared().arguments, name, &Argument::name) == parser.declared().arguments.end();
  });
  return options;
}

Limits Settings::limits() const {
  const Limits none;
  return {amount(most_pixels).value_or(none.pixels), amount(most_memory).value_or(none.bytes)};
}

Task::Task(Chain chain, Settings settings, Places places)
    : chain_(std::move(chain)),
      settings_(std::move(settings)),
      naming_(settings_.name, settings_.saving.to),
      places_(std::move(places)) {}

// One input on its way. What it has done so far counts also when it fails.
class Task::Work {
 public:
  Work(const Task& task, const InputFile& input, bool may_replace, Outcome& outcome)
      : task_(task), input_(input), saving_(task.settings_.saving), outcome_(outcome) {
    saving_.overwrite = saving_.overwrite || may_replace;
  }

  void run() {
    const Source source(name_of(input_.path), task_.settings_.pages, streams_);
    if (task_.naming_.has_page())
      run_with_file_per_page(source);
    else
      run_with_one_file(source);
  }

  ~Work() { outcome_.pages = pages_.dump(-1, ' ', false, Json::error_handler_t::replace); }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

 private:
  std::string name_for(size_t page, const Source& source) const {
    return task_.naming_.name_for(input_, page, source.size());
  }

  Target target_called(const std::string& name) const {
    const fs::path path = task_.places_.output / path_of(name);
    std::error_code ignored;  // the target tells why it cannot be made
    fs::create_directories(path.parent_path(), ignored);
    return {name_of(path), saving_, streams_, task_.places_.scratch};
  }

  void put(const Source& source, size_t index, const Target::Put& put) {
    Page page = source.load(index, task_.settings_.limits());
    Json from = size_of(page.picture);
    about(page.label, [&] {
      task_.chain_.apply(page);
      if (!task_.settings_.dpi.empty()) state_dpi(page.picture, task_.settings_.dpi);
    });
    Json to = page.is_dropped ? Json() : size_of(page.picture);
    put(page);
    page.picture = {};
    note(page, std::move(from), std::move(to));
  }

  void note(const Page& page, Json from, Json to) {
    Json facts = json_of(page);
    facts["from"] = std::move(from);
    facts["to"] = std::move(to);
    pages_.push_back(std::move(facts));
    ++outcome_.page_count;
    kept_ = kept_ || !page.is_dropped;
    for (const std::string& loss : page.losses)
      if (std::ranges::find(outcome_.losses, loss) == outcome_.losses.end()) outcome_.losses.push_back(loss);
  }

  void note_output(const std::string& name) {
    std::error_code ignored;
    if (kept_) outcome_.outputs.push_back({name, fs::file_size(task_.places_.output / path_of(name), ignored)});
  }

  void run_with_one_file(const Source& source) {
    const std::string name = name_for(1, source);
    Target target = target_called(name);
    target.open(source.size(), {&source});
    target.write([&](const Target::Put& target_put) {
      for (size_t i = 0; i < source.size(); ++i) put(source, i, target_put);
    });
    note_output(name);
  }

  void run_with_file_per_page(const Source& source) {
    for (size_t i = 0; i < source.size(); ++i) target_called(name_for(i + 1, source)).open(1, {&source});
    for (size_t i = 0; i < source.size(); ++i) {
      const std::string name = name_for(i + 1, source);
      Target target = target_called(name);
      target.open(1, {});
      kept_ = false;
      target.write([&](const Target::Put& target_put) { put(source, i, target_put); });
      note_output(name);
    }
  }

  const Task& task_;
  const InputFile& input_;
  SavingOptions saving_;
  Outcome& outcome_;
  Json pages_ = Json::array();
  bool kept_ = false;  // a page went to the output
  std::istringstream nothing_;
  mutable std::ostringstream notes_;  // all of them are in the outcome, too
  Streams streams_{nothing_, notes_, notes_};
};

Outcome Task::work_on(const InputFile& input, bool may_replace) const {
  Outcome outcome;
  const auto fail = [&](ExitCode code, const std::string& text) {
    outcome.code = code;
    outcome.message = text + memory_hint(settings_, code, text);
  };
  try {
    Work(*this, input, may_replace, outcome).run();
  } catch (const Failure& failure) {
    const std::string text = failure.what();  // may be about an output
    fail(failure.code(), text.starts_with(input.shown) ? text : input.shown + ": " + text);
  } catch (const programs::Problem& problem) {
    fail(code_for(problem.fault()), input.shown + ": " + problem.what());
  } catch (const std::bad_alloc&) {
    fail(ExitCode::kLimit, input.shown + ": there is not enough memory; use fewer --jobs, or a higher --max-memory");
  } catch (const std::exception& error) {
    fail(ExitCode::kLimit,
         fmt::format("{}: the file or its output is at a limit ({}); check both names", input.shown, error.what()));
  }
  return outcome;
}

}  // namespace vorel::cli::batch
