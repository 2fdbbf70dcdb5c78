// vorel print: pictures to a printer.
#include <fmt/format.h>
#include <limits>
#include <ostream>

#include "cli/file_names.h"
#include "cli/page_work.h"
#include "cli/printing.h"
#include "cli/progress.h"

namespace vorel::cli {
namespace {

struct Values {
  std::vector<std::string> files;
  std::string printer, center, pages;
  int copies = 1;
  bool lists = false, true_size = false, fits = false, stretches = false, by_image = false, by_printer_dots = false,
       upright = false;

  PaperLayout layout() const {
    PaperLayout layout;
    layout.sizing = fits        ? PaperSizing::kFit
                    : stretches ? PaperSizing::kStretch
                    : true_size ? PaperSizing::kTrueSize
                                : PaperSizing::kShrink;
    layout.by_printer_dots = by_printer_dots;
    layout.may_turn = !upright;
    layout.is_centered_across = center == "both" || center == "across";
    layout.is_centered_down = center == "both" || center == "down";
    return layout;
  }
};

std::string document_name(const std::vector<std::string>& files) {
  const std::string first = name_of(path_of(files.front()).filename());
  return files.size() == 1 ? first : first + " and others";
}

// Half a document on paper is of no use: all pages are loaded once before the first one is printed.
std::vector<Source> checked_sources(const Values& values, const Streams& streams) {
  std::vector<Source> sources;
  sources.reserve(values.files.size());
  for (const std::string& file : values.files) sources.emplace_back(file, values.pages, streams);
  for (const Source& source : sources)
    for (size_t i = 0; i < source.size(); ++i) source.load(i);
  return sources;
}

int sheet_count(const std::vector<Source>& sources, int copies) {
  uint64_t pages = 0;
  for (const Source& source : sources) pages += source.size();
  pages *= static_cast<uint64_t>(copies);
  if (pages <= static_cast<uint64_t>(std::numeric_limits<int>::max())) return static_cast<int>(pages);
  throw Failure(ExitCode::kWrongUse, "--copies", "so many pages cannot be counted; print fewer copies");
}

void print_page(PrintJob& job, Page page, const PaperLayout& layout, int sheet, bool is_first_copy, const Streams& streams) {
  const OnPaper shown = about(page.label, [&] { return fitted(std::move(page.picture), layout, job.paper()); });
  if (!shown.cut.empty() && is_first_copy)
    print_note(streams.errors, fmt::format("{}: {} lie outside what the printer reaches and are cut off; leave --true-size "
                                           "out to have the page shrunk",
                                           page.label, shown.cut));
  job.print(shown.picture, sheet);
}

ExitCode print(const Values& values, const Streams& streams) {
  require_printing();
  if (values.lists) {
    for (const std::string& name : names_of_printers()) streams.output << name << '\n';
    return ExitCode::kDone;
  }
  if (values.files.empty()) throw Failure(ExitCode::kWrongUse, "print", "there is nothing to print; name one or more files");
  const std::vector<Source> sources = checked_sources(values, streams);
  const int sheets = sheet_count(sources, values.copies);
  const PaperLayout layout = values.layout();
  PrintJob job(values.printer, document_name(values.files), layout, sheets);
  Progress progress(streams, "page", sheets);
  int sheet = 0;
  for (int copy = 0; copy < values.copies; ++copy)
    for (const Source& source : sources)
      for (size_t i = 0; i < source.size(); ++i) {
        progress.step();
        print_page(job, source.load(i), layout, sheet++, copy == 0, streams);
      }
  job.end();
  return ExitCode::kDone;
}

Action declare(Arguments& arguments) {
  const auto values = std::make_shared<Values>();
  arguments.any_number("FILE", values->files, "one or more picture files; - is standard input");
  arguments.option("--printer", values->printer, "NAME", "its name as --list shows it (default: the default printer)");
  arguments.flag("--list", values->lists, "list the printers, the default one first, and print nothing");
  declare_pages(arguments, values->pages, "each file");
  arguments.option("--copies", values->copies, "N", "of the whole document, one after another (default: 1)", kFromOne);
  arguments.flag("--true-size", values->true_size, "cut off what is larger than the page (default: shrink it to fit)");
  arguments.flag("--fit", values->fits, "print as large as the page allows, in proportion");
  arguments.flag("--stretch", values->stretches, "print over the whole page, out of proportion");
  arguments.flag("--upright", values->upright, "turn nothing (default: turn a page by a quarter where it fits better)");
  arguments.option("--center", values->center, "WHICH",
                   "centre on the page: across, down or both (default: print at its top left)",
                   one_of({"across", "down", "both"}));
  arguments.flag("--image-dpi", values->by_image, "print at the size that follows from the picture's resolution (default)");
  arguments.flag("--printer-dpi", values->by_printer_dots, "print one printer dot for each pixel");
  arguments.exclude("--stretch", "--fit");
  arguments.exclude("--true-size", "--fit");
  arguments.exclude("--true-size", "--stretch");
  arguments.exclude("--printer-dpi", "--image-dpi");
  arguments.explain(
      "All pages of all files are one document; each begins a sheet. Pictures without a resolution are printed with one\n"
      "dot for each pixel. Nothing is printed if a file cannot be read. No window opens.",
      "  vorel print scan.tif\n"
      "  vorel print cover.png fax.tif --fit --center both --printer \"Office Laser\" --copies 2");
  return [values](const Streams& streams) { return print(*values, streams); };
}

}  // namespace

const Verb kPrint{"print", "Print pictures without asking.", declare, true};

}  // namespace vorel::cli
