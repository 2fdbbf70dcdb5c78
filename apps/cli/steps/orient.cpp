// The step orient: turns pages the right way up.
#include <fmt/format.h>
#include <memory>

#include "cli/step.h"
#include "common/forms.h"
#include "common/operations.h"
#include "common/page/orientation.h"

namespace vorel::cli {
namespace {

using programs::Orientation;

std::string verdict(const Orientation& found, bool is_sure, bool is_trial) {
  if (!is_sure)
    return fmt::format("left as it is: no orientation is sure (confidence {:.0f} %, {} lines)", found.confidence * 100,
                       found.lines);
  if (found.turn == 0) return "left as it is: it is upright";
  return fmt::format("{} by {} degrees", is_trial ? "would be turned" : "turned", found.turn);
}

void orient(Page& page, double least_percent) {
  programs::Picture picture = programs::workable(page.picture.lent());
  const Orientation found = programs::find_orientation(picture);
  const bool is_sure = found.confidence * 100 >= least_percent;
  const int turn = is_sure ? found.turn : 0;
  page.tell(verdict(found, is_sure, page.is_trial),
            {{"turned", int64_t{turn}}, {"confidence", found.confidence}, {"lines", int64_t{found.lines}}});
  if (turn != 0) page.picture = programs::turned(std::move(picture), turn);
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "Lines of Latin text are judged by their letters: more rise above the small ones than reach below the line. Pages\n"
      "are turned by quarters, which keeps every pixel. Those of fewer than ten such lines, of capitals, numbers or\n"
      "pictures are left as they are.",
      "  vorel orient scan.tif upright.tif\n"
      "  vorel run scans.tif pages.tif \"orient | deskew\"");
  const auto least = std::make_shared<double>(50);
  arguments.option("--confidence", *least, "PERCENT", "leave pages alone whose orientation is less sure (default: 50)",
                   {0, 100});
  return [least](Page& page) { orient(page, *least); };
}

}  // namespace

const Step kOrient{"orient", "Turn pages of text the right way up, by quarters.", declare, true};

}  // namespace vorel::cli
