// vorel clean: takes specks off.
#include <fmt/format.h>
#include <ostream>

#include "cli/pixels.h"
#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string input, output;
  int level = 0, page = 1;
  bool gentle = false, dry_run = false;
  SavingOptions saving;
};

uint64_t changed_pixels(const Picture& before, const Picture& after) {
  const DibLock before_lock(before.dib), after_lock(after.dib);
  const Pixels a(before_lock), b(after_lock);
  uint64_t changed = 0;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) changed += a.at(x, y) != b.at(x, y) ? 1 : 0;
  return changed;
}

ExitCode clean(const Arguments& arguments, const Streams& streams) {
  const Saving saving = arguments.saving.saving_for(arguments.output);
  const Input input(arguments.input, streams.input);
  const Output output(arguments.output, arguments.saving.overwrite || arguments.dry_run, streams.output);
  if (!arguments.dry_run) keep_pages(input, output);
  Picture picture = load_picture(input, arguments.page);
  prepare(picture, Reach::kMovesPixels);
  Picture cleaned{.label = picture.label,
                  .header = picture.header,
                  .dib = Dib(CleanImage(picture.dib.get(), arguments.level, arguments.gentle ? 0 : 1))};
  if (!cleaned.dib) {
    throw Failure(
        ExitCode::kFormat, picture.label,
        "only pictures of 1 and 8 bits per pixel whose colours are all greys can be cleaned; see \"vorel gray --help\"");
  }
  if (!arguments.dry_run) write_picture(output, cleaned, saving);
  if (arguments.output == "-" && !arguments.dry_run) return ExitCode::kDone;
  streams.output << fmt::format("{}: {} of {} pixels {}\n", arguments.input, changed_pixels(picture, cleaned),
                                static_cast<uint64_t>(picture.header.biWidth) * row_count(picture.header),
                                arguments.dry_run ? "would change" : "changed");
  return ExitCode::kDone;
}

Action declare(CLI::App& app) {
  app.footer(
      "In black and white a pixel goes by how many of its eight neighbours differ: the higher LEVEL, the more are needed.\n"
      "In greys it takes the value of one of them, a darker one the higher LEVEL. IN may have 1 or 8 bits per pixel and\n"
      "greys alone. OUT has the format that its ending names; see \"vorel convert --help\".\n\n"
      "Examples:\n"
      "  vorel clean fax.tif clean.tif 60\n"
      "  vorel clean fax.tif clean.tif 40 --gentle --dry-run");
  const auto arguments = std::make_shared<Arguments>();
  declare_argument(app, "IN", arguments->input, "the picture file to read; - is standard input");
  declare_argument(app, "OUT", arguments->output, "the picture file to write; - is standard output");
  declare_argument(app, "LEVEL", arguments->level, "from 20 to 100")->check(CLI::Range(20, 100));
  app.add_flag("--gentle", arguments->gentle, "change lonely pixels alone, and nearly black and white ones (default: all)");
  app.add_flag("--dry-run", arguments->dry_run, "tell how many pixels would change, and write nothing");
  declare_page(app, arguments->page);
  arguments->saving.declare(app);
  return [arguments](const Streams& streams) { return clean(*arguments, streams); };
}

}  // namespace

const Verb kClean{"clean", "Take specks off a scanned page, and tell how many pixels changed.", declare};

}  // namespace vorel::cli
