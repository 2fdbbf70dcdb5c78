// vorel cut and vorel crop: pieces of a picture.
#include <fmt/format.h>

#include "cli/pixels.h"
#include "cli/verbs/extent.h"
#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

// ---- cut ----

struct CutArguments {
  std::string input, above, below;
  int line = 0, page = 1;
  SavingOptions saving;
};

ExitCode cut(const CutArguments& arguments, const Streams& streams) {
  const Saving above_saving = arguments.saving.saving_for(arguments.above),
               below_saving = arguments.saving.saving_for(arguments.below);
  const Input input(arguments.input, streams.input);
  const Output above(arguments.above, arguments.saving.overwrite, streams.output);
  const Output below(arguments.below, arguments.saving.overwrite, streams.output);
  if (above.is_same_as(below))
    throw Failure(ExitCode::kWrongUse, above.label(), "both parts would go there; give each a file of its own");
  keep_pages(input, above);
  keep_pages(input, below);
  Picture picture = load_picture(input, arguments.page);
  prepare(picture, Reach::kMovesPixels);
  if (picture.header.biHeight == 1)
    throw Failure(ExitCode::kWrongUse, input.label(), "the picture has one row only; there is nothing to cut");
  if (arguments.line < 1 || arguments.line >= picture.header.biHeight) {
    throw Failure(ExitCode::kWrongUse, input.label(),
                  fmt::format("there is nothing on one side of line {}; give one from 1 to {}", arguments.line,
                              picture.header.biHeight - 1));
  }
  Picture upper = cut_off(picture, arguments.line, Side::kAbove), lower = cut_off(picture, arguments.line, Side::kBelow);
  // The input itself is replaced last, when the other part is safe.
  if (!above.replaces(input)) write_picture(above, upper, above_saving);
  write_picture(below, lower, below_saving);
  if (above.replaces(input)) write_picture(above, upper, above_saving);
  return ExitCode::kDone;
}

Action declare_cut(CLI::App& app) {
  app.footer(
      "IN may have 1, 4, 8 or 24 bits per pixel. The formats are those that the endings of ABOVE and BELOW name; see\n"
      "\"vorel convert --help\".\n\n"
      "Example:\n"
      "  vorel cut spread.tif first.tif second.tif 1754");
  const auto arguments = std::make_shared<CutArguments>();
  declare_argument(app, "IN", arguments->input, "the picture file to read; - is standard input");
  declare_argument(app, "ABOVE", arguments->above, "the file to write the upper part to");
  declare_argument(app, "BELOW", arguments->below, "the file to write the lower part to");
  declare_argument(app, "LINE", arguments->line, "rows of the upper part");
  declare_page(app, arguments->page);
  arguments->saving.declare(app);
  return [arguments](const Streams& streams) { return cut(*arguments, streams); };
}

// ---- crop ----

struct CropArguments {
  std::string at, size;
};

// Cuts off what lies above and below some rows.
Picture rows_of(Picture picture, int first, int count) {
  if (first > 0) picture = cut_off(picture, first, Side::kBelow);
  if (count < picture.header.biHeight) picture = cut_off(picture, count, Side::kAbove);
  return picture;
}

Picture turned(const Picture& picture, HGLOBAL(VORELCALL* turn)(HGLOBAL)) {
  Dib dib = checked(picture, turn(picture.dib.get()));
  const BITMAPINFOHEADER header = DibLock(dib).header();
  return {.label = picture.label, .header = header, .dib = std::move(dib)};
}

// Columns are cut while they are rows: a quarter turn clockwise puts the left one on top.
Dib cropped(Picture& picture, const CropArguments& arguments) {
  prepare(picture, Reach::kMovesPixels);
  const Position at = parse_position(arguments.at);
  const Extent size = parse_extent(arguments.size);
  const auto [width, height] = Extent{picture.header.biWidth, picture.header.biHeight};
  if (at.x < 0 || at.y < 0 || size.width > width - at.x || size.height > height - at.y) {
    throw Failure(
        ExitCode::kWrongUse, picture.label,
        fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside", width, height));
  }
  Picture piece =
      rows_of({.label = picture.label, .header = picture.header, .dib = std::move(picture.dib)}, at.y, size.height);
  if (size.width == width) return std::move(piece.dib);
  piece = rows_of(turned(piece, RotateDIB90), at.x, size.width);
  return std::move(turned(turned(piece, RotateDIB90), RotateDIB180).dib);
}

Action declare_crop(CLI::App& app) {
  app.footer(
      "IN may have 1, 4, 8 or 24 bits per pixel. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Example:\n"
      "  vorel crop page.tif stamp.png 1900,120 400x300");
  const auto arguments = std::make_shared<CropArguments>();
  const Action action = declare_transform(app, [arguments](Picture& picture) { return cropped(picture, *arguments); });
  declare_argument(app, "CORNER", arguments->at, "X,Y of the piece: its left upper corner, counted from 0")
      ->check(is_position());
  declare_argument(app, "SIZE", arguments->size, "WIDTHxHEIGHT, the pixels of the piece")->check(is_extent());
  return action;
}

}  // namespace

const Verb kCut{"cut", "Cut a picture in two at a line.", declare_cut};
const Verb kCrop{"crop", "Take a rectangular piece of a picture.", declare_crop};

}  // namespace vorel::cli
