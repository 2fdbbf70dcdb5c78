// The step blank: finds pages with nothing on them.
#include <fmt/format.h>
#include <memory>

#include "cli/step.h"
#include "common/forms.h"
#include "common/page/content.h"

namespace vorel::cli {
namespace {

struct Options {
  double most = 0.02, margin = 3;  // percent
  bool drop = false;
};

void judge(Page& page, const Options& options) {
  const programs::Picture picture = programs::workable(page.picture.lent());
  const double percent = programs::ink_percent(picture, options.margin / 100);
  const bool is_blank = percent <= options.most;
  const char* const fate = !is_blank || !options.drop ? "" : page.is_trial ? ", would be left out" : ", left out";
  page.tell(fmt::format("{} ({:.3f} % ink){}", is_blank ? "blank" : "not blank", percent, fate),
            {{"blank", is_blank}, {"ink_percent", percent}});
  page.is_dropped = is_blank && options.drop;
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "The ink is counted inside the margins, without dark borders of the scanner and specks of less than about half a\n"
      "millimetre. A line of small text is about 0.1 % of a page. A page is only judged, unless --drop is given.",
      "  vorel blank scans.tif out.tif --dry-run --json\n"
      "  vorel run scans.tif pages.tif \"blank --drop | deskew\"");
  const auto options = std::make_shared<Options>();
  arguments.option("--most", options->most, "PERCENT", "the most ink that a blank page has (default: 0.02)", {0, 100});
  arguments.option("--margin", options->margin, "PERCENT",
                   "of width and height that is disregarded on each side (default: 3)", {0, 45});
  arguments.flag("--drop", options->drop, "leave blank pages out");
  return [options](Page& page) { judge(page, *options); };
}

}  // namespace

const Step kBlank{"blank", "Tell whether pages are blank, by their share of ink.", declare, true};

}  // namespace vorel::cli
