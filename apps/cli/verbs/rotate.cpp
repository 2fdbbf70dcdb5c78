// vorel rotate: turns by any whole number of degrees.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Background;
using programs::Picture;

struct Options {
  int degrees = 0;
  bool white = false;
};

Action declare(Arguments& arguments) {
  arguments.explain(
      "Quarter turns keep every pixel and swap the two resolutions as well. Other turns pick the nearest pixel and make\n"
      "the picture large enough for its corners. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel rotate scan.bmp upright.bmp 90\n"
      "  vorel rotate scan.tif scan.tif 180 --overwrite\n"
      "  vorel rotate crooked.tif straight.tif -2 --white\n"
      "  vorel rotate - - 270 < scan.bmp > upright.bmp");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(arguments, [options](Picture picture) {
    return programs::turned(std::move(picture), options->degrees, options->white ? Background::kWhite : Background::kBlack);
  });
  arguments.required("DEGREES", options->degrees, "clockwise; counter-clockwise if negative");
  arguments.flag("--white", options->white, kWhiteHelp);
  return action;
}

}  // namespace

const Verb kRotate{"rotate", "Turn a picture clockwise by a whole number of degrees.", declare};

}  // namespace vorel::cli
