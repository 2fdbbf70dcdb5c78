// How far long work has come, for somebody who watches.
#pragma once

#include <fmt/format.h>
#include <ostream>
#include <string>

#include "cli/platform.h"
#include "cli/verb.h"

namespace vorel::cli {

// Counts steps in one line of the standard error stream while that is a terminal, and wipes the line at the end.
class Progress {
 public:
  Progress(const Streams& streams, std::string what, int steps)
      : stream_(streams.errors), what_(std::move(what)), steps_(steps), shown_(streams.is_watched && steps > 1) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (shown_) stream_ << fmt::format("\r{:{}}\r", "", line_.size()) << std::flush;
  }

  void step() {
    ++step_;
    line_ = fmt::format("{} {} of {}", what_, step_, steps_);
    if (shown_) stream_ << '\r' << line_ << std::flush;
  }

 private:
  std::ostream& stream_;
  std::string what_, line_;
  int steps_, step_ = 0;
  bool shown_;
};

}  // namespace vorel::cli
