// vorel print: pictures to a printer.
#include <filesystem>
#include <limits>

#include "cli/page_reader.h"
#include "cli/printing.h"
#include "cli/progress.h"
#include "cli/verb.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::vector<std::string> files;
  std::string printer, center;
  int copies = 1;
  bool fits = false, stretches = false, by_image = false, by_printer_dots = false;

  ImgPrintOptions options() const {
    ImgPrintOptions options = {};
    options.centreHorizontally = center == "both" || center == "across";
    options.centreVertically = center == "both" || center == "down";
    options.fitProportionally = fits;
    options.stretchToPage = stretches;
    options.useImageDpi = !by_printer_dots;
    options.copies = 1;  // the tool prints a page again instead: most printers put the library's copies on one sheet
    return options;
  }
};

std::string document_name(const std::vector<std::string>& files) {
  const std::string name = std::filesystem::path(files.front()).filename().string();
  return files.size() == 1 ? name : name + " and others";
}

ExitCode print(const Arguments& arguments, const Streams& streams) {
  require_printing();
  PageReader reader(arguments.files, streams.input);
  const int64_t pages = int64_t{reader.total()} * arguments.copies;
  if (pages > std::numeric_limits<int>::max()) {
    throw Failure(ExitCode::kWrongUse, "--copies", "so many pages cannot be counted; print fewer copies");
  }
  PrintJob job(arguments.printer, document_name(arguments.files), arguments.options(), static_cast<int>(pages));
  Progress progress(streams, "page", static_cast<int>(pages));
  for (int index = 0; auto picture = reader.next();) {
    prepare(*picture, Reach::kMovesRows);
    for (int copy = 0; copy < arguments.copies; ++copy) {
      progress.step();
      job.print(*picture, index++);
    }
  }
  job.end();
  return ExitCode::kDone;
}

Action declare(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  app.add_option("FILE", arguments->files, "one or more picture files; - is standard input")->required()->option_text(" ");
  app.add_option("--printer", arguments->printer, "its name as the system lists it (default: the default printer)")
      ->option_text("NAME");
  app.add_option("--copies", arguments->copies, "sheets of each page, one after another (default: 1)")
      ->check(CLI::PositiveNumber)
      ->option_text("N");
  CLI::Option* fit = app.add_flag("--fit", arguments->fits, "as large as the page allows, in proportion");
  app.add_flag("--stretch", arguments->stretches, "over the whole page, out of proportion")->excludes(fit);
  app.add_option("--center", arguments->center, "on the page: across, down or both (default: at its top left)")
      ->check(CLI::IsMember({"across", "down", "both"}))
      ->option_text("WHICH");
  CLI::Option* image_dpi =
      app.add_flag("--image-dpi", arguments->by_image, "at the size that the picture's resolution says (default)");
  app.add_flag("--printer-dpi", arguments->by_printer_dots, "one printer dot for each pixel")->excludes(image_dpi);
  app.footer(
      "All pages of all files are one document; each begins a sheet. Pictures without a resolution are printed with one "
      "dot\n"
      "for each pixel, and what is larger than the page is cut off, unless --fit or --stretch is given. No window opens.\n"
      "Needs the Windows build.\n\n"
      "Examples:\n"
      "  vorel print scan.tif\n"
      "  vorel print cover.png fax.tif --fit --center both --printer \"Office Laser\" --copies 2");
  return [arguments](const Streams& streams) { return print(*arguments, streams); };
}

}  // namespace

const Verb kPrint{"print", "Print pictures without asking (Windows build only).", declare};

}  // namespace vorel::cli
