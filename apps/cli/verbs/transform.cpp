#include "cli/verbs/transform.h"

namespace vorel::cli {
namespace {

struct Values {
  std::string input, output, pages;
  SavingOptions saving;
};

ExitCode transform(const Values& values, const Change& change, const Streams& streams) {
  Target target(values.output, values.saving, streams);
  const Source source(values.input, values.pages, streams);
  target.open(source.size(), {&source});
  write_changed(source, target, change, streams);
  return ExitCode::kDone;
}

}  // namespace

Action declare_transform(Arguments& arguments, Change change) {
  const auto values = std::make_shared<Values>();
  declare_input(arguments, values->input);
  declare_output(arguments, values->output);
  declare_pages(arguments, values->pages);
  values->saving.declare(arguments);
  return [values, change](const Streams& streams) { return transform(*values, change, streams); };
}

void declare_input(Arguments& arguments, std::string& input) {
  arguments.required("IN", input, "the picture file to read; - is standard input");
}

void declare_output(Arguments& arguments, std::string& output) {
  arguments.required("OUT", output, "the picture file to write; - is standard output");
}

}  // namespace vorel::cli
