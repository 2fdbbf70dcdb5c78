// vorel gray and vorel expand: fewer and more colours than a picture has.
#include "cli/pixels.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Options {
  bool weighted = false;
  int smooth = 0;
};

// What the library makes of black and white goes by the bits. People go by the colours.
Dib gray(Picture& picture, const Options& options) {
  prepare(picture, Reach::kMovesPixels);
  HGLOBAL dib = picture.dib.get();
  const bool is_bilevel = picture.header.biBitCount == 1;
  return checked(picture, is_bilevel ? ConvMonoDIBtoGrayscale(dib, options.smooth)
                                     : ConvColorDIBtoGrayscale(dib, 0, options.weighted ? 1 : 0));
}

Action declare_gray(CLI::App& app) {
  app.footer(
      "OUT has 8 bits per pixel, or 4 if IN has. IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its\n"
      "ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel gray photo.jpg grey.png --weighted\n"
      "  vorel gray fax.tif smooth.png --smooth 2");
  const auto options = std::make_shared<Options>();
  const Action action = declare_transform(app, [options](Picture& picture) { return gray(picture, *options); });
  app.add_flag("--weighted", options->weighted, "weigh green most and blue least (default: all alike)");
  app.add_option("--smooth", options->smooth, "black and white: mix 3 x 3 pixels (1) or 5 x 5 (2) (default: 0, none)")
      ->check(CLI::Range(0, 2))
      ->option_text("N");
  return action;
}

Dib expanded(Picture& picture) {
  prepare(picture, Reach::kMovesPixels);
  if (picture.header.biBitCount == 24) return std::move(picture.dib);
  if (picture.header.biBitCount == 8) return checked(picture, Convert8to24(picture.dib.get()));
  return std::move(in_true_color(picture).dib);
}

Action declare_expand(CLI::App& app) {
  app.footer(
      "IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Example:\n"
      "  vorel expand chart.gif chart.jpg");
  return declare_transform(app, expanded);
}

}  // namespace

const Verb kGray{"gray", "Make a grey picture of colours, or of black and white.", declare_gray};
const Verb kExpand{"expand", "Make a picture of 24 bits per pixel.", declare_expand};

}  // namespace vorel::cli
