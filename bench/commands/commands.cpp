// Measures whole commands: processor time, elapsed time and peak memory of the process and its children. Commands take turns on
// one core; results are medians. Reads lines "WORKLOAD|PARTICIPANT|COMMAND" and prints Markdown.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Cost {
  double milliseconds = 0, elapsed = 0, megabytes = 0;
  NLOHMANN_DEFINE_TYPE_INTRUSIVE(Cost, milliseconds, elapsed, megabytes)
};

using Costs = std::map<std::string, Cost>;  // by participant
using Run = std::map<std::string, Costs>;   // by workload

struct Command {
  std::string workload, participant, text;
};

constexpr const char* kOurs = "vorel";
constexpr const char* kTool = "tool";  // the codec library's own

double median_of(const std::vector<Cost>& costs, double Cost::*field) {
  std::vector<double> values;
  for (const Cost& cost : costs) values.push_back(cost.*field);
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

Cost median(const std::vector<Cost>& costs) {
  return {median_of(costs, &Cost::milliseconds), median_of(costs, &Cost::elapsed), median_of(costs, &Cost::megabytes)};
}

double milliseconds(timeval time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

Cost cost_of(const std::string& command, int core) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t id = fork();
  if (id == 0) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
    for (const char* name : {"OMP_NUM_THREADS", "MAGICK_THREAD_LIMIT", "VIPS_CONCURRENCY"}) setenv(name, "1", 1);
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    const std::string line = (command.find('|') == std::string::npos ? "exec " : "") + command;
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(id, &status, 0, &usage) != id || status != 0) throw std::runtime_error(command + " fails");
  const double elapsed = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  return {milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), elapsed, static_cast<double>(usage.ru_maxrss) / 1024};
}

std::vector<Command> read_commands(std::istream& stream) {
  std::vector<Command> commands;
  for (std::string line; std::getline(stream, line);) {
    const size_t first = line.find('|'), second = line.find('|', first + 1);
    if (second == std::string::npos) continue;
    commands.push_back({line.substr(0, first), line.substr(first + 1, second - first - 1), line.substr(second + 1)});
  }
  return commands;
}

// In another order each round: a command that follows a large write pays for some of it.
Run measure(std::vector<Command> commands, int rounds, int core) {
  std::map<std::string, std::map<std::string, std::vector<Cost>>> samples;
  std::mt19937 random(std::random_device{}());
  for (int round = 0; round <= rounds; ++round) {
    std::ranges::shuffle(commands, random);
    for (const Command& command : commands) {
      const Cost cost = cost_of(command.text, core);
      if (round > 0) samples[command.workload][command.participant].push_back(cost);  // the first round fills the caches
    }
  }
  Run run;
  for (const auto& [workload, participants] : samples)
    for (const auto& [participant, costs] : participants) run[workload][participant] = median(costs);
  return run;
}

Run merged(const std::vector<std::string>& files) {
  std::map<std::string, std::map<std::string, std::vector<Cost>>> all;
  for (const std::string& file : files) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("cannot read " + file);
    for (const auto& [workload, costs] : nlohmann::json::parse(stream).get<Run>())
      for (const auto& [participant, cost] : costs) all[workload][participant].push_back(cost);
  }
  Run run;
  for (const auto& [workload, participants] : all)
    for (const auto& [participant, costs] : participants) run[workload][participant] = median(costs);
  return run;
}

// The other program with the lowest cost, and our cost divided by it.
std::pair<std::string, double> beside_best(const Costs& costs, double Cost::*field) {
  const auto* best = static_cast<const Costs::value_type*>(nullptr);
  for (const auto& entry : costs)
    if (entry.first != kOurs && entry.first != kTool && (best == nullptr || entry.second.*field < best->second.*field))
      best = &entry;
  if (best == nullptr) return {"-", 0};
  const double ratio = costs.at(kOurs).*field / (best->second.*field);
  return {fmt::format("{:.0f} {}", best->second.*field, best->first), ratio};
}

std::string row_of(const std::string& workload, const Costs& costs) {
  const Cost& ours = costs.at(kOurs);
  const auto [time, time_ratio] = beside_best(costs, &Cost::milliseconds);
  const auto [memory, memory_ratio] = beside_best(costs, &Cost::megabytes);
  const auto tool = costs.find(kTool);
  const bool has_tool = tool != costs.end();
  return fmt::format("| {} | {:.0f} | {} | {:.2f} | {:.0f} | {} | {:.2f} | {} | {} |\n", workload, ours.milliseconds, time,
                     time_ratio, ours.megabytes, memory, memory_ratio,
                     has_tool ? fmt::format("{:.0f}", tool->second.milliseconds) : "-",
                     has_tool ? fmt::format("{:.2f}", ours.milliseconds / tool->second.milliseconds) : "-");
}

std::string markdown(const Run& run) {
  std::string text =
      "| command | ms | best other | ratio | MB | least other | ratio | library's tool, ms | ratio |\n"
      "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |\n";
  for (const auto& [workload, costs] : run)
    if (costs.contains(kOurs)) text += row_of(workload, costs);
  return text;
}

}  // namespace

int main(int count, char** values) try {
  CLI::App app("Times whole commands.", "peers_commands");
  int rounds = 7, core = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)) - 1;
  std::string json;
  std::vector<std::string> tables;
  app.add_option("--rounds", rounds, "how often each command runs (default: 7)")->check(CLI::Range(1, 1000));
  app.add_option("--core", core, "the core to run on (default: the last)");
  app.add_option("--json", json, "writes the figures to a file");
  app.add_option("--table", tables, "prints the medians of such files instead of measuring");
  CLI11_PARSE(app, count, values);
  const Run run = tables.empty() ? measure(read_commands(std::cin), rounds, core) : merged(tables);
  if (!json.empty()) std::ofstream(json) << nlohmann::json(run).dump(1) << '\n';
  std::cout << markdown(run);
} catch (const std::exception& error) {
  std::cerr << "peers_commands: " << error.what() << '\n';
  return 1;
}
