// vorel text: a text file drawn as a picture.
#include <algorithm>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

#include "cli/page_work.h"
#include "common/platform.h"

namespace vorel::cli {
namespace {

struct Values {
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
  const auto path = programs::path_for_library(one_line.path());
  if (!path) throw std::bad_alloc();
  return drawn_text(*path, false).height();
}

// The library would cut the text off and show a message box.
void check_length(const Input& input) {
  constexpr int64_t kMostPixels = 32'767;
  std::ifstream file(input.file().path(), std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const int64_t height = line_height(), most = (kMostPixels - 2 - height) / height;
  if (lines_begun(text) <= most) return;
  throw Failure(
      ExitCode::kLimit, input.label(),
      fmt::format("the text has {} lines, and a picture holds {}; split the file", lines_begun(text) + 1, most + 1));
}

ExitCode draw(const Values& values, const Streams& streams) {
  Target target(values.output, values.saving, streams);
  const Input input(values.input, streams.input);
  target.open(1, {});
  about(input.label(), [&] {
    programs::require_drawing("text");
    check_length(input);
    target.write([&](const Target::Put& put) {
      Page page{input.label(), drawn_text(input.file().usable_name(), values.is_oem)};
      put(page);
    });
  });
  return ExitCode::kDone;
}

Action declare(Arguments& arguments) {
  arguments.explain("Black on white in the system's font, as large as the text needs.",
                    "  vorel text notes.txt notes.png\n"
                    "  vorel text old.txt old.tif --oem");
  const auto values = std::make_shared<Values>();
  arguments.required("IN", values->input, "the text file to read; - is standard input");
  declare_output(arguments, values->output);
  arguments.flag("--oem", values->is_oem, "the text is in the OEM code page (default: in the ANSI code page)");
  values->saving.declare(arguments, {.numbering = false});
  return [values](const Streams& streams) { return draw(*values, streams); };
}

}  // namespace

const Verb kText{"text", "Draw a text file as a picture.", declare, true};

}  // namespace vorel::cli
