// vorel run: several steps on the pages of a file.
#include "cli/chain.h"
#include "cli/page_work.h"

namespace vorel::cli {
namespace {

struct Values {
  PageWork work;
  std::string steps, file;
};

Action declare(Arguments& arguments) {
  const auto values = std::make_shared<Values>();
  values->work.declare_files(arguments);
  arguments.optional("STEPS", values->steps, "what to do with each page: verbs with their options, with | between them");
  arguments.option("--steps", values->file, "FILE", "read STEPS from a file: a step per line, # begins a comment");
  values->work.declare_dpi(arguments);
  values->work.declare_options(arguments, PageWork::Reports::kOnRequest);
  arguments.check_together([values] {
    return values->steps.empty() == values->file.empty() ? "it takes either STEPS or --steps; give one of them" : "";
  });
  arguments.explain(
      "A step is one of the verbs that change pages, without IN, OUT and the options for files. Each page is loaded once,\n"
      "goes through all steps in memory and is saved once. Quotes work as in a shell.",
      "  vorel run scan.tif page.tif \"clean 60 | rotate -1.5 --white | scale 50% | dither\"\n"
      "  vorel run scan.tif page.tif --steps job.vorel\n"
      "  vorel run - - \"gray | scale 50%\" --to png < scan.tif > small.png");
  return [values](const Streams& streams) {
    const Chain chain = values->file.empty() ? Chain::parse(values->steps) : Chain::from_file(values->file);
    return values->work.run([&](Page& page) { chain.apply(page); }, streams);
  };
}

}  // namespace

const Verb kRun{"run", "Do several steps with each page of a file.", declare};

}  // namespace vorel::cli
