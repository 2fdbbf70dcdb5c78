#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string input, output, choice;
  bool overwrite = false;
};

}  // namespace

Action declare_transform(CLI::App& app, Change change, const Choice& choice) {
  const auto arguments = std::make_shared<Arguments>();
  // A blank instead of the type, which says nothing here.
  app.add_option("IN", arguments->input, "the bitmap file to read; - is standard input")->required()->option_text(" ");
  app.add_option("OUT", arguments->output, "the bitmap file to write; - is standard output")->required()->option_text(" ");
  app.add_flag("--overwrite", arguments->overwrite, "replace OUT if it exists (default: leave it alone and fail)");
  if (!choice.values.empty()) {
    const auto option = app.add_option(choice.name, arguments->choice, choice.help);
    option->required()->check(CLI::IsMember(choice.values))->option_text(" ");
  }
  return [arguments, change](const Streams& streams) {
    const Input input(arguments->input, streams.input);
    const Output output(arguments->output, arguments->overwrite, streams.output);
    Picture picture = load_bitmap(input);
    output.write(change(picture, arguments->choice));
    return ExitCode::kDone;
  };
}

Dib checked(const Picture& picture, HGLOBAL result) {
  if (result != nullptr) return Dib(result);
  throw Failure(ExitCode::kLimit, picture.label,
                "there is not enough memory for the result; close programs or scale it down");
}

}  // namespace vorel::cli
