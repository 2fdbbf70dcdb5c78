#include "cli/page_work.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/extent.h"
#include "cli/progress.h"
#include "cli/report.h"

namespace vorel::cli {

void declare_input(Arguments& arguments, std::string& input) {
  arguments.required("IN", input, "the picture file to read; - is standard input");
}

void declare_output(Arguments& arguments, std::string& output) {
  arguments.required("OUT", output, "the picture file to write; - is standard output");
}

void declare_dpi(Arguments& arguments, std::string& dpi) {
  arguments.option("--dpi", dpi, "N|XxY", "resolution that OUT states, the pixels staying (default: that of IN)",
                   dpi_is_wrong);
}

void PageWork::declare_files(Arguments& arguments) {
  declare_input(arguments, input_);
  declare_output(arguments, output_);
}

void PageWork::declare_dpi(Arguments& arguments) { cli::declare_dpi(arguments, dpi_); }

void PageWork::declare_options(Arguments& arguments, Reports reports) {
  if (reports == Reports::kOnRequest) {
    arguments.flag("--dry-run", is_trial_, "tell what would be done, and write nothing");
    arguments.flag("--json", as_json_, "tell what is done as a JSON array with an object for each page (default: text)");
  }
  declare_pages(arguments, pages_);
  saving_.declare(arguments);
}

ExitCode PageWork::run(const Change& change, const Streams& streams) const {
  Target target(output_, saving_, streams);
  const Source source(input_, pages_, streams);
  if (!is_trial_) target.open(source.size(), {&source});
  std::vector<Page> told;
  const auto work_on_all = [&](const Target::Put& put) {
    Progress progress(streams, "page", static_cast<int>(source.size()));
    for (size_t i = 0; i < source.size(); ++i) {
      progress.step();
      Page page = source.load(i);
      page.is_trial = is_trial_;
      about(page.label, [&] {
        change(page);
        if (!dpi_.empty()) state_dpi(page.picture, dpi_);
      });
      put(page);
      page.picture = {};
      told.push_back(std::move(page));
    }
  };
  if (is_trial_)
    work_on_all([](Page&) {});
  else
    target.write(work_on_all);
  if (!target.is_standard_output() || is_trial_) give_report(told, streams);
  return ExitCode::kDone;
}

void PageWork::give_report(const std::vector<Page>& told, const Streams& streams) const {
  auto list = nlohmann::ordered_json::array();
  for (const Page& page : told) {
    if (as_json_)
      list.push_back(json_of(page));
    else
      streams.output << sentences_of(page);
  }
  if (as_json_) streams.output << dumped(list) << '\n';
}

}  // namespace vorel::cli
