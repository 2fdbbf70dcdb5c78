// The step threshold: greys and colours to black and white.
#include "common/page/threshold.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <memory>

#include "cli/decimal.h"
#include "cli/paper_length.h"
#include "cli/step.h"

namespace vorel::cli {
namespace {

using programs::Picture;
using programs::Sauvola;

struct Options {
  std::string method = "otsu", window;
  double k = 0.34;
};

std::string method_is_wrong(const std::string& text) {
  if (text == "otsu" || text == "sauvola") return "";
  const auto level = parse_decimal(text);
  return level && *level >= 0 && *level <= 256 && *level == std::floor(*level)
             ? ""
             : "\"" + text + "\" is no LEVEL: a number from 0 to 256, otsu or sauvola";
}

const std::string kUsualWindow = "3.5mm";

// An odd number of pixels. The usual window has at least 15: a smaller one, as coarse resolutions give, holds too little of
// a page to tell light from dark. A window that was asked for may be as small as 3.
int window_on(const Picture& picture, const Options& options) {
  constexpr int kLeastUsual = 15, kLeast = 3;
  const bool is_asked_for = !options.window.empty();
  const Size size = length_on(picture, is_asked_for ? options.window : kUsualWindow);
  return std::clamp(std::max(size.width, size.height) | 1, is_asked_for ? kLeast : kLeastUsual, Sauvola::kMostWindow);
}

void apply_sauvola(Page& page, const Options& options) {
  const int window = window_on(page.picture, options);
  const std::string& length = options.window.empty() ? kUsualWindow : options.window;
  page.tell(fmt::format("local levels in windows of {} pixels{}", window, resolution_note(page.picture, length)),
            {{"method", "sauvola"}, {"window", int64_t{window}}});
  page.picture = programs::thresholded(std::move(page.picture), Sauvola{.window = window, .k = options.k});
}

void apply(Page& page, const Options& options) {
  if (page.picture.depth() == 1) {
    page.tell("left as it is, with 1 bit per pixel", {{"method", "none"}});
    return;
  }
  if (options.method == "sauvola") return apply_sauvola(page, options);
  const bool is_found = options.method == "otsu";
  const int level = is_found ? programs::otsu_level(page.picture) : static_cast<int>(*parse_decimal(options.method));
  page.tell(fmt::format("white from level {}", level), {{"method", is_found ? "otsu" : "level"}, {"level", int64_t{level}}});
  page.picture = programs::thresholded(std::move(page.picture), level);
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "The result has 1 bit per pixel. Colours go by their luminance. otsu finds one level for the page, sauvola one for\n"
      "each pixel from the window around it, which copes with shadows and uneven paper.",
      "  vorel threshold gray.png page.tif --compression g4\n"
      "  vorel threshold photo.jpg page.png sauvola --window 4mm --k 0.3\n"
      "  vorel threshold gray.png page.tif 150");
  const auto options = std::make_shared<Options>();
  arguments.optional("LEVEL", options->method,
                     "luminance from which on pixels are white, 0 to 256; or otsu (default), sauvola",
                     Check(method_is_wrong, {"otsu", "sauvola"}));
  arguments.option("--window", options->window, "SIZE", "of sauvola, in millimetres or pixels (default: 3.5mm)",
                   length_is_wrong);
  arguments.option("--k", options->k, "NUMBER", "of sauvola: the higher, the less is ink (default: 0.34)", {0, 1});
  return [options](Page& page) { apply(page, *options); };
}

}  // namespace

const Step kThreshold{"threshold", "Make greys and colours black and white, by one level or local ones.", declare, true};

}  // namespace vorel::cli
