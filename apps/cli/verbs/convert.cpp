// vorel convert: load and save.
#include "cli/extent.h"
#include "cli/page_work.h"

namespace vorel::cli {
namespace {

struct Values {
  PageWork work;
  std::string dpi;
};

Action declare(Arguments& arguments) {
  arguments.explain(
      std::string(kSavingHelp) +
          "Pixels, colours and resolution stay as they are where the format of OUT has room for them. A bitmap made of\n"
          "a bitmap keeps run-length compression, row order and 16 or 32 bits per pixel too; other formats get 24 bits.\n"
          "What is transparent in IN becomes white. Metafiles too large to be drawn come out smaller, at the resolution "
          "that\n"
          "belongs to that.",
      "  vorel convert scan.tif scan.png\n"
      "  vorel convert fax.tif page3.bmp --page 3\n"
      "  vorel convert fax.tif page.png --numbered      (makes page-1.png, page-2.png, ...)\n"
      "  vorel convert page.bmp page.tif --compression g4 --dpi 300 --overwrite\n"
      "  vorel convert - - --to png < scan.tif > scan.png");
  const auto values = std::make_shared<Values>();
  values->work.declare_files(arguments);
  declare_dpi(arguments, values->dpi);
  values->work.declare_options(arguments, PageWork::Reports::kNever);
  return [values](const Streams& streams) {
    const auto change = [&](Page& page) {
      if (!values->dpi.empty()) state_dpi(page.picture, values->dpi);
    };
    return values->work.run(change, streams);
  };
}

}  // namespace

const Verb kConvert{"convert", "Write a picture anew, in the same or another format.", declare};

}  // namespace vorel::cli
