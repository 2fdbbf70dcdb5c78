#include "cli/verbs/transform.h"

#include "cli/pixels.h"
#include "cli/verbs/saving_options.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string input, output;
  int page = 1;
  SavingOptions saving;
};

ExitCode transform(const Arguments& arguments, const Change& change, const Streams& streams) {
  const Saving saving = arguments.saving.saving_for(arguments.output);
  const Input input(arguments.input, streams.input);
  const Output output(arguments.output, arguments.saving.overwrite, streams.output);
  keep_pages(input, output);
  Picture picture = load_picture(input, arguments.page);
  picture.dib = change(picture);
  picture.header = DibLock(picture.dib).header();
  write_picture(output, picture, saving);
  return ExitCode::kDone;
}

}  // namespace

Action declare_transform(CLI::App& app, Change change) {
  const auto arguments = std::make_shared<Arguments>();
  declare_argument(app, "IN", arguments->input, "the picture file to read; - is standard input");
  declare_argument(app, "OUT", arguments->output, "the picture file to write; - is standard output");
  declare_page(app, arguments->page);
  arguments->saving.declare(app);
  return [arguments, change](const Streams& streams) { return transform(*arguments, change, streams); };
}

void declare_page(CLI::App& app, int& page) {
  app.add_option("--page", page, "page of IN, counted from 1 (default: 1)")->check(CLI::PositiveNumber)->option_text("N");
}

Dib on_background(Picture& picture, bool is_white, const Change& change) {
  constexpr uint32_t kBlack = 0, kWhite = 0xFFFFFF;
  const bool has_table = picture.header.biBitCount <= 8;
  const int index = nearest_index(picture, is_white ? kWhite : kBlack);
  const auto prepare_or_undo = [&](Picture& what) {
    if (has_table)
      exchange_with_first(what, index);
    else if (is_white)
      complement_bits(what);
  };
  prepare_or_undo(picture);
  Picture result{.label = picture.label, .header = {}, .dib = change(picture)};
  result.header = DibLock(result.dib).header();
  prepare_or_undo(result);
  clear_padding(result);
  return std::move(result.dib);
}

Dib checked(const Picture& picture, HGLOBAL result) {
  if (result != nullptr) return Dib(result);
  throw Failure(ExitCode::kLimit, picture.label,
                "there is not enough memory for the result; close programs or scale it down");
}

}  // namespace vorel::cli
