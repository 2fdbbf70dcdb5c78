// vorel clean: takes specks off.
#include <fmt/format.h>
#include <optional>
#include <ostream>

#include "cli/verbs/transform.h"
#include "common/forms.h"

namespace vorel::cli {
namespace {

struct Values {
  std::string input, output, pages;
  int level = 0;
  bool gentle = false, dry_run = false;
  SavingOptions saving;
};

ExitCode clean(const Values& values, const Streams& streams) {
  Target target(values.output, values.saving, streams);
  const Source source(values.input, values.pages, streams);
  if (!values.dry_run) target.open(source.size(), {&source});
  std::string report;
  const auto cleaned = [&](const Page& page) {
    const auto method = values.gentle ? programs::Cleaning::kGentle : programs::Cleaning::kAll;
    programs::Picture before = about(page.label, [&] { return programs::workable(page.picture.copy()); });
    Page after{page.label, about(page.label, [&] { return programs::cleaned(before.copy(), values.level, method); })};
    report += fmt::format("{}: {} of {} pixels {}\n", page.label, programs::count_differences(before, after.picture),
                          uint64_t{static_cast<unsigned>(before.width())} * static_cast<unsigned>(before.height()),
                          values.dry_run ? "would change" : "changed");
    return after;
  };
  const auto clean_all = [&](const Target::Put& put) {
    for (size_t i = 0; i < source.size(); ++i) put(cleaned(source.load(i)));
  };
  if (values.dry_run)
    clean_all([](const Page&) {});
  else
    target.write(clean_all);
  if (!target.is_standard_output() || values.dry_run) streams.output << report;
  return ExitCode::kDone;
}

Action declare(Arguments& arguments) {
  arguments.explain(
      "In black and white a pixel becomes black if more of its eight neighbours are black than LEVEL asks for, and white "
      "if\n"
      "fewer are: 20 thickens what is black, 60 to 70 take specks off, 100 thins. In greys it takes the value of one of\n"
      "its neighbours, a lighter one the higher LEVEL. IN may have 1 or 8 bits per pixel and greys alone. OUT has the\n"
      "format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel clean fax.tif clean.tif 60\n"
      "  vorel clean fax.tif clean.tif 60 --gentle --dry-run");
  const auto values = std::make_shared<Values>();
  declare_input(arguments, values->input);
  declare_output(arguments, values->output);
  arguments.required("LEVEL", values->level, "from 20 to 100", {20, 100});
  arguments.flag("--gentle", values->gentle,
                 "leave alone what has four or more black neighbours and, in greys, what is not nearly black or white");
  arguments.flag("--dry-run", values->dry_run, "tell how many pixels would change, and write nothing");
  declare_pages(arguments, values->pages);
  values->saving.declare(arguments);
  return [values](const Streams& streams) { return clean(*values, streams); };
}

}  // namespace

const Verb kClean{"clean", "Take specks off a scanned page, and tell how many pixels changed.", declare};

}  // namespace vorel::cli
