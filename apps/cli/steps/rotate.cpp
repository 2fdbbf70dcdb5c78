// The step rotate: turns by any angle.
#include <cmath>
#include <memory>

#include "cli/backgrounds.h"
#include "cli/step.h"
#include "common/page/turn.h"

namespace vorel::cli {
namespace {

using programs::Picture;

struct Options {
  double degrees = 0;
  bool white = false;
};

// Whole degrees are the library's. They pick pixels; fractions mix them.
Picture turned(Picture picture, const Options& options) {
  const programs::Background background = background_of(options.white);
  const double in_turn = std::fmod(options.degrees, 360);
  if (in_turn == std::trunc(in_turn)) return programs::turned(std::move(picture), static_cast<int>(in_turn), background);
  return programs::turned_by(std::move(picture), in_turn, background);
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "Quarter turns keep every pixel and swap the two resolutions as well. Other whole degrees pick the nearest pixel,\n"
      "fractions mix four pixels where the colours are greys or have 24 bits. The picture becomes large enough for its\n"
      "corners.",
      "  vorel rotate scan.bmp upright.bmp 90\n"
      "  vorel rotate scan.tif scan.tif 180 --overwrite\n"
      "  vorel rotate crooked.tif straight.tif -1.25 --white\n"
      "  vorel rotate - - 270 < scan.bmp > upright.bmp");
  const auto options = std::make_shared<Options>();
  arguments.required("DEGREES", options->degrees, "clockwise, such as 90 or 1.25; counter-clockwise if negative");
  declare_background(arguments, options->white);
  return changes_picture([options](Picture picture) { return turned(std::move(picture), *options); });
}

}  // namespace

const Step kRotate{"rotate", "Turn a picture clockwise by any angle.", declare};

}  // namespace vorel::cli
