// Processor time of "vorel run" beside its parts: loading, each step and saving. Each part is measured in its own process, with the
// same cold memory, so the rest is the cost of starting the tool and passing pages on.
// usage: chain_bench VOREL IN OUT STEP...   for example build/native/bin/vorel page.tif out.tif "clean 60" "rotate 90"
#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "cli/chain.h"
#include "cli/saving_options.h"
#include "common/picture_file.h"

namespace {

using namespace vorel;

constexpr int kRounds = 21;

double milliseconds(const timespec& time) {
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}
double milliseconds(const timeval& time) {
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

double processor_time() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return milliseconds(time);
}

double median(std::vector<double> values) {
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

struct Work {
  std::string tool, in, out;
  std::vector<std::string> steps;

  std::string text() const {
    std::string chain;
    for (const std::string& step : steps) chain += (chain.empty() ? "" : " | ") + step;
    return chain;
  }
};

// Loading, the steps and saving.
std::vector<double> parts_of(const Work& work) {
  std::vector<double> parts;
  double start = processor_time();
  const auto end_part = [&] {
    const double now = processor_time();
    parts.push_back(now - start);
    start = processor_time();
  };
  cli::Page page{.label = work.in, .picture = programs::PictureFile(work.in).load(1)};
  end_part();
  for (const std::string& step : work.steps) {
    const cli::Chain chain = cli::Chain::parse(step);
    start = processor_time();
    chain.apply(page);
    end_part();
  }
  const programs::Saving saving = cli::SavingOptions().saving_for(work.out);
  start = processor_time();
  programs::save_page(work.out, programs::suited(std::move(page.picture), saving), saving, 1);
  end_part();
  return parts;
}

// Runs in a child process.
template <class Run>
rusage cost_of(Run run) {
  const pid_t child = fork();
  if (child == 0) _exit(run());
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) throw std::runtime_error("a run fails");
  return usage;
}

std::vector<double> parts_in_child(const Work& work) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  std::vector<double> parts(work.steps.size() + 2);
  const size_t bytes = parts.size() * sizeof(double);
  cost_of([&] {
    const std::vector<double> found = parts_of(work);
    return write(ends[1], found.data(), bytes) == static_cast<ssize_t>(bytes) ? 0 : 1;
  });
  const bool is_whole = read(ends[0], parts.data(), bytes) == static_cast<ssize_t>(bytes);
  for (const int end : ends) close(end);
  if (!is_whole) throw std::runtime_error("no figures");
  return parts;
}

double tool_in_child(const Work& work) {
  const rusage usage = cost_of([&] {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
    execl(work.tool.c_str(), "vorel", "run", work.in.c_str(), work.out.c_str(), work.text().c_str(), "--overwrite", nullptr);
    return 127;
  });
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

}  // namespace

int main(int count, char** values) try {
  if (count < 5) return 2;
  const Work work{values[1], values[2], values[3], {values + 4, values + count}};
  if (std::freopen("/dev/null", "w", stderr) == nullptr) return 1;
  std::vector<std::vector<double>> parts(work.steps.size() + 2);
  std::vector<double> whole;
  for (int round = 0; round < kRounds; ++round) {
    const std::vector<double> found = parts_in_child(work);
    for (size_t i = 0; i < parts.size(); ++i) parts[i].push_back(found[i]);
    whole.push_back(tool_in_child(work));
  }
  double sum = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    const double part = median(parts[i]);
    sum += part;
    fmt::print("| {} | {:.2f} |\n", i == 0 ? "load" : i == parts.size() - 1 ? "save" : work.steps[i - 1], part);
  }
  fmt::print("| sum | {:.2f} |\n| vorel run | {:.2f}, {:+.1f} % |\n", sum, median(whole), 100 * (median(whole) / sum - 1));
} catch (const std::exception& error) {
  std::printf("chain_bench: %s\n", error.what());
  return 1;
}
