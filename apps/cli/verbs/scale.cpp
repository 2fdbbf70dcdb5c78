// vorel scale: another number of pixels.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/pixels.h"
#include "cli/verbs/extent.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

constexpr double kMostPixels = 65'535;  // a side, of a result of the library

struct Options {
  std::string size, method = "linear";
  bool fit = false;
};

// Half a pixel counts as one, and nothing is smaller than one.
int whole_pixels(const Picture& picture, double pixels) {
  const double rounded = std::floor(pixels + 0.5);
  if (rounded > kMostPixels) {
    throw Failure(
        ExitCode::kLimit, picture.label,
        fmt::format("a side would have {:.0f} pixels, and at most {:.0f} can be made; ask for less", rounded, kMostPixels));
  }
  return std::max(1, static_cast<int>(rounded));
}

Extent result_size(const Picture& picture, const Options& options) {
  const double width = picture.header.biWidth, height = picture.header.biHeight;
  const auto times = [&](double factor) {
    return Extent{whole_pixels(picture, width * factor), whole_pixels(picture, height * factor)};
  };
  if (const auto percent = parse_percent(options.size)) return times(*percent / 100);
  const Extent size = parse_extent(options.size);
  if (options.fit) return times(std::min(size.width / width, size.height / height));
  return {whole_pixels(picture, size.width), whole_pixels(picture, size.height)};
}

// The library has this for 1 bit per pixel alone, and leaves the last rows and columns empty where it magnifies.
Dib nearest(const Picture& picture, Extent size) {
  Picture result = blank_like(picture, size.width, size.height, picture.header.biBitCount);
  const DibLock source_lock(picture.dib), result_lock(result.dib);
  const Pixels from(source_lock);
  Pixels to(result_lock);
  const auto source_of = [](int at, int source, int count) {
    return std::min(source - 1, static_cast<int>((int64_t{4} * count + int64_t{8} * at * source) / (int64_t{8} * count)));
  };
  std::vector<int> columns;
  for (int x = 0; x < size.width; ++x) columns.push_back(source_of(x, from.width(), size.width));
  for (int y = 0; y < size.height; ++y) {
    const int row = source_of(y, from.height(), size.height);
    for (int x = 0; x < size.width; ++x) to.set(x, y, from.at(columns[static_cast<size_t>(x)], row));
  }
  return std::move(result.dib);
}

// The library takes black at the beginning of a row for colour 0, so that is made the colour nearest to black.
Dib interpolated(Picture& picture, Extent size, bool cubic) {
  if (picture.header.biWidth > kMostPixels) {
    throw Failure(
        ExitCode::kLimit, picture.label,
        fmt::format("pictures wider than {:.0f} pixels are scaled with --method nearest only; use that", kMostPixels));
  }
  const auto scale = [&](Picture& source) {
    return checked(source, ScaleDIB(source.dib.get(), cubic ? 1 : 0, static_cast<unsigned>(size.width),
                                    static_cast<unsigned>(size.height)));
  };
  return on_background(picture, false, scale);
}

Dib scaled(Picture& picture, const Options& options) {
  prepare(picture, Reach::kMovesPixels);
  if (options.fit && parse_percent(options.size))
    throw Failure(ExitCode::kWrongUse, picture.label, "a percentage keeps the proportions anyway; leave --fit out");
  const Extent size = result_size(picture, options);
  if (options.method == "nearest" || picture.header.biBitCount == 1) return nearest(picture, size);
  return interpolated(picture, size, options.method == "cubic");
}

Action declare(CLI::App& app) {
  app.footer(
      "linear mixes two neighbours each way, cubic four, which is sharper; below 24 bits per pixel the mixture becomes\n"
      "the nearest colour of the table. nearest mixes nothing, and neither does 1 bit per pixel. The resolution stays as\n"
      "it is. IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel convert\n"
      "--help\".\n\n"
      "Examples:\n"
      "  vorel scale photo.jpg half.jpg 50%\n"
      "  vorel scale photo.jpg thumb.png 160x120 --fit --method cubic\n"
      "  vorel scale page.tif screen.bmp 1024x768");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(app, [options](Picture& picture) { return scaled(picture, *options); });
  declare_argument(app, "SIZE", options->size, "WIDTHxHEIGHT in pixels, or a percentage of both sides, like 50%")
      ->check(is_extent_or_percent());
  app.add_flag("--fit", options->fit, "keep the proportions: OUT is as large as fits into SIZE");
  app.add_option("--method", options->method, "linear, cubic or nearest (default: linear)")
      ->check(CLI::IsMember({"linear", "cubic", "nearest"}))
      ->option_text("METHOD");
  return action;
}

}  // namespace

const Verb kScale{"scale", "Make a picture larger or smaller.", declare};

}  // namespace vorel::cli
