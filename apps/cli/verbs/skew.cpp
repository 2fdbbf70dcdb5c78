// vorel skew: shears a picture.
#include "cli/pixels.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Options {
  std::string direction;
  int pixels = 0;
  bool white = false;
};

Dib sheared(Picture& picture, const Options& options) {
  prepare(picture, Reach::kMovesPixels);
  return on_background(picture, options.white, [&](Picture& source) {
    clear_padding(source);  // the library moves whole bytes
    int corners[8];
    return checked(source,
                   SkewDIB(source.dib.get(), options.direction == "horizontal" ? 1 : 0, options.pixels, nullptr, corners));
  });
}

Action declare(CLI::App& app) {
  app.footer(
      "horizontal moves rows right: the upper ones most if PIXELS is positive, else the lower ones. vertical moves\n"
      "columns up: the right ones most if PIXELS is positive, else the left ones. The picture grows by as much. IN may\n"
      "have 1, 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel skew page.tif slanted.tif horizontal 40\n"
      "  vorel skew page.tif slanted.tif vertical -25 --white");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(app, [options](Picture& picture) { return sheared(picture, *options); });
  declare_argument(app, "DIRECTION", options->direction, "horizontal or vertical")
      ->check(CLI::IsMember({"horizontal", "vertical"}));
  declare_argument(app, "PIXELS", options->pixels, "how far the edge that moves most does");
  app.add_flag("--white", options->white, kWhiteHelp);
  return action;
}

}  // namespace

const Verb kSkew{"skew", "Shear a picture into a parallelogram.", declare};

}  // namespace vorel::cli
