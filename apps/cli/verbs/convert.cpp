// vorel convert: load and save.
#include "cli/extent.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

programs::Picture with_resolution(programs::Picture picture, const std::string& dpi) {
  if (dpi.empty()) return picture;
  const Size per_inch = parse_dpi(dpi);
  picture.set_resolution(per_metre(per_inch.width), per_metre(per_inch.height));
  return picture;
}

Action declare(Arguments& arguments) {
  arguments.explain(
      std::string(kSavingHelp) +
      "Pixels, colours and resolution stay as they are where the format of OUT has room for them. A bitmap made of\n"
      "a bitmap keeps run-length compression, row order and 16 or 32 bits per pixel too; other formats get 24 bits.\n"
      "What is transparent in IN becomes white. Metafiles too large to be drawn come out smaller, at the resolution that\n"
      "belongs to that.\n\n"
      "Examples:\n"
      "  vorel convert scan.tif scan.png\n"
      "  vorel convert fax.tif page3.bmp --page 3\n"
      "  vorel convert fax.tif page.png --numbered      (makes page-1.png, page-2.png, ...)\n"
      "  vorel convert page.bmp page.tif --compression g4 --dpi 300 --overwrite\n"
      "  vorel convert - - --to png < scan.tif > scan.png");
  const auto dpi = std::make_shared<std::string>();
  const Action action =
      declare_transform(arguments, [dpi](programs::Picture picture) { return with_resolution(std::move(picture), *dpi); });
  arguments.option("--dpi", *dpi, "N|XxY", "resolution that OUT states, the pixels staying (default: that of IN)",
                   dpi_is_wrong);
  return action;
}

}  // namespace

const Verb kConvert{"convert", "Write a picture anew, in the same or another format.", declare};

}  // namespace vorel::cli
