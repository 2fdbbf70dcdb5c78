// The steps tone and lut: brightness and contrast, in percent and by a lookup table.
#include <memory>
#include <optional>

#include "cli/extent.h"
#include "cli/step.h"

namespace vorel::cli {
namespace {

using programs::Picture;

// ---- tone ----

struct Percentages {
  int brightness = 0, contrast = 0;
};

Change declare_tone(Arguments& arguments) {
  arguments.explain(
      "Brightness comes first, contrast turns about the middle grey. Up to 8 bits per pixel the colour table changes and\n"
      "the pixels stay. IN has more than 1 bit per pixel.",
      "  vorel tone photo.jpg brighter.jpg --brightness 20\n"
      "  vorel tone scan.png crisp.png --brightness -5 --contrast 40");
  const auto percent = std::make_shared<Percentages>();
  arguments.option("--brightness", percent->brightness, "P", "percent, -100 to 100 (default: 0)", {-100, 100});
  arguments.option("--contrast", percent->contrast, "P", "percent, -100 to 100 (default: 0)", {-100, 100});
  return changes_picture(
      [percent](Picture picture) { return programs::toned(std::move(picture), percent->brightness, percent->contrast); });
}

// ---- lut ----

struct Levels {
  int brightness = 0, contrast = 0;
  std::string square;
};

Picture looked_up(Picture picture, const Levels& levels) {
  const auto square = levels.square.empty() ? std::nullopt : std::optional(parse_position(levels.square));
  return programs::looked_up(std::move(picture), levels.brightness, levels.contrast, square);
}

Change declare_lut(Arguments& arguments) {
  arguments.explain(
      "Level i of 0 to 255 becomes i + C * (i - mean) / 255 + B. The mean is that of the pixels in a square of 256 x 256\n"
      "at X,Y, or 128. The result is grey. IN has 8 bits per pixel.",
      "  vorel lut scan.png crisp.png --contrast 120 --square 400,300\n"
      "  vorel lut scan.png darker.png --brightness -30");
  const auto levels = std::make_shared<Levels>();
  arguments.option("--brightness", levels->brightness, "B", "levels to add (default: 0)");
  arguments.option("--contrast", levels->contrast, "C", "0 changes nothing, -255 leaves one grey (default: 0)");
  arguments.option("--square", levels->square, "X,Y", "where the mean is taken: its left upper corner (default: none)",
                   position_is_wrong);
  return changes_picture([levels](Picture picture) { return looked_up(std::move(picture), *levels); });
}

}  // namespace

const Step kTone{"tone", "Change brightness and contrast, in percent.", declare_tone};
const Step kLut{"lut", "Change brightness and contrast of greys by a lookup table.", declare_lut};

}  // namespace vorel::cli
