// The driver. Every participant is a process pinned to one core; participants take turns at each workload. Prints Markdown; figures
// are medians of processor time, in nanoseconds per pixel.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sched.h>

#include "peers/report.h"

namespace {

int last_core() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  sched_getaffinity(0, sizeof cores, &cores);
  for (int core = CPU_SETSIZE - 1; core > 0; --core)
    if (CPU_ISSET(core, &cores)) return core;
  return 0;
}

}  // namespace

int main(int count, char** values) try {
  CLI::App app("Measures the library beside peers, or one build beside another.", "peers_bench");
  peers::Plan plan;
  plan.core = last_core();
  std::vector<std::string> participants, tables;
  std::string json;
  bool is_fresh = false;
  app.add_option("--participant", participants,
                 "NAME=COMMAND: the library (\"ours\"), memcpy, a peer; or \"native\" and \"dll\"");
  app.add_option("--only", plan.prefixes, "names of workloads, or what they begin with")->delimiter(',');
  app.add_option("--repeat", plan.repetitions, "samples per participant and workload (default: 7)")
      ->check(CLI::Range(1, 1000));
  app.add_option("--core", plan.core, "the core to run on (default: the last)");
  app.add_flag("--fresh", is_fresh, "let the C library give freed blocks back, so that results cost new pages");
  app.add_flag("--large", plan.is_large, "nine times as many pixels, beside the usual size");
  app.add_option("--json", json, "writes the figures to a file");
  app.add_option("--table", tables, "prints the medians of such files instead of measuring");
  CLI11_PARSE(app, count, values);
  plan.keeps_memory = !is_fresh;
  for (const std::string& text : participants) {
    const size_t equals = text.find('=');
    plan.participants.push_back({text.substr(0, equals), text.substr(equals + 1)});
  }
  const peers::Run run = tables.empty() ? peers::measure(plan) : peers::merged(tables);
  if (!json.empty()) std::ofstream(json) << peers::to_json(run);
  std::cout << (plan.is_large ? peers::large_markdown(run) : peers::markdown(run));
} catch (const std::exception& error) {
  std::cerr << "peers_bench: " << error.what() << '\n';
  return 1;
}
