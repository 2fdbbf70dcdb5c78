// The steps gray and expand: fewer and more colours than a picture has.
#include <memory>

#include "cli/step.h"
#include "common/forms.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

using programs::GrayWeights;
using programs::Picture;

struct Options {
  bool weighted = false;
  int smooth = 0;
};

Change declare_gray(Arguments& arguments) {
  arguments.explain("OUT has 8 bits per pixel, or 4 if IN has.",
                    "  vorel gray photo.jpg grey.png --weighted\n"
                    "  vorel gray fax.tif smooth.png --smooth 2");
  const auto options = std::make_shared<Options>();
  arguments.flag("--weighted", options->weighted, "weigh green most and blue least (default: all alike)");
  arguments.option("--smooth", options->smooth, "N", "black and white: mix 3 x 3 pixels (1) or 5 x 5 (2) (default: 0, none)",
                   {0, 2});
  return changes_picture([options](Picture picture) {
    return programs::gray(std::move(picture), options->weighted ? GrayWeights::kByColor : GrayWeights::kEqual,
                          options->smooth);
  });
}

Change declare_expand(Arguments& arguments) {
  arguments.explain("", "  vorel expand chart.gif chart.jpg");
  return changes_picture(programs::in_true_color);
}

}  // namespace

const Step kGray{"gray", "Make a grey picture of colours, or of black and white.", declare_gray};
const Step kExpand{"expand", "Make a picture of 24 bits per pixel.", declare_expand};

}  // namespace vorel::cli
