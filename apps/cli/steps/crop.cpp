// The step crop: a piece of a picture, or what is on a page.
#include <fmt/format.h>
#include <memory>

#include "cli/extent.h"
#include "cli/paper_length.h"
#include "cli/step.h"
#include "common/forms.h"
#include "common/page/content.h"
#include "common/problem.h"

namespace vorel::cli {
namespace {

using programs::Picture;

const std::string kAuto = "auto";

struct Options {
  std::string at, size, margin = "5mm";
};

Rect stated_piece(const Picture& picture, const Options& options) {
  const programs::Corner at = parse_position(options.at);
  const Size size = parse_extent(options.size);
  if (at.x < 0 || at.y < 0 || size.width > picture.width() - at.x || size.height > picture.height() - at.y) {
    throw programs::Problem(programs::Fault::kWrongUse,
                            fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside",
                                        picture.width(), picture.height()));
  }
  return {at.x, at.y, size.width, size.height};
}

// A blank page has no content, and stays whole.
void crop_to_content(Page& page, const Options& options) {
  Picture picture = programs::workable(page.picture.lent());
  const auto box = programs::content_box(picture, length_on(picture, options.margin));
  const Rect piece = box.value_or(Rect{0, 0, picture.width(), picture.height()});
  const bool is_whole = piece.width == picture.width() && piece.height == picture.height();
  page.tell(!box       ? std::string("left as it is: the page is blank")
            : is_whole ? std::string("left as it is: the content needs the whole page")
                       : fmt::format("{} to {} x {} pixels at {},{}{}", page.is_trial ? "would be cropped" : "cropped",
                                     piece.width, piece.height, piece.x, piece.y, resolution_note(picture, options.margin)),
            {{"x", int64_t{piece.x}},
             {"y", int64_t{piece.y}},
             {"width", int64_t{piece.width}},
             {"height", int64_t{piece.height}}});
  if (!is_whole) page.picture = programs::cropped(std::move(picture), piece);
}

void crop(Page& page, const Options& options) {
  if (options.at == kAuto) return crop_to_content(page, options);
  const Rect piece = stated_piece(page.picture, options);
  page.picture = programs::cropped(std::move(page.picture), piece);
}

std::string flaw_of(const Options& options) {
  const bool is_auto = options.at == kAuto;
  if (is_auto != options.size.empty())
    return is_auto ? "auto finds the size; leave SIZE out" : "SIZE is missing; give it, or crop auto";
  return "";
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "auto finds what is on a scanned page, without dark borders of the scanner and specks of less than about half a\n"
      "millimetre, and leaves a margin around it. Blank pages stay whole.",
      "  vorel crop page.tif stamp.png 1900,120 400x300\n"
      "  vorel crop scan.tif page.tif auto --margin 10mm");
  const auto options = std::make_shared<Options>();
  arguments.required("CORNER", options->at, "X,Y of the piece: its left upper corner, counted from 0; or auto",
                     Check([](const std::string& text) { return text == kAuto ? "" : position_is_wrong(text); }, {kAuto}));
  arguments.optional("SIZE", options->size, "WIDTHxHEIGHT, the pixels of the piece", extent_is_wrong);
  arguments.option("--margin", options->margin, "SIZE", "around content, in millimetres or pixels (default: 5mm)",
                   length_is_wrong);
  arguments.check_together([options] { return flaw_of(*options); });
  return [options](Page& page) { crop(page, *options); };
}

}  // namespace

const Step kCrop{"crop", "Take a piece of a picture, or cut a scanned page to its content.", declare, true};

}  // namespace vorel::cli
