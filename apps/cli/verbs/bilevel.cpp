// vorel dither and vorel halftone: few colours, and black and white.
#include <algorithm>

#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::DitherMethod;
using programs::Picture;

// ---- dither ----

struct Dithering {
  std::string method = "fs", bits = "1";
};

Picture dithered(Picture picture, const Dithering& options) {
  const auto methods = programs::dither_methods();
  const auto method = std::ranges::find(methods, options.method, &DitherMethod::word);
  return programs::dithered(std::move(picture), *method, std::stoi(options.bits));
}

Action declare_dither(Arguments& arguments) {
  arguments.explain(
      "fs spreads the error of a pixel over four neighbours, jjn over twelve; smooth and sharp gather light in blocks of\n"
      "2 x 2 pixels. 1 bit is black and white, 4 bits have each of red, green and blue on or off, 8 bits have eight reds,\n"
      "eight greens and four blues. IN has more bits per pixel than OUT. OUT has the format that its ending names; see\n"
      "\"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel dither photo.jpg fax.tif\n"
      "  vorel dither photo.jpg small.gif --method jjn --bits 8");
  const auto options = std::make_shared<Dithering>();
  const Action action =
      declare_transform(arguments, [options](Picture picture) { return dithered(std::move(picture), *options); });
  std::vector<std::string> words;
  for (const DitherMethod& method : programs::dither_methods()) words.emplace_back(method.word);
  arguments.option("--method", options->method, "METHOD", "fs, jjn, smooth or sharp (default: fs)", one_of(words));
  arguments.option("--bits", options->bits, "N", "bits per pixel of OUT: 1, 4 or 8 (default: 1)", one_of({"1", "4", "8"}));
  return action;
}

// ---- halftone ----

const std::vector<std::string> kHalftones = {"threshold", "diffusion", "ordered"};  // in the order of programs::Halftone

struct Halftoning {
  std::string method = "ordered";
  int brightness = 0;
};

Picture halftoned(Picture picture, const Halftoning& options) {
  const auto method = std::ranges::find(kHalftones, options.method) - kHalftones.begin();
  return programs::halftoned(std::move(picture), static_cast<programs::Halftone>(method), options.brightness);
}

Action declare_halftone(Arguments& arguments) {
  arguments.explain(
      "threshold makes what is lighter than the middle white, diffusion spreads the error of a pixel over its neighbours,\n"
      "and ordered goes by a pattern of 16 x 16 thresholds. Colours go by (30 red + 59 green + 11 blue) / 100. IN has more\n"
      "than 1 bit per pixel. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel halftone photo.jpg print.tif\n"
      "  vorel halftone scan.png text.tif --method threshold --brightness 40");
  const auto options = std::make_shared<Halftoning>();
  const Action action =
      declare_transform(arguments, [options](Picture picture) { return halftoned(std::move(picture), *options); });
  arguments.option("--method", options->method, "METHOD", "threshold, diffusion or ordered (default: ordered)",
                   one_of(kHalftones));
  arguments.option("--brightness", options->brightness, "B", "levels to add, -255 to 255 (default: 0)", {-255, 255});
  return action;
}

}  // namespace

const Verb kDither{"dither", "Reduce a picture to black and white or to few colours by error diffusion.", declare_dither};
const Verb kHalftone{"halftone", "Make a black and white picture by a threshold, a pattern or error diffusion.",
                     declare_halftone};

}  // namespace vorel::cli
