// The step rotate: turns by any angle.
#include "cli/backgrounds.h"
#include "cli/step.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

using programs::Picture;

struct Options {
  int degrees = 0;
  bool white = false;
};

Change declare(Arguments& arguments) {
  arguments.explain(
      "Quarter turns keep every pixel and swap the two resolutions as well. Other turns pick the nearest pixel and make\n"
      "the picture large enough for its corners.",
      "  vorel rotate scan.bmp upright.bmp 90\n"
      "  vorel rotate scan.tif scan.tif 180 --overwrite\n"
      "  vorel rotate crooked.tif straight.tif -2 --white\n"
      "  vorel rotate - - 270 < scan.bmp > upright.bmp");
  const auto options = std::make_shared<Options>();
  arguments.required("DEGREES", options->degrees, "clockwise; counter-clockwise if negative");
  declare_background(arguments, options->white);
  return changes_picture([options](Picture picture) {
    return programs::turned(std::move(picture), options->degrees, background_of(options->white));
  });
}

}  // namespace

const Step kRotate{"rotate", "Turn a picture clockwise by a whole number of degrees.", declare};

}  // namespace vorel::cli
