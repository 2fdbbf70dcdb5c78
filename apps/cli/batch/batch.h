// Many inputs, several at a time.
#pragma once

#include <string>
#include <vector>

#include "cli/batch/inputs.h"
#include "cli/batch/shard.h"
#include "cli/batch/task.h"
#include "cli/verb.h"

namespace vorel::cli::batch {

class Batch {
 public:
  std::string steps;  // in their one spelling
  Settings settings;
  std::vector<std::string> setting_words;  // the settings that were given, as words
  Wanted wanted;
  Shard shard;
  int jobs = 0;  // 0: as many as there are cores
  bool resumes = false, compares_sums = false, as_json = false, is_trial = false;

  // Throws Failure for what stops all of it. An input that fails is reported, and the others go on.
  ExitCode run(const Streams& streams) const;

 private:
  std::string journal_title() const;
};

}  // namespace vorel::cli::batch
