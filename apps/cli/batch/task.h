// The work on one input of a batch, as a worker does it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/batch/inputs.h"
#include "cli/batch/naming.h"
#include "cli/chain.h"
#include "cli/pages.h"
#include "cli/saving_options.h"

namespace vorel::cli::batch {

// What is done to each input. The same settings and inputs give the same outputs.
struct Settings {
  SavingOptions saving;
  std::string name = kUsualName, pages, dpi, most_pixels, most_memory;

  void declare(Arguments& arguments);
  static std::vector<std::string> own_words(std::vector<std::string> options);  // those that declare() knows
  Limits limits() const;
};

struct PlacedFile {
  std::string name;  // below the output folder, with slashes
  uint64_t bytes = 0;
};

struct Outcome {
  ExitCode code = ExitCode::kDone;
  std::string message;       // of a failure, beginning with the input's name
  std::string pages = "[]";  // JSON
  uint64_t page_count = 0;
  std::vector<PlacedFile> outputs = {};  // also of an input that failed later
  std::vector<std::string> losses = {};  // the same ones once
};

class Task {
 public:
  struct Places {
    std::filesystem::path output, scratch;  // on one file system
  };
  Task(Chain chain, Settings settings, Places places);

  // Never throws: failures are outcomes.
  Outcome work_on(const InputFile& input, bool may_replace) const;

 private:
  class Work;

  Chain chain_;
  Settings settings_;
  Naming naming_;
  Places places_;
};

}  // namespace vorel::cli::batch
