// The faults that a driver finds. The goal's script reads the last line.
#pragma once

#include <cstdio>
#include <string>

namespace check {

class Report {
 public:
  void fault(const std::string& where, const std::string& what) {
    constexpr long kShown = 200;
    if (++faults_ <= kShown) std::printf("FAULT %s: %s\n", where.c_str(), what.c_str()), std::fflush(stdout);
  }
  void count(long calls = 1) { calls_ += calls; }

  // Prints the line and returns the exit status.
  int end() const {
    std::printf("calls=%ld faults=%ld\n", calls_, faults_);
    std::fflush(stdout);
    return faults_ == 0 ? 0 : 1;
  }

  // One report for the process: the crash handler prints it too.
  inline static long calls_ = 0, faults_ = 0;
};

// Names the current call for the crash handler.
void at_work(const char* what, long number);

}  // namespace check
