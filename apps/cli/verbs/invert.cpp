// vorel invert: the negative of a picture.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

Action declare(Arguments& arguments) {
  arguments.explain(
      "Up to 8 bits per pixel the colour table is complemented and the pixels stay, else the pixels are complemented, but\n"
      "for the bits that are no colour. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel invert negative.bmp positive.bmp\n"
      "  vorel invert drawing.bmp drawing.bmp --overwrite");
  return declare_transform(arguments, programs::negative);
}

}  // namespace

const Verb kInvert{"invert", "Make the negative of a picture: every colour becomes its complement.", declare};

}  // namespace vorel::cli
