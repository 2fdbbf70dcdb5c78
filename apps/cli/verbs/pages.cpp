// vorel pages: files of several pages.
#include <fmt/format.h>
#include <numeric>
#include <ostream>
#include <span>
#include <vector>

#include "cli/page_work.h"
#include "cli/progress.h"

namespace vorel::cli {
namespace {

ExitCode count(const std::vector<std::string>& files, const Streams& streams) {
  return each_file(files, streams, [&](const std::string& file) {
    const size_t pages = Source(file, "", streams).size();
    streams.output << (files.size() == 1 ? fmt::format("{}\n", pages) : fmt::format("{} {}\n", pages, file));
  });
}

void put_all(std::span<const Source> sources, const Target& target, Progress& progress) {
  target.write([&](const Target::Put& put) {
    for (const Source& source : sources)
      for (size_t i = 0; i < source.size(); ++i) {
        progress.step();
        Page page = source.load(i);
        put(page);
      }
  });
}

ExitCode split(const std::string& in, const std::string& out, SavingOptions options, const Streams& streams) {
  options.numbered = true;
  Target target(out, options, streams);
  const Source source(in, "", streams);
  target.open(source.size(), {&source});
  Progress progress(streams, "page", static_cast<int>(source.size()));
  put_all({&source, 1}, target, progress);
  return ExitCode::kDone;
}

ExitCode join(std::vector<std::string> files, const SavingOptions& options, const Streams& streams) {
  const std::string out = files.back();
  files.pop_back();
  if (files.empty()) throw Failure(ExitCode::kWrongUse, out, "there is nothing to join; name the files to read, then OUT");
  if (!options.saving_for(out).format->holds_pages) {
    throw Failure(ExitCode::kWrongUse, out,
                  "pages are joined into TIFF, DCX and PNM files; end OUT in .tif or .dcx, or give --to tiff");
  }
  Target target(out, options, streams);
  std::vector<Source> sources;
  sources.reserve(files.size());
  for (const std::string& file : files) sources.emplace_back(file, "", streams);
  const size_t total =
      std::accumulate(sources.begin(), sources.end(), size_t{0}, [](size_t sum, const Source& s) { return sum + s.size(); });
  target.open(total, {});
  Progress progress(streams, "page", static_cast<int>(total));
  put_all(sources, target, progress);
  return ExitCode::kDone;
}

struct Values {
  std::vector<std::string> files;
  std::string input, output;
  SavingOptions saving;
};

Action declare(Arguments& arguments) {
  arguments.explain(
      "TIFF, DCX and GIF files and colour fax page sets have pages; any other picture file counts as one page.",
      "  vorel pages count fax.tif\n"
      "  vorel pages split fax.tif page.png        (makes page-1.png, page-2.png, ...)\n"
      "  vorel pages join cover.bmp fax.tif all.tif --compression g4");
  const auto values = std::make_shared<Values>();
  Arguments counting = arguments.verb("count", "Print the number of pages of each file.");
  counting.one_or_more("FILE", values->files, "one or more picture files; - is standard input");

  Arguments splitting = arguments.verb("split", "Write each page of IN as a file of its own.");
  splitting.required("IN", values->input, "the file to read; - is standard input");
  splitting.required("OUT", values->output, "name of the files to write; each gets -1, -2, ... before its ending");
  splitting.explain("", "  vorel pages split fax.tif page.png");

  Arguments joining = arguments.verb("join", "Write all pages of several files as one TIFF, DCX or PNM file.");
  joining.one_or_more("FILE", values->files, "the files to read, in order, and last the file OUT to write");
  joining.explain("", "  vorel pages join cover.bmp fax.tif all.tif --compression g4");

  // The two write with the same options; only the one that is used fills them in.
  values->saving.declare(splitting, {.numbering = false});
  values->saving.declare(joining, {.numbering = false});
  return [values, counting, splitting](const Streams& streams) {
    if (counting.is_given()) return count(values->files, streams);
    if (splitting.is_given()) return split(values->input, values->output, values->saving, streams);
    return join(values->files, values->saving, streams);
  };
}

}  // namespace

const Verb kPages{"pages", "Count, split and join the pages of files that have several.", declare};

}  // namespace vorel::cli
