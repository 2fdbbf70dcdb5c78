// The step clean: takes specks off.
#include <fmt/format.h>
#include <memory>

#include "cli/step.h"
#include "common/forms.h"
#include "common/operations.h"

namespace vorel::cli {
namespace {

struct Options {
  int level = 0;
  bool gentle = false;
};

void clean(Page& page, const Options& options) {
  const auto method = options.gentle ? programs::Cleaning::kGentle : programs::Cleaning::kAll;
  const programs::Picture before = programs::workable(std::move(page.picture));
  page.picture = programs::cleaned(before.lent(), options.level, method);
  const uint64_t changed = programs::compared(before, page.picture).different;
  const uint64_t pixels = uint64_t{1} * before.width() * before.height();
  page.tell(fmt::format("{} of {} pixels {}", changed, pixels, page.is_trial ? "would change" : "changed"),
            {{"pixels", static_cast<int64_t>(pixels)}, {"changed", static_cast<int64_t>(changed)}});
}

Change declare(Arguments& arguments) {
  arguments.explain(
      "In black and white a pixel becomes black if more of its eight neighbours are black than LEVEL asks for, and white\n"
      "if fewer are: 20 thickens what is black, 60 to 70 take specks off, 100 thins. In greys it takes the value of one\n"
      "of its neighbours, a lighter one the higher LEVEL. IN has 1 or 8 bits per pixel and greys alone.",
      "  vorel clean fax.tif clean.tif 60\n"
      "  vorel clean fax.tif clean.tif 60 --gentle --dry-run");
  const auto options = std::make_shared<Options>();
  arguments.required("LEVEL", options->level, "from 20 to 100", {20, 100});
  arguments.flag("--gentle", options->gentle,
                 "leave alone what has four or more black neighbours and, in greys, what is not nearly black or white");
  return [options](Page& page) { clean(page, *options); };
}

}  // namespace

const Step kClean{"clean", "Take specks off a scanned page, and tell how many pixels changed.", declare, true};

}  // namespace vorel::cli
