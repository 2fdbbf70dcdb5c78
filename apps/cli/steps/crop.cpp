// The step crop: a piece of a picture.
#include <fmt/format.h>
#include <memory>

#include "cli/extent.h"
#include "cli/step.h"
#include "common/problem.h"

namespace vorel::cli {
namespace {

using programs::Picture;

struct Options {
  std::string at, size;
};

Picture cropped(Picture picture, const Options& options) {
  const programs::Corner at = parse_position(options.at);
  const Size size = parse_extent(options.size);
  if (at.x < 0 || at.y < 0 || size.width > picture.width() - at.x || size.height > picture.height() - at.y) {
    throw programs::Problem(programs::Fault::kWrongUse,
                            fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside",
                                        picture.width(), picture.height()));
  }
  return programs::cropped(std::move(picture), {at.x, at.y, size.width, size.height});
}

Change declare(Arguments& arguments) {
  arguments.explain("", "  vorel crop page.tif stamp.png 1900,120 400x300");
  const auto options = std::make_shared<Options>();
  arguments.required("CORNER", options->at, "X,Y of the piece: its left upper corner, counted from 0", position_is_wrong);
  arguments.required("SIZE", options->size, "WIDTHxHEIGHT, the pixels of the piece", extent_is_wrong);
  return changes_picture([options](Picture picture) { return cropped(std::move(picture), *options); });
}

}  // namespace

const Step kCrop{"crop", "Take a rectangular piece of a picture.", declare};

}  // namespace vorel::cli
