#include "cli/verbs/transform.h"

#include "cli/verbs/saving_options.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string input, output, choice;
  int page = 1;
  SavingOptions saving;
};

ExitCode transform(const Arguments& arguments, Change change, const Streams& streams) {
  const Saving saving = arguments.saving.saving_for(arguments.output);
  const Input input(arguments.input, streams.input);
  const Output output(arguments.output, arguments.saving.overwrite, streams.output);
  Picture picture = load_picture(input, arguments.page);
  picture.dib = change(picture, arguments.choice);
  picture.header = DibLock(picture.dib).header();
  write_picture(output, picture, saving);
  return ExitCode::kDone;
}

}  // namespace

Action declare_transform(CLI::App& app, Change change, const Choice& choice) {
  const auto arguments = std::make_shared<Arguments>();
  // A blank instead of the type, which says nothing here.
  app.add_option("IN", arguments->input, "the picture file to read; - is standard input")->required()->option_text(" ");
  app.add_option("OUT", arguments->output, "the picture file to write; - is standard output")->required()->option_text(" ");
  if (!choice.values.empty()) {
    const auto option = app.add_option(choice.name, arguments->choice, choice.help);
    option->required()->check(CLI::IsMember(choice.values))->option_text(" ");
  }
  app.add_option("--page", arguments->page, "page of IN, counted from 1 (default: 1)")
      ->check(CLI::PositiveNumber)
      ->option_text("N");
  arguments->saving.declare(app);
  return [arguments, change](const Streams& streams) { return transform(*arguments, change, streams); };
}

Dib checked(const Picture& picture, HGLOBAL result) {
  if (result != nullptr) return Dib(result);
  throw Failure(ExitCode::kLimit, picture.label,
                "there is not enough memory for the result; close programs or scale it down");
}

}  // namespace vorel::cli
