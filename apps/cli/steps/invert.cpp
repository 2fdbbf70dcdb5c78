// The step invert: the negative of a picture.
#include "cli/step.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

Change declare(Arguments& arguments) {
  arguments.explain(
      "Up to 8 bits per pixel the colour table is complemented and the pixels stay. Above, the pixels are complemented,\n"
      "except for bits that are no colour.",
      "  vorel invert negative.bmp positive.bmp\n"
      "  vorel invert drawing.bmp drawing.bmp --overwrite");
  return changes_picture(programs::negative);
}

}  // namespace

const Step kInvert{"invert", "Make the negative of a picture: every colour becomes its complement.", declare};

}  // namespace vorel::cli
