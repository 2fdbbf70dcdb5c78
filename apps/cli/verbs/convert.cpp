// vorel convert: load and save.
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

Dib unchanged(Picture& picture, const std::string&) { return std::move(picture.dib); }

Action declare(CLI::App& app) {
  app.footer(
      "OUT is a Windows bitmap with a 40-byte header, whichever header IN has. Pixels and resolution stay as they\n"
      "are, run-length compression and row order too. IN may have 1, 4, 8, 16, 24 or 32 bits per pixel.\n\n"
      "Examples:\n"
      "  vorel convert old.bmp new.bmp\n"
      "  vorel convert scan.dib scan.bmp --overwrite\n"
      "  vorel convert - - < old.bmp > new.bmp");
  return declare_transform(app, unchanged);
}

}  // namespace

const Verb kConvert{"convert", "Write a picture anew as a plain Windows bitmap.", declare};

}  // namespace vorel::cli
