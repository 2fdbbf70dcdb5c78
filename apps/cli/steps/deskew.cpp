// The step deskew: makes a slanted page straight.
#include <fmt/format.h>
#include <memory>

#include "cli/backgrounds.h"
#include "cli/step.h"
#include "common/forms.h"
#include "common/page/slant.h"
#include "common/page/turn.h"

namespace vorel::cli {
namespace {

using programs::Slant;

struct Options {
  double confidence = 50;  // percent
  bool black = false, same_size = false;
};

std::string verdict(const Slant& slant, bool is_sure, bool is_turned, bool is_trial) {
  if (!is_sure) return fmt::format("left as it is: no slant is sure (confidence {:.0f} %)", slant.confidence * 100);
  const std::string found = fmt::format("the slant is {:.2f} degrees", slant.degrees);
  if (!is_turned) return "left as it is: " + found;
  return fmt::format("{} by {:.2f} degrees", is_trial ? "would be turned" : "turned", -slant.degrees);
}

void deskew(Page& page, const Options& options) {
  programs::Picture picture = programs::workable(page.picture.lent());
  const Slant slant = programs::find_slant(picture);
  const bool is_sure = slant.confidence * 100 >= options.confidence;
  const bool is_turned = is_sure && slant.is_worth_turning();
  page.tell(verdict(slant, is_sure, is_turned, page.is_trial), {{"slant", slant.degrees},
                                                                {"uncertainty", slant.uncertainty},
                                                                {"confidence", slant.confidence},
                                                                {"turned", is_turned ? -slant.degrees : 0.0}});
  if (!is_turned) return;
  page.picture = programs::turned_by(std::move(picture), -slant.degrees, background_of(!options.black),
                                     options.same_size ? programs::Canvas::kSame : programs::Canvas::kWhole);
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "The slant of lines of text is found within 15 degrees either way, for pages that lie on their side too, which stay\n"
      "so. Pages without lines of text, and those that are straight to a twentieth of a degree, are left as they are.\n"
      "Black and white stays black and white; greys and true colours are interpolated.",
      "  vorel deskew scan.tif straight.tif\n"
      "  vorel deskew scan.tif straight.tif --dry-run --json\n"
      "  vorel run scan.tif page.tif \"deskew | crop auto\"");
  const auto options = std::make_shared<Options>();
  arguments.option("--confidence", options->confidence, "PERCENT",
                   "leave pages alone whose slant is less sure (default: 50)", {0, 100});
  arguments.flag("--same-size", options->same_size, "keep the size, cutting off corners (default: grow, so that all stays)");
  arguments.flag("--black", options->black, "fill what the picture leaves free with black (default: white)");
  return [options](Page& page) { deskew(page, *options); };
}

}  // namespace

const Step kDeskew{"deskew", "Make slanted pages of text straight.", declare, true};

}  // namespace vorel::cli
