// vorel convert: load and save.
#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

Dib unchanged(Picture& picture) { return std::move(picture.dib); }

Action declare(CLI::App& app) {
  app.footer(std::string(kSavingHelp) +
             "Pixels, colours and resolution stay as they are where the format of OUT has room for them. A bitmap made of\n"
             "a bitmap keeps run-length compression and row order too. What is transparent in IN becomes white.\n\n"
             "Examples:\n"
             "  vorel convert scan.tif scan.png\n"
             "  vorel convert fax.tif page3.bmp --page 3\n"
             "  vorel convert page.bmp page.tif --compression g4 --overwrite\n"
             "  vorel convert - - --to png < scan.tif > scan.png");
  return declare_transform(app, unchanged);
}

}  // namespace

const Verb kConvert{"convert", "Write a picture anew, in the same or another format.", declare};

}  // namespace vorel::cli
