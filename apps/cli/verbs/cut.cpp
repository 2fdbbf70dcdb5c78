// vorel cut and vorel crop: pieces of a picture.
#include <fmt/format.h>

#include "cli/extent.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

using programs::Picture;

// ---- cut ----

struct CutValues {
  std::string input, above, below, pages;
  int line = 0;
  SavingOptions saving;
};

programs::Halves cut_page(Page page, int line) {
  const int rows = page.picture.height();
  if (rows == 1) throw Failure(ExitCode::kWrongUse, page.label, "the picture has one row only; there is nothing to cut");
  if (line < 1 || line >= rows) {
    throw Failure(ExitCode::kWrongUse, page.label,
                  fmt::format("there is nothing on one side of line {}; give one from 1 to {}", line, rows - 1));
  }
  return about(page.label, [&] { return programs::cut(std::move(page.picture), line); });
}

ExitCode cut(const CutValues& values, const Streams& streams) {
  Target above(values.above, values.saving, streams), below(values.below, values.saving, streams);
  const Source source(values.input, values.pages, streams);
  above.open(source.size(), {&source});
  below.open(source.size(), {&source});
  if (above.is_same_as(below))
    throw Failure(ExitCode::kWrongUse, values.above, "both parts would go there; give each a file of its own");
  const auto cut_all = [&](const Target::Put& put_above, const Target::Put& put_below) {
    for (size_t i = 0; i < source.size(); ++i) {
      programs::Halves halves = cut_page(source.load(i), values.line);
      put_above({source.label(i), std::move(halves.above)});
      put_below({source.label(i), std::move(halves.below)});
    }
  };
  // The target that is written inside the other is in place first: the input itself is replaced last.
  if (below.replaces(source)) {
    below.write([&](const auto& put_below) { above.write([&](const auto& put_above) { cut_all(put_above, put_below); }); });
  } else {
    above.write([&](const auto& put_above) { below.write([&](const auto& put_below) { cut_all(put_above, put_below); }); });
  }
  return ExitCode::kDone;
}

Action declare_cut(Arguments& arguments) {
  arguments.explain(
      "Every page is cut at the same line. The formats are those that the endings of ABOVE and BELOW name; see \"vorel\n"
      "convert --help\".\n\n"
      "Example:\n"
      "  vorel cut spread.tif first.tif second.tif 1754");
  const auto values = std::make_shared<CutValues>();
  declare_input(arguments, values->input);
  arguments.required("ABOVE", values->above, "the file to write the upper part to");
  arguments.required("BELOW", values->below, "the file to write the lower part to");
  arguments.required("LINE", values->line, "rows of the upper part");
  declare_pages(arguments, values->pages);
  values->saving.declare(arguments);
  return [values](const Streams& streams) { return cut(*values, streams); };
}

// ---- crop ----

struct CropValues {
  std::string at, size;
};

Picture cropped(Picture picture, const CropValues& values) {
  const programs::Corner at = parse_position(values.at);
  const Size size = parse_extent(values.size);
  if (at.x < 0 || at.y < 0 || size.width > picture.width() - at.x || size.height > picture.height() - at.y) {
    throw programs::Problem(programs::Fault::kWrongUse,
                            fmt::format("the picture has {} x {} pixels, and the piece reaches outside; ask for one inside",
                                        picture.width(), picture.height()));
  }
  return programs::cropped(std::move(picture), {at.x, at.y, size.width, size.height});
}

Action declare_crop(Arguments& arguments) {
  arguments.explain(
      "OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Example:\n"
      "  vorel crop page.tif stamp.png 1900,120 400x300");
  const auto values = std::make_shared<CropValues>();
  const Action action =
      declare_transform(arguments, [values](Picture picture) { return cropped(std::move(picture), *values); });
  arguments.required("CORNER", values->at, "X,Y of the piece: its left upper corner, counted from 0", position_is_wrong);
  arguments.required("SIZE", values->size, "WIDTHxHEIGHT, the pixels of the piece", extent_is_wrong);
  return action;
}

}  // namespace

const Verb kCut{"cut", "Cut a picture in two at a line.", declare_cut};
const Verb kCrop{"crop", "Take a rectangular piece of a picture.", declare_crop};

}  // namespace vorel::cli
