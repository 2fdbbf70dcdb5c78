// vorel tone and vorel lut: brightness and contrast, in percent and by a lookup table.
#include <fmt/format.h>

#include "cli/pixels.h"
#include "cli/verbs/extent.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

// ---- tone ----

struct Percentages {
  int brightness = 0, contrast = 0;
};

Dib toned(Picture& picture, const Percentages& percent) {
  prepare(picture, Reach::kMovesPixels);
  if (picture.header.biBitCount == 1) {
    throw Failure(
        ExitCode::kFormat, picture.label,
        "black and white pixels have no brightness to change; make the picture grey first, see \"vorel gray --help\"");
  }
  return checked(picture, ColorBrightnessContrast(picture.dib.get(), static_cast<short>(percent.brightness),
                                                  static_cast<short>(percent.contrast)));
}

Action declare_tone(CLI::App& app) {
  app.footer(
      "Brightness comes first, contrast turns about the middle grey. Up to 8 bits per pixel the colour table changes and\n"
      "the pixels stay. IN may have 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel "
      "convert\n"
      "--help\".\n\n"
      "Examples:\n"
      "  vorel tone photo.jpg brighter.jpg --brightness 20\n"
      "  vorel tone scan.png crisp.png --brightness -5 --contrast 40");
  const auto percent = std::make_shared<Percentages>();
  const Action action = declare_transform(app, [percent](Picture& picture) { return toned(picture, *percent); });
  const auto range = CLI::Range(-100, 100);
  app.add_option("--brightness", percent->brightness, "percent, -100 to 100 (default: 0)")->check(range)->option_text("P");
  app.add_option("--contrast", percent->contrast, "percent, -100 to 100 (default: 0)")->check(range)->option_text("P");
  return action;
}

// ---- lut ----

struct Levels {
  int brightness = 0, contrast = 0;
  std::string square;
};

// The histogram of a square of the picture; none without one.
Dib histogram_of(const Picture& picture, const std::string& square) {
  if (square.empty()) return {};
  int error = 0;
  Dib histogram(ComputeHistogram(nullptr, IMG_ALLOCATE, nullptr, nullptr, &error));
  const auto [x, y] = parse_position(square);
  const int origin[] = {x, y};
  checked(picture, ComputeHistogram(picture.dib.get(), IMG_COMPUTE, histogram.get(), origin, &error)).release();
  return histogram;
}

Dib looked_up(Picture& picture, const Levels& levels) {
  prepare(picture, Reach::kMovesPixels);
  if (picture.header.biBitCount != 8) {
    throw Failure(ExitCode::kFormat, picture.label,
                  fmt::format("a lookup table is for 8 bits per pixel, the picture has {}; see \"vorel gray --help\"",
                              picture.header.biBitCount));
  }
  int error = 0;
  const Dib histogram = histogram_of(picture, levels.square);
  const Dib table(ComputeLUT(nullptr, IMG_ALLOCATE, nullptr, 0, 0, &error));
  ComputeLUT(histogram.get(), IMG_COMPUTE, table.get(), levels.contrast, levels.brightness, &error);
  return checked(picture, ApplyLUT(picture.dib.get(), table.get(), 1, &error));
}

Action declare_lut(CLI::App& app) {
  app.footer(
      "Level i of 0 to 255 becomes i + C * (i - mean) / 255 + B. The mean is that of the pixels in a square of 256 x 256 "
      "at\n"
      "X,Y, or 128. The result is grey. IN may have 8 bits per pixel. OUT has the format that its ending names; see "
      "\"vorel\n"
      "convert --help\".\n\n"
      "Examples:\n"
      "  vorel lut scan.png crisp.png --contrast 120 --square 400,300\n"
      "  vorel lut scan.png darker.png --brightness -30");
  const auto levels = std::make_shared<Levels>();
  const Action action = declare_transform(app, [levels](Picture& picture) { return looked_up(picture, *levels); });
  app.add_option("--brightness", levels->brightness, "levels to add (default: 0)")->option_text("B");
  app.add_option("--contrast", levels->contrast, "0 changes nothing, -255 leaves one grey (default: 0)")->option_text("C");
  app.add_option("--square", levels->square, "where the mean is taken: its left upper corner (default: none)")
      ->check(is_position())
      ->option_text("X,Y");
  return action;
}

}  // namespace

const Verb kTone{"tone", "Change brightness and contrast, in percent.", declare_tone};
const Verb kLut{"lut", "Change brightness and contrast of greys by a lookup table.", declare_lut};

}  // namespace vorel::cli
