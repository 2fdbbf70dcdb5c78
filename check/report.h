// What a driver found. The last line of its output is counted by the goal's script.
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

  // The run's one report, which a crash ends too.
  inline static long calls_ = 0, faults_ = 0;
};

// Names what runs, for the line that is printed if the process crashes.
void at_work(const char* what, long number);

}  // namespace check
