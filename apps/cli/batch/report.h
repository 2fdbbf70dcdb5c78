// What becomes of the inputs of a batch, for people and programs.
#pragma once

#include <chrono>
#include <map>
#include <string>

#include "cli/batch/task.h"
#include "cli/verb.h"

namespace vorel::cli::batch {

class Report {
 public:
  Report(const Streams& streams, bool as_json, size_t inputs);
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report() { wipe(); }

  void skipped(const InputFile& input);
  void ended(const InputFile& input, const Outcome& outcome, double seconds);
  void stopped();

  // The last lines.
  void sum_up();

  bool has_failures() const { return failed_ > 0; }

 private:
  void print_json(const InputFile& input, const char* status, const Outcome& outcome, double seconds);
  void show_progress();
  void wipe();
  double seconds() const;

  using Clock = std::chrono::steady_clock;

  const Streams& streams_;
  bool as_json_;
  size_t inputs_, skipped_ = 0, done_ = 0, failed_ = 0;
  uint64_t pages_ = 0;
  std::map<std::string, size_t> losses_;  // and how many inputs have them
  Clock::time_point start_ = Clock::now(), shown_;
  size_t line_length_ = 0;  // of the progress on the screen
};

}  // namespace vorel::cli::batch
