// vorel mirror: left and right or top and bottom change places.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

Dib mirrored(Picture& picture, const std::string& direction) {
  const bool is_vertical = direction == "vertical";
  prepare(picture, is_vertical ? Reach::kMovesRows : Reach::kMovesPixels);
  return checked(picture, is_vertical ? FlipDIBVertical(picture.dib.get()) : FlipDIBHorizontal(picture.dib.get()));
}

Action declare(CLI::App& app) {
  app.footer(
      "IN may have 1, 4, 8 or 24 bits per pixel, and for vertical also 16 or 32. OUT has the format that its ending\n"
      "names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel mirror slide.bmp right-way-round.bmp horizontal\n"
      "  vorel mirror picture.bmp picture.bmp vertical --overwrite");
  const auto direction = std::make_shared<std::string>();
  const Action action = declare_transform(app, [direction](Picture& picture) { return mirrored(picture, *direction); });
  declare_argument(app, "DIRECTION", *direction, "horizontal exchanges left and right, vertical top and bottom")
      ->check(CLI::IsMember({"horizontal", "vertical"}));
  return action;
}

}  // namespace

const Verb kMirror{"mirror", "Exchange left and right, or top and bottom, of a picture.", declare};

}  // namespace vorel::cli
