// vorel rotate: turns by any whole number of degrees.
#include "cli/pixels.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

constexpr int kFullTurn = 360;

// RotateDIB270 shifts the picture by one column, and programs rely on that. Two other turns together are exact.
Dib turned_by_quarters(Picture& picture, int degrees) {
  if (degrees == 0) return std::move(picture.dib);
  if (degrees == 180) return checked(picture, RotateDIB180(picture.dib.get()));
  Dib quarter = checked(picture, RotateDIB90(picture.dib.get()));
  return degrees == 90 ? std::move(quarter) : checked(picture, RotateDIB180(quarter.get()));
}

Dib turned_by_any(Picture& picture, int degrees) {
  constexpr int kUncountedSize = 501;
  int status = 0;
  HGLOBAL turned = RotateDIB(picture.dib.get(), -degrees, 0, &status, nullptr);
  if (status == kUncountedSize) {
    throw Failure(ExitCode::kFormat, picture.label,
                  "pictures as wide or as high as a multiple of 65536 pixels are turned by quarters only; crop the picture");
  }
  return checked(picture, turned);
}

struct Options {
  int degrees = 0;
  bool white = false;
};

Dib turned(Picture& picture, const Options& options) {
  prepare(picture, Reach::kMovesPixels);
  const int degrees = (options.degrees % kFullTurn + kFullTurn) % kFullTurn;
  if (degrees % 90 == 0) return turned_by_quarters(picture, degrees);
  return on_background(picture, options.white, [&](Picture& source) { return turned_by_any(source, degrees); });
}

Action declare(CLI::App& app) {
  app.footer(
      "Quarter turns keep every pixel and swap the two resolutions as well. Other turns pick the nearest pixel and make\n"
      "the picture large enough for its corners. IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its\n"
      "ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel rotate scan.bmp upright.bmp 90\n"
      "  vorel rotate scan.tif scan.tif 180 --overwrite\n"
      "  vorel rotate crooked.tif straight.tif -2 --white\n"
      "  vorel rotate - - 270 < scan.bmp > upright.bmp");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(app, [options](Picture& picture) { return turned(picture, *options); });
  declare_argument(app, "DEGREES", options->degrees, "clockwise; counter-clockwise if negative");
  app.add_flag("--white", options->white, kWhiteHelp);
  return action;
}

}  // namespace

const Verb kRotate{"rotate", "Turn a picture clockwise by a whole number of degrees.", declare};

}  // namespace vorel::cli
