// vorel dither and vorel halftone: few colours, and black and white.
#include <fmt/format.h>

#include "cli/pixels.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

[[noreturn]] void refuse_depth(const Picture& picture) {
  throw Failure(ExitCode::kFormat, picture.label,
                fmt::format("pictures of more bits per pixel are reduced, this one has {}; see \"vorel gray --help\"",
                            picture.header.biBitCount));
}

// Colour tables are taken to be whole, and the ways in for other pictures leave locks behind.
void prepare_to_reduce(Picture& picture, int bits) {
  prepare(picture, Reach::kMovesPixels);
  if (picture.header.biBitCount <= bits) refuse_depth(picture);
  complete_table(picture);
}

// ---- dither ----

using Function = HGLOBAL(VORELCALL*)(HGLOBAL, int);
const std::vector<std::pair<std::string, Function>> kMethods = {
    {"fs", DitherFS4}, {"jjn", DitherJJN}, {"smooth", DitherSmooth}, {"sharp", DitherSharp}};

struct Dithering {
  std::string method = "fs";
  int bits = 1;
};

Dib dithered(Picture& picture, const Dithering& options) {
  prepare_to_reduce(picture, options.bits);
  if (options.bits == 8 && (options.method == "smooth" || options.method == "sharp"))
    throw Failure(ExitCode::kWrongUse, picture.label, "smooth and sharp make 1 or 4 bits per pixel; choose fs or jjn for 8");
  for (const auto& [word, function] : kMethods)
    if (word == options.method) return checked(picture, function(picture.dib.get(), options.bits));
  return {};
}

Action declare_dither(CLI::App& app) {
  app.footer(
      "fs spreads what a pixel is off over four neighbours, jjn over twelve; smooth and sharp gather light in blocks of 2 x "
      "2\n"
      "pixels. 1 bit is black and white, 4 bits have each of red, green and blue on or off, 8 bits have eight reds, eight\n"
      "greens and four blues. IN may have 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel\n"
      "convert --help\".\n\n"
      "Examples:\n"
      "  vorel dither photo.jpg fax.tif\n"
      "  vorel dither photo.jpg small.gif --method jjn --bits 8");
  const auto options = std::make_shared<Dithering>();
  const Action action = declare_transform(app, [options](Picture& picture) { return dithered(picture, *options); });
  std::vector<std::string> words;
  for (const auto& [word, function] : kMethods) words.push_back(word);
  app.add_option("--method", options->method, "fs, jjn, smooth or sharp (default: fs)")
      ->check(CLI::IsMember(words))
      ->option_text("METHOD");
  app.add_option("--bits", options->bits, "bits per pixel of OUT: 1, 4 or 8 (default: 1)")
      ->check(CLI::IsMember({1, 4, 8}))
      ->option_text("N");
  return action;
}

// ---- halftone ----

const std::vector<std::string> kHalftones = {"threshold", "diffusion", "ordered"};  // by their numbers

struct Halftoning {
  std::string method = "ordered";
  int brightness = 0;
};

// Of 24-bit pictures the library puts rows together wrongly, and its callers count on it. Greys come out right.
Dib halftoned(Picture& picture, const Halftoning& options) {
  prepare_to_reduce(picture, 1);
  if (picture.header.biBitCount == 24) picture.dib = luminance_of(picture);
  const auto method = std::ranges::find(kHalftones, options.method) - kHalftones.begin();
  WORD error = 0;
  return checked(picture, Halftone(picture.dib.get(), static_cast<WORD>(method), options.brightness, &error));
}

Action declare_halftone(CLI::App& app) {
  app.footer(
      "threshold makes what is lighter than the middle white, diffusion spreads what a pixel is off over its neighbours, "
      "and\n"
      "ordered goes by a pattern of 16 x 16 thresholds. IN may have 4, 8 or 24 bits per pixel. OUT has the format that its\n"
      "ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel halftone photo.jpg print.tif\n"
      "  vorel halftone scan.png text.tif --method threshold --brightness 40");
  const auto options = std::make_shared<Halftoning>();
  const Action action = declare_transform(app, [options](Picture& picture) { return halftoned(picture, *options); });
  app.add_option("--method", options->method, "threshold, diffusion or ordered (default: ordered)")
      ->check(CLI::IsMember(kHalftones))
      ->option_text("METHOD");
  app.add_option("--brightness", options->brightness, "levels to add, -255 to 255 (default: 0)")
      ->check(CLI::Range(-255, 255))
      ->option_text("B");
  return action;
}

}  // namespace

const Verb kDither{"dither", "Reduce a picture to black and white or to few colours by error diffusion.", declare_dither};
const Verb kHalftone{"halftone", "Make a black and white picture by a threshold, a pattern or error diffusion.",
                     declare_halftone};

}  // namespace vorel::cli
