// The step scale: another number of pixels.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <memory>

#include "cli/extent.h"
#include "cli/step.h"
#include "cli/words.h"
#include "common/problem.h"

namespace vorel::cli {
namespace {

using programs::Picture;
using programs::Resampling;

const std::vector<std::string>& methods() {  // in the order of programs::Resampling
  static const std::vector<std::string> words = {"linear", "cubic", "nearest", "area"};
  return words;
}

struct Options {
  std::string size, dpi, method;  // no method: the one that suits the size
  bool fit = false, keep_dpi = false, gray = false;
};

[[noreturn]] void fail(programs::Fault fault, const std::string& text) { throw programs::Problem(fault, text); }

// Half a pixel counts as one, and nothing is smaller than one.
int whole_pixels(double pixels) {
  const double rounded = std::floor(pixels + 0.5);
  if (rounded > programs::kMostScaledPixels) {
    fail(programs::Fault::kLimit, fmt::format("a side would have {:.0f} pixels, and at most {} can be made; ask for less",
                                              rounded, programs::kMostScaledPixels));
  }
  return std::max(1, static_cast<int>(rounded));
}

// As many pixels as the same size on paper has at another resolution.
Size size_at(const Picture& picture, Size dpi) {
  const DibHeader& header = picture.header();
  if (header.x_per_metre <= 0 || header.y_per_metre <= 0) {
    fail(programs::Fault::kFormat,
         "the picture does not state its resolution; give SIZE, or state it with \"vorel convert --dpi\" first");
  }
  return {whole_pixels(picture.width() * dpi.width * kInchesPerMetre / header.x_per_metre),
          whole_pixels(picture.height() * dpi.height * kInchesPerMetre / header.y_per_metre)};
}

Size result_size(const Picture& picture, const Options& options) {
  if (options.size.empty()) return size_at(picture, parse_dpi(options.dpi));
  const double width = picture.width(), height = picture.height();
  const auto times = [&](double factor) { return Size{whole_pixels(width * factor), whole_pixels(height * factor)}; };
  if (const auto percent = parse_percent(options.size)) return times(*percent / 100);
  const Size size = parse_extent(options.size);
  if (options.fit) return times(std::min(size.width / width, size.height / height));
  return {whole_pixels(size.width), whole_pixels(size.height)};
}

Resampling resampling_for(const Picture& picture, Size size, const std::string& method) {
  const bool is_reduced = size.width <= picture.width() && size.height <= picture.height();
  if (method.empty()) return is_reduced ? Resampling::kArea : Resampling::kLinear;
  return enumerator_of<Resampling>(methods(), method);
}

// Refuses a result that is too large before it takes memory.
void check_limits(const Page& page, Size size) {
  DibHeader header = page.picture.header();
  header.width = size.width;
  header.height = size.height;
  page.limits.check(header);
}

Picture scaled(Picture picture, Size size, const Options& options) {
  const DibHeader before = picture.header();
  const Resampling resampling = resampling_for(picture, size, options.method);
  if (options.gray && picture.depth() == 1) picture = programs::gray(std::move(picture), programs::GrayWeights::kEqual);
  Picture result = programs::scaled(std::move(picture), size, resampling);
  if (options.keep_dpi) result.set_resolution(before.x_per_metre, before.y_per_metre);
  if (!options.dpi.empty()) state_dpi(result, options.dpi);
  return result;
}

void scale(Page& page, const Options& options) {
  const Size size = result_size(page.picture, options);
  check_limits(page, size);
  page.picture = scaled(std::move(page.picture), size, options);
}

std::string flaw_of(const Options& options) {
  if (options.size.empty() == options.dpi.empty()) return "it takes either SIZE or --dpi; give one of them";
  const bool is_in_proportion = options.size.empty() || parse_percent(options.size);
  return options.fit && is_in_proportion ? "a percentage or a resolution keeps the proportions anyway; leave --fit out" : "";
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "area weighs all pixels that lie under a new one; 1 bit per pixel gets the colour that covers most of it. linear\n"
      "mixes two neighbours each way, cubic four, which is sharper. The mixture becomes the nearest colour of a colour\n"
      "table. nearest mixes nothing, and linear and cubic do not either at 1 bit per pixel. The size on paper stays: the\n"
      "resolution changes with the pixels, unless --keep-dpi is given.",
      "  vorel scale photo.jpg half.jpg 50%\n"
      "  vorel scale photo.jpg thumb.png 160x120 --fit --method cubic\n"
      "  vorel scale page.tif screen.bmp 1024x768\n"
      "  vorel scale fax.tif square.tif --dpi 200");
  const auto options = std::make_shared<Options>();
  arguments.optional("SIZE", options->size, "WIDTHxHEIGHT in pixels, or a percentage of both sides, like 50%",
                     extent_or_percent_is_wrong);
  arguments.option("--dpi", options->dpi, "N|XxY", "in place of SIZE: as many pixels as this resolution asks for",
                   dpi_is_wrong);
  arguments.flag("--fit", options->fit, "keep the proportions: OUT is as large as fits into SIZE");
  arguments.flag("--keep-dpi", options->keep_dpi, "state the resolution of IN: the size on paper changes");
  arguments.exclude("--keep-dpi", "--dpi");
  arguments.option("--method", options->method, "METHOD",
                   "area, linear, cubic or nearest (default: area to reduce, linear to enlarge)", one_of(methods()));
  arguments.flag("--gray", options->gray, "make greys of 1 bit per pixel (default: black and white stay)");
  arguments.check_together([options] { return flaw_of(*options); });
  return [options](Page& page) { scale(page, *options); };
}

}  // namespace

const Step kScale{"scale", "Make a picture larger or smaller.", declare};

}  // namespace vorel::cli
