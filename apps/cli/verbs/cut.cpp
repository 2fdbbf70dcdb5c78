// vorel cut: two pieces of a picture.
#include <fmt/format.h>

#include "cli/page_work.h"

namespace vorel::cli {
namespace {

struct Values {
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

ExitCode cut(const Values& values, const Streams& streams) {
  Target above(values.above, values.saving, streams), below(values.below, values.saving, streams);
  const Source source(values.input, values.pages, streams);
  above.open(source.size(), {&source});
  below.open(source.size(), {&source});
  if (above.is_same_as(below))
    throw Failure(ExitCode::kWrongUse, values.above, "both parts would go there; give each a file of its own");
  const auto cut_all = [&](const Target::Put& put_above, const Target::Put& put_below) {
    for (size_t i = 0; i < source.size(); ++i) {
      programs::Halves halves = cut_page(source.load(i), values.line);
      Page above_it{source.label(i), std::move(halves.above)}, below_it{source.label(i), std::move(halves.below)};
      put_above(above_it);
      put_below(below_it);
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

Action declare(Arguments& arguments) {
  arguments.explain("Every page is cut at the same line. The formats are those that the endings of ABOVE and BELOW name.",
                    "  vorel cut spread.tif first.tif second.tif 1754");
  const auto values = std::make_shared<Values>();
  declare_input(arguments, values->input);
  arguments.required("ABOVE", values->above, "the file to write the upper part to");
  arguments.required("BELOW", values->below, "the file to write the lower part to");
  arguments.required("LINE", values->line, "rows of the upper part");
  declare_pages(arguments, values->pages);
  values->saving.declare(arguments);
  return [values](const Streams& streams) { return cut(*values, streams); };
}

}  // namespace

const Verb kCut{"cut", "Cut a picture in two at a line.", declare};

}  // namespace vorel::cli
