// vorel scale: another number of pixels.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/extent.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Picture;
using programs::Resampling;

const std::vector<std::string> kMethods = {"linear", "cubic", "nearest"};  // in the order of programs::Resampling

struct Options {
  std::string size, dpi, method = "linear";
  bool fit = false, keep_dpi = false;
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

Picture scaled(Picture picture, const Options& options) {
  const auto resampling = static_cast<Resampling>(std::ranges::find(kMethods, options.method) - kMethods.begin());
  const DibHeader before = picture.header();
  const Size size = result_size(picture, options);
  Picture result = programs::scaled(std::move(picture), size, resampling);
  if (options.keep_dpi) result.set_resolution(before.x_per_metre, before.y_per_metre);
  if (!options.dpi.empty()) {
    const Size dpi = parse_dpi(options.dpi);
    result.set_resolution(per_metre(dpi.width), per_metre(dpi.height));
  }
  return result;
}

void check(const Options& options) {
  const auto refuse = [](const char* text) { throw Failure(ExitCode::kWrongUse, "scale", text); };
  if (options.size.empty() == options.dpi.empty()) refuse("it takes either SIZE or --dpi; give one of them");
  if (options.fit && (options.size.empty() || parse_percent(options.size)))
    refuse("a percentage or a resolution keeps the proportions anyway; leave --fit out");
}

Action declare(Arguments& arguments) {
  arguments.explain(
      "linear mixes two neighbours each way, cubic four, which is sharper; below 24 bits per pixel the mixture becomes\n"
      "the nearest colour of the table. nearest mixes nothing, and neither does 1 bit per pixel. The size on paper stays:\n"
      "the resolution changes with the pixels, unless --keep-dpi is given. OUT has the format that its ending names; see\n"
      "\"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel scale photo.jpg half.jpg 50%\n"
      "  vorel scale photo.jpg thumb.png 160x120 --fit --method cubic\n"
      "  vorel scale page.tif screen.bmp 1024x768\n"
      "  vorel scale fax.tif square.tif --dpi 200");
  const auto options = std::make_shared<Options>();
  const Action action =
      declare_transform(arguments, [options](Picture picture) { return scaled(std::move(picture), *options); });
  arguments.optional("SIZE", options->size, "WIDTHxHEIGHT in pixels, or a percentage of both sides, like 50%",
                     extent_or_percent_is_wrong);
  arguments.option("--dpi", options->dpi, "N|XxY", "in place of SIZE: as many pixels as this resolution asks for",
                   dpi_is_wrong);
  arguments.flag("--fit", options->fit, "keep the proportions: OUT is as large as fits into SIZE");
  arguments.flag("--keep-dpi", options->keep_dpi, "state the resolution of IN: the size on paper changes");
  arguments.exclude("--keep-dpi", "--dpi");
  arguments.option("--method", options->method, "METHOD", "linear, cubic or nearest (default: linear)", one_of(kMethods));
  return [options, action](const Streams& streams) {
    check(*options);
    return action(streams);
  };
}

}  // namespace

const Verb kScale{"scale", "Make a picture larger or smaller.", declare};

}  // namespace vorel::cli
