// The steps dither and halftone: few colours, and black and white.
#include <algorithm>
#include <fmt/format.h>
#include <memory>

#include "cli/step.h"
#include "cli/words.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

using programs::DitherMethod;

// Pictures that have no more bits than asked for stay as they are, so that mixed folders need no branches.
bool has_few_bits(Page& page, int bits) {
  const int depth = page.picture.depth();
  if (depth > bits) return false;
  page.tell(fmt::format("left as it is, with {} bit{} per pixel", depth, depth == 1 ? "" : "s"), {{"changed", false}});
  return true;
}

// ---- dither ----

struct Dithering {
  std::string method, bits = "1";
};

void dither(Page& page, const Dithering& options) {
  const int bits = std::stoi(options.bits);
  if (has_few_bits(page, bits)) return;
  // At 8 bits jjn turns white into yellow.
  const std::string_view usual = bits == 8 ? "fs" : "jjn";
  const auto methods = programs::dither_methods();
  const auto method = std::ranges::find(methods, options.method.empty() ? usual : options.method, &DitherMethod::word);
  page.picture = programs::dithered(std::move(page.picture), *method, bits);
}

Change declare_dither(Arguments& arguments) {
  arguments.explain(
      "jjn spreads the error of a pixel over twelve neighbours, which leaves no stripes, fs over four; smooth and sharp\n"
      "gather light in blocks of 2 x 2 pixels. 1 bit is black and white, 4 bits have each of red, green and blue on or off, "
      "8 bits have eight reds,\n"
      "eight greens and four blues. A picture that has no more bits than N stays as it is.",
      "  vorel dither photo.jpg fax.tif\n"
      "  vorel dither photo.jpg small.gif --bits 8");
  const auto options = std::make_shared<Dithering>();
  std::vector<std::string> words;
  for (const DitherMethod& method : programs::dither_methods()) words.emplace_back(method.word);
  arguments.option("--method", options->method, "METHOD", "jjn, fs, smooth or sharp (default: jjn, at 8 bits fs)",
                   one_of(words));
  arguments.option("--bits", options->bits, "N", "bits per pixel of OUT: 1, 4 or 8 (default: 1)", one_of({"1", "4", "8"}));
  return [options](Page& page) { dither(page, *options); };
}

// ---- halftone ----

const std::vector<std::string>& halftones() {  // in the order of programs::Halftone
  static const std::vector<std::string> words = {"threshold", "diffusion", "ordered"};
  return words;
}

struct Halftoning {
  std::string method = "ordered";
  int brightness = 0;
};

void halftone(Page& page, const Halftoning& options) {
  if (has_few_bits(page, 1)) return;
  const auto method = enumerator_of<programs::Halftone>(halftones(), options.method);
  page.picture = programs::halftoned(std::move(page.picture), method, options.brightness);
}

Change declare_halftone(Arguments& arguments) {
  arguments.explain(
      "threshold makes what is lighter than the middle white, diffusion spreads the error of a pixel over its neighbours,\n"
      "and ordered goes by a pattern of 16 x 16 thresholds. Colours go by (30 red + 59 green + 11 blue) / 100. A picture\n"
      "of 1 bit per pixel stays as it is.",
      "  vorel halftone photo.jpg print.tif\n"
      "  vorel halftone scan.png text.tif --method threshold --brightness 40");
  const auto options = std::make_shared<Halftoning>();
  arguments.option("--method", options->method, "METHOD", "threshold, diffusion or ordered (default: ordered)",
                   one_of(halftones()));
  arguments.option("--brightness", options->brightness, "B", "levels to add, -255 to 255 (default: 0)", {-255, 255});
  return [options](Page& page) { halftone(page, *options); };
}

}  // namespace

const Step kDither{"dither", "Reduce a picture to black and white or to few colours by error diffusion.", declare_dither};
const Step kHalftone{"halftone", "Make a black and white picture by a threshold, a pattern or error diffusion.",
                     declare_halftone};

}  // namespace vorel::cli
