// The step mirror: left and right or top and bottom change places.
#include <memory>

#include "cli/step.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

using programs::Picture;

Change declare(Arguments& arguments) {
  arguments.explain("",
                    "  vorel mirror slide.bmp right-way-round.bmp horizontal\n"
                    "  vorel mirror picture.bmp picture.bmp vertical --overwrite");
  const auto direction = std::make_shared<std::string>();
  arguments.required("DIRECTION", *direction, "horizontal exchanges left and right, vertical top and bottom",
                     one_of({"horizontal", "vertical"}));
  return changes_picture([direction](Picture picture) {
    return *direction == "vertical" ? programs::mirrored_top_bottom(std::move(picture))
                                    : programs::mirrored_left_right(std::move(picture));
  });
}

}  // namespace

const Step kMirror{"mirror", "Exchange left and right, or top and bottom, of a picture.", declare};

}  // namespace vorel::cli
