// vorel skew: shears a picture.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Background;
using programs::Picture;
using programs::Shear;

struct Options {
  std::string direction;
  int pixels = 0;
  bool white = false;
};

Action declare(Arguments& arguments) {
  arguments.explain(
      "horizontal moves rows right: the upper ones most if PIXELS is positive, else the lower ones. vertical moves\n"
      "columns up: the right ones most if PIXELS is positive, else the left ones. The picture grows by as much. OUT has\n"
      "the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel skew page.tif slanted.tif horizontal 40\n"
      "  vorel skew page.tif slanted.tif vertical -25 --white");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(arguments, [options](Picture picture) {
    return programs::skewed(std::move(picture), options->direction == "horizontal" ? Shear::kRows : Shear::kColumns,
                            options->pixels, options->white ? Background::kWhite : Background::kBlack);
  });
  arguments.required("DIRECTION", options->direction, "horizontal or vertical", one_of({"horizontal", "vertical"}));
  arguments.required("PIXELS", options->pixels, "how far the edge that moves most does");
  arguments.flag("--white", options->white, kWhiteHelp);
  return action;
}

}  // namespace

const Verb kSkew{"skew", "Shear a picture into a parallelogram.", declare};

}  // namespace vorel::cli
