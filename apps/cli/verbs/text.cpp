// vorel text: a text file drawn as a picture.
#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

#include "cli/verbs/saving_options.h"
#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Arguments {
  std::string input, output;
  bool is_oem = false;
  SavingOptions saving;
};

// Carriage returns that something follows: each moves on to another line. A zero byte ends the text.
int64_t lines_begun(const std::string& text) {
  const size_t end = text.find('\0');
  std::string_view shown = std::string_view(text).substr(0, end);
  if (shown.ends_with('\r')) shown.remove_suffix(1);
  return std::ranges::count(shown, '\r');
}

int64_t line_height() {
  const ScratchFile one_line;
  std::ofstream(one_line.path(), std::ios::binary) << "x";
  const auto path = path_for_library(one_line.path());
  const Dib dib = path ? drawn_text(*path, false) : nullptr;
  if (!dib) throw std::bad_alloc();
  return DibLock(dib).header().biHeight;
}

// The library would cut the text off and show a message box.
void check_length(const Input& input) {
  constexpr int64_t kMostPixels = 32'767;
  std::ifstream file(input.path(), std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const int64_t height = line_height(), most = (kMostPixels - 2 - height) / height;
  if (lines_begun(text) <= most) return;
  throw Failure(
      ExitCode::kLimit, input.label(),
      fmt::format("the text has {} lines, and a picture holds {}; split the file", lines_begun(text) + 1, most + 1));
}

ExitCode draw(const Arguments& arguments, const Streams& streams) {
  const Saving saving = arguments.saving.saving_for(arguments.output);
  const Input input(arguments.input, streams.input);
  const Output output(arguments.output, arguments.saving.overwrite, streams.output);
  require_drawing(input.label(), "text");
  check_length(input);
  Picture picture{.label = input.label(), .header = {}, .dib = drawn_text(input.loading_path(), arguments.is_oem)};
  if (!picture.dib)
    throw Failure(ExitCode::kLimit, input.label(), "the text cannot be drawn for want of memory; close programs");
  picture.header = DibLock(picture.dib).header();
  write_picture(output, picture, saving);
  return ExitCode::kDone;
}

Action declare(CLI::App& app) {
  app.footer(
      "Black on white in the system's font, as large as the text takes. On Windows alone.\n\n"
      "Examples:\n"
      "  vorel text notes.txt notes.png\n"
      "  vorel text old.txt old.tif --oem");
  const auto arguments = std::make_shared<Arguments>();
  declare_argument(app, "IN", arguments->input, "the text file to read; - is standard input");
  declare_argument(app, "OUT", arguments->output, "the picture file to write; - is standard output");
  app.add_flag("--oem", arguments->is_oem, "the text is in the OEM code page (default: in the ANSI code page)");
  arguments->saving.declare(app);
  return [arguments](const Streams& streams) { return draw(*arguments, streams); };
}

}  // namespace

const Verb kText{"text", "Draw a text file as a picture.", declare};

}  // namespace vorel::cli
