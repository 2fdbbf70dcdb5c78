// vorel batch: several steps on the pages of many files.
#include "cli/batch/batch.h"

#include <memory>

#include "cli/chain.h"

namespace vorel::cli {
namespace {

struct Values {
  batch::Batch batch;
  std::vector<std::string> words;  // STEPS, if they are not in a file, and inputs
  std::string steps_file, output, shard;
};

void declare_inputs(Arguments& arguments, Values& values) {
  arguments.any_number("STEPS IN", values.words,
                       "what to do with each page, as for \"vorel run\"; then files, folders and patterns such as '*.tif'");
  arguments.option("--steps", values.steps_file, "FILE", "read STEPS from a file: a step per line, # begins a comment");
  arguments.option("--out", values.output, "DIR", "the folder that outputs go to; it is made if it is not there");
  arguments.flag("--recursive", values.batch.wanted.is_recursive, "take the folders in folders, too (default: their files)");
  arguments.option("--files-from", values.batch.wanted.list, "FILE",
                   "read names of inputs, one per line; - is standard input");
  arguments.flag("-0,--null", values.batch.wanted.ends_with_zero, "a zero byte ends each name of the list, not a line end");
}

void declare_run(Arguments& arguments, Values& values) {
  batch::Batch& batch = values.batch;
  arguments.option("--jobs", batch.jobs, "N", "inputs to work on at a time (default: as many as there are cores)",
                   {1, 1024});
  arguments.option("--shard", values.shard, "I/N", "take part I of N of the inputs, by their names (default: all)",
                   batch::Shard::wrong);
  arguments.flag("--resume", batch.resumes, "go on from where an earlier run of the same batch ended");
  arguments.flag("--checksum", batch.compares_sums, "tell changed inputs by what they hold (default: by size and time)");
  arguments.flag("--json", batch.as_json, "print a line of JSON for each input");
  arguments.flag("--dry-run", batch.is_trial, "list inputs and outputs, and do nothing");
}

std::string wrong_together(const Values& values) {
  if (values.output.empty()) return "--out is missing; name the folder that outputs go to";
  if (values.words.empty() && values.steps_file.empty()) return "STEPS is missing; write some like \"clean 60 | scale 50%\"";
  if (values.batch.wanted.ends_with_zero && values.batch.wanted.list.empty())
    return "--null is about the list of --files-from; give that, or leave --null out";
  return {};
}

ExitCode run(Values values, const Arguments& arguments, const Streams& streams) {
  batch::Batch& batch = values.batch;
  if (values.steps_file.empty()) {
    batch.steps = Chain::parse(values.words.front()).text();
    values.words.erase(values.words.begin());
  } else {
    batch.steps = Chain::from_file(values.steps_file).text();
  }
  batch.setting_words = batch::Settings::own_words(arguments.given_options());
  batch.shard = batch::Shard::parse(values.shard);
  batch.wanted.names = values.words;
  batch.wanted.output = path_of(values.output);
  return batch.run(streams);
}

Action declare(Arguments& arguments) {
  const auto values = std::make_shared<Values>();
  declare_inputs(arguments, *values);
  declare_run(arguments, *values);
  values->batch.settings.declare(arguments);
  arguments.check_together([values] { return wrong_together(*values); });
  arguments.explain(
      "Every input goes through the steps of \"vorel run\". One that fails is named, and the others go on. Outputs appear\n"
      "when they are whole; DIR/.vorel-batch keeps a journal, from which --resume goes on after any kind of end. It\n"
      "repeats inputs that failed, changed in size, time or (--checksum) content, or have no output any longer.\n"
      "Folders give their picture files, by their endings, but no hidden ones. Outputs keep the folders below the one that\n"
      "was named; --name makes other names from {dir} {stem} {name} {ext} {page} {pages} {index}, with widths as in "
      "{page:03}.\n"
      "With {page} each page gets a file of its own. Without --to, outputs have the format of their inputs.\n"
      "Names and options are checked before anything is done. The exit code is 1 if any input failed, 3 if there are no\n"
      "inputs, 130 after Ctrl+C and 143 after SIGTERM.",
      "  vorel batch \"clean 60 | rotate 90\" scans --recursive --out clean\n"
      "  vorel batch \"scale 50%\" 'scans/*/p*.tif' --out small --to png --name '{dir}/{stem}-{page:03}.{ext}'\n"
      "  find . -name '*.tif' -print0 | vorel batch --steps job.vorel --files-from - -0 --out done --resume --shard 2/8");
  return [values, arguments](const Streams& streams) { return run(*values, arguments, streams); };
}

}  // namespace

const Verb kBatch{"batch", "Do several steps with each page of many files, several at a time.", declare};

}  // namespace vorel::cli
