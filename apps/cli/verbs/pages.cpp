// vorel pages: files of several pages.
#include <filesystem>
#include <fmt/format.h>
#include <ostream>
#include <vector>

#include "cli/page_reader.h"
#include "cli/picture.h"
#include "cli/progress.h"
#include "cli/verb.h"
#include "cli/verbs/saving_options.h"

namespace vorel::cli {
namespace {

ExitCode count(const std::vector<std::string>& files, const Streams& streams) {
  return each_file(files, streams, [&](const std::string& file) {
    const int pages = known_pages(Input(file, streams.input));
    streams.output << (files.size() == 1 ? fmt::format("{}\n", pages) : fmt::format("{} {}\n", pages, file));
  });
}

// "page.tif" and 7 of 12 give "page-07.tif".
std::string numbered(const std::string& name, int page, int pages) {
  const size_t dot = name.find_last_of("./\\");
  const size_t end = dot != std::string::npos && name[dot] == '.' ? dot : name.size();
  const auto digits = std::to_string(pages).size();
  return fmt::format("{}-{:0{}}{}", name.substr(0, end), page, digits, name.substr(end));
}

ExitCode split(const std::string& in, const std::string& out, const SavingOptions& options, const Streams& streams) {
  const Saving saving = options.saving_for(out);
  if (out == "-") throw Failure(ExitCode::kWrongUse, out, "pages go to files of their own; give OUT a name");
  const Input input(in, streams.input);
  const int pages = known_pages(input);
  // All names are looked at first: half a set of pages is of no use.
  for (int page = 1; page <= pages; ++page) Output(numbered(out, page, pages), options.overwrite, streams.output);
  Progress progress(streams, "page", pages);
  for (int page = 1; page <= pages; ++page) {
    progress.step();
    Picture picture = load_picture(input, page);
    write_picture(Output(numbered(out, page, pages), options.overwrite, streams.output), picture, saving);
  }
  return ExitCode::kDone;
}

ExitCode join(std::vector<std::string> files, const SavingOptions& options, const Streams& streams) {
  const std::string out = files.back();
  files.pop_back();
  if (files.empty()) throw Failure(ExitCode::kWrongUse, out, "there is nothing to join; name the files to read, then OUT");
  const Saving saving = options.saving_for(out);
  if (saving.format->code != IMG_FORMAT_TIFF) {
    throw Failure(ExitCode::kWrongUse, out, "pages are joined into TIFF files; end OUT in .tif, or give --to tiff");
  }
  const Output output(out, options.overwrite, streams.output);
  PageReader reader(files, streams.input);
  Progress progress(streams, "page", reader.total());
  write_pages(
      output,
      [&] {
        auto picture = reader.next();
        if (picture) progress.step();
        return picture;
      },
      saving);
  return ExitCode::kDone;
}

struct Arguments {
  std::vector<std::string> files;
  std::string input, output;
  SavingOptions saving;
};

Action declare(CLI::App& app) {
  app.require_subcommand(1);
  const auto formatter = std::make_shared<CLI::Formatter>();  // the tool's own is shared by all verbs
  formatter->column_width(24);
  formatter->label("SUBCOMMAND", "count|split|join ...");
  app.formatter(formatter);
  app.footer(
      "TIFF, DCX and GIF files and colour fax page sets have pages; any other picture file counts as one page.\n\n"
      "Examples:\n"
      "  vorel pages count fax.tif\n"
      "  vorel pages split fax.tif page.png        (makes page-1.png, page-2.png, ...)\n"
      "  vorel pages join cover.bmp fax.tif all.tif --compression g4");

  const auto arguments = std::make_shared<Arguments>();
  CLI::App* counting = app.add_subcommand("count", "Print the number of pages of each file.");
  counting->add_option("FILE", arguments->files, "one or more picture files; - is standard input")
      ->required()
      ->option_text(" ");

  CLI::App* splitting = app.add_subcommand("split", "Write each page of IN as a file of its own.");
  splitting->add_option("IN", arguments->input, "the file to read; - is standard input")->required()->option_text(" ");
  splitting->add_option("OUT", arguments->output, "name of the files to write; each gets -1, -2, ... before its ending")
      ->required()
      ->option_text(" ");
  splitting->footer("Example:\n  vorel pages split fax.tif page.png");

  CLI::App* joining = app.add_subcommand("join", "Write all pages of several files as one TIFF file.");
  joining->add_option("FILE", arguments->files, "the files to read, in order, and last the TIFF file OUT to write")
      ->required()
      ->option_text(" ");
  joining->footer("Example:\n  vorel pages join cover.bmp fax.tif all.tif --compression g4");

  // The two write with the same options; only the one that is used fills them in.
  arguments->saving.declare(*splitting);
  arguments->saving.declare(*joining);
  return [=](const Streams& streams) {
    if (counting->parsed()) return count(arguments->files, streams);
    if (splitting->parsed()) return split(arguments->input, arguments->output, arguments->saving, streams);
    return join(arguments->files, arguments->saving, streams);
  };
}

}  // namespace

const Verb kPages{"pages", "Count, split and join the pages of files that have several.", declare};

}  // namespace vorel::cli
