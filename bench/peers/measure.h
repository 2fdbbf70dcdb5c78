// Measures participants beside each other.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "peers/workload.h"

namespace peers {

struct Participant {
  std::string name, command;
};

struct Plan {
  std::vector<Participant> participants;
  std::vector<std::string> prefixes;  // of workload names; empty for all workloads
  int repetitions = 7;
  int core = 0;
  bool keeps_memory = true;
  bool is_large = false;  // workloads in two sizes; otherwise all but the large ones

  bool takes(const Workload& workload) const;
};

// Nanoseconds per pixel of each participant that has the operation; negative if it failed.
using Figures = std::map<std::string, double>;
using Run = std::map<std::string, Figures, std::less<>>;

Run measure(const Plan& plan);

double median(std::vector<double> values);

}  // namespace peers
