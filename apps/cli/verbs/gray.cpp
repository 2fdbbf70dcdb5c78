// vorel gray and vorel expand: fewer and more colours than a picture has.
#include "cli/verbs/transform.h"
#include "common/forms.h"

namespace vorel::cli {
namespace {

using programs::GrayWeights;
using programs::Picture;

struct Options {
  bool weighted = false;
  int smooth = 0;
};

Action declare_gray(Arguments& arguments) {
  arguments.explain(
      "OUT has 8 bits per pixel, or 4 if IN has, and the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel gray photo.jpg grey.png --weighted\n"
      "  vorel gray fax.tif smooth.png --smooth 2");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(arguments, [options](Picture picture) {
    return programs::gray(std::move(picture), options->weighted ? GrayWeights::kByColor : GrayWeights::kEqual,
                          options->smooth);
  });
  arguments.flag("--weighted", options->weighted, "weigh green most and blue least (default: all alike)");
  arguments.option("--smooth", options->smooth, "N", "black and white: mix 3 x 3 pixels (1) or 5 x 5 (2) (default: 0, none)",
                   {0, 2});
  return action;
}

Action declare_expand(Arguments& arguments) {
  arguments.explain(
      "OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Example:\n"
      "  vorel expand chart.gif chart.jpg");
  return declare_transform(arguments, programs::in_true_color);
}

}  // namespace

const Verb kGray{"gray", "Make a grey picture of colours, or of black and white.", declare_gray};
const Verb kExpand{"expand", "Make a picture of 24 bits per pixel.", declare_expand};

}  // namespace vorel::cli
