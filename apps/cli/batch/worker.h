// A worker process, seen from both ends.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/batch/process.h"
#include "cli/batch/task.h"
#include "cli/batch/wire.h"

namespace vorel::cli::batch {

// What makes the task of a worker: the steps and the options as words.
struct Orders {
  std::string steps;
  std::vector<std::string> options;
  Task::Places places;
};

// A worker that is started when it is needed, and again when it has ended.
class Worker {
 public:
  explicit Worker(const Orders& orders) : orders_(orders) {}

  // A worker that ends without an answer is an outcome, too. Throws Failure if none can be started.
  Outcome work_on(const InputFile& input, bool may_replace);

 private:
  void start();
  std::optional<Outcome> answer(const InputFile& input, bool may_replace);

  const Orders& orders_;
  std::unique_ptr<WorkerProcess> process_;
};

// What the worker process does: reads requests until their end, and answers each.
void serve(std::istream& requests, std::ostream& replies);

}  // namespace vorel::cli::batch
