// vorel rotate: turns by a quarter, a half and three quarters.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

Dib turned(Picture& picture, const std::string& degrees) {
  prepare(picture, Reach::kMovesPixels);
  if (degrees == "180") return checked(picture, RotateDIB180(picture.dib.get()));
  Dib quarter = checked(picture, RotateDIB90(picture.dib.get()));
  if (degrees == "90") return quarter;
  // RotateDIB270 shifts the picture by one column, and programs rely on that. These two turns together are exact.
  return checked(picture, RotateDIB180(quarter.get()));
}

Action declare(CLI::App& app) {
  app.footer(
      "270 is an exact quarter turn counter-clockwise. (The library's RotateDIB270 shifts the picture by one column;\n"
      "the tool turns by 90 and then by 180 instead.) Quarter turns swap the two resolutions as well.\n"
      "IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel rotate scan.bmp upright.bmp 90\n"
      "  vorel rotate scan.tif scan.tif 180 --overwrite\n"
      "  vorel rotate - - 270 < scan.bmp > upright.bmp");
  return declare_transform(app, turned, {"DEGREES", "clockwise: 90, 180 or 270", {"90", "180", "270"}});
}

}  // namespace

const Verb kRotate{"rotate", "Turn a picture clockwise by quarter turns.", declare};

}  // namespace vorel::cli
