// vorel mirror: left and right or top and bottom change places.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Picture;

Action declare(Arguments& arguments) {
  arguments.explain(
      "OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel mirror slide.bmp right-way-round.bmp horizontal\n"
      "  vorel mirror picture.bmp picture.bmp vertical --overwrite");
  const auto direction = std::make_shared<std::string>();
  const Action action = declare_transform(arguments, [direction](Picture picture) {
    return *direction == "vertical" ? programs::mirrored_top_bottom(std::move(picture))
                                    : programs::mirrored_left_right(std::move(picture));
  });
  arguments.required("DIRECTION", *direction, "horizontal exchanges left and right, vertical top and bottom",
                     one_of({"horizontal", "vertical"}));
  return action;
}

}  // namespace

const Verb kMirror{"mirror", "Exchange left and right, or top and bottom, of a picture.", declare};

}  // namespace vorel::cli
