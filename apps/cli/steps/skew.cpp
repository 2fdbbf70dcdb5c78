// The step skew: shears a picture.
#include <memory>

#include "cli/backgrounds.h"
#include "cli/step.h"

namespace vorel::cli {
namespace {

using programs::Picture;
using programs::Shear;

struct Options {
  std::string direction;
  int pixels = 0;
  bool white = false;
};

Change declare(Arguments& arguments) {
  arguments.explain(
      "horizontal moves rows right: the upper ones most if PIXELS is positive, else the lower ones. vertical moves\n"
      "columns up: the right ones most if PIXELS is positive, else the left ones. The picture grows by as much.",
      "  vorel skew page.tif slanted.tif horizontal 40\n"
      "  vorel skew page.tif slanted.tif vertical -25 --white");
  const auto options = std::make_shared<Options>();
  arguments.required("DIRECTION", options->direction, "horizontal or vertical", one_of({"horizontal", "vertical"}));
  arguments.required("PIXELS", options->pixels, "how far the outermost row or column moves");
  declare_background(arguments, options->white);
  return changes_picture([options](Picture picture) {
    return programs::skewed(std::move(picture), options->direction == "horizontal" ? Shear::kRows : Shear::kColumns,
                            options->pixels, background_of(options->white));
  });
}

}  // namespace

const Step kSkew{"skew", "Shear a picture into a parallelogram.", declare};

}  // namespace vorel::cli
