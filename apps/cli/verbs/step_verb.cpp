#include "cli/verbs/step_verb.h"

#include "cli/page_work.h"

namespace vorel::cli {

Action declare_step_verb(Arguments& arguments, const Step& step) {
  const auto work = std::make_shared<PageWork>();
  work->declare_files(arguments);
  const Change change = step.declare(arguments);
  work->declare_options(arguments, step.reports ? PageWork::Reports::kOnRequest : PageWork::Reports::kNever);
  return [work, change, &step](const Streams& streams) {
    return work->run([&](Page& page) { run_step(step, change, page); }, streams);
  };
}

}  // namespace vorel::cli
