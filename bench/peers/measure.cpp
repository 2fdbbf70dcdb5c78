#include "peers/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ostream.h>
#include <iostream>
#include <tuple>
#include <unistd.h>

#include "peers/picture.h"
#include "peers/process.h"

namespace peers {
namespace {

namespace fs = std::filesystem;

constexpr double kShortestSample = 0.003;  // seconds; shorter operations are repeated within a sample

// A folder for the pictures, in memory if the system has such a place; removed with its scope.
class Folder {
 public:
  Folder()
      : path_((fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) /
              fmt::format("vorel-peers-{}", getpid())) {
    fs::create_directory(path_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  // The file of a picture, which replaces the one before: few are needed at a time, and they are large.
  std::string file_of(Extent extent) {
    const auto key = std::tuple(extent.width, extent.height, extent.depth, extent.is_colored);
    const std::string file = path_ / "picture";
    if (key != key_) write_file(file, make_picture(extent).bytes);
    key_ = key;
    return file;
  }

 private:
  fs::path path_;
  std::tuple<int, int, int, bool> key_{};
};

constexpr const char* kOperationNames[] = {
    "kQuarterTurn", "kBackTurn",      "kHalfTurn",     "kMirrorSides", "kMirrorTop", "kRotate",          "kSkew",
    "kLinear",      "kCubic",         "kNearest",      "kGray",        "kBrighten",  "kLookUp",          "kExpand",
    "kCount",       "kDrag",          "kConvolve",     "kSmoothBits",  "kDespeckle", "kMedian",          "kDiffuse",
    "kDiffuseWide", "kDiffuseSmooth", "kDiffuseSharp", "kThreshold",   "kOrdered",   "kHalftoneDiffuse", "kEncode",
    "kDecode",      "kSave",          "kLoad"};

std::string prepare_line(const Workload& workload, const std::string& file) {
  const Extent from = workload.source, to = workload.result();
  return fmt::format("prepare {} {} {} {} {} {} {} {} {} {}", workload.name, file,
                     kOperationNames[static_cast<int>(workload.operation)], workload.amount, from.depth, from.width,
                     from.height, from.is_colored ? 1 : 0, to.width, to.height);
}

// One participant at one workload.
class Contest {
 public:
  Contest(const Participant& participant, const Plan& plan, const std::string& line)
      : name_(participant.name), process_(participant.command, plan.core, plan.keeps_memory) {
    const std::string answer = process_.ask(line);
    takes_part_ = answer == "ready";
    has_failed_ = !takes_part_ && answer != "none";
    if (!takes_part_) return;
    static_cast<void>(sample());  // the first call also pays for new pages
    const double once = sample();
    count_ = std::max(1, static_cast<int>(std::ceil(kShortestSample / std::max(once, 1e-7))));
  }

  const std::string& name() const { return name_; }
  bool takes_part() const { return takes_part_; }
  bool has_failed() const { return has_failed_; }

  // Seconds of processor time for the operation.
  double sample() {
    const double start = process_.seconds();
    if (process_.ask(fmt::format("run {}", count_)) != "done") {
      has_failed_ = true;
      takes_part_ = false;
    }
    return (process_.seconds() - start) / count_;
  }

 private:
  std::string name_;
  Process process_;
  int count_ = 1;
  bool takes_part_ = false, has_failed_ = false;
};

// Peers skip the large pictures, which compare the library with itself. A 32-bit process has no room for two of 300 MB.
bool takes(const Participant& participant, const Workload& workload) {
  constexpr double kRoom = 800e6;
  const bool is_peer = participant.name != "ours" && participant.name != "memcpy";
  const bool is_32_bit = participant.name == "dll" || participant.name == "kept";
  return !(is_peer && workload.kind == Kind::kLarge) && !(is_32_bit && 2 * workload.bytes() > kRoom);
}

Figures measure_one(const Workload& workload, const Plan& plan, const std::string& file) {
  std::vector<std::unique_ptr<Contest>> contests;
  for (const Participant& participant : plan.participants)
    if (takes(participant, workload))
      contests.push_back(std::make_unique<Contest>(participant, plan, prepare_line(workload, file)));
  std::map<std::string, std::vector<double>> samples;
  for (int i = 0; i < plan.repetitions; ++i)
    for (const auto& contest : contests)
      if (contest->takes_part()) samples[contest->name()].push_back(contest->sample());
  Figures figures;
  for (const auto& contest : contests) {
    if (contest->has_failed())
      figures[contest->name()] = -1;
    else if (contest->takes_part())
      figures[contest->name()] = median(samples[contest->name()]) * 1e9 / workload.pixels();
  }
  return figures;
}

}  // namespace

bool Plan::takes(const Workload& workload) const {
  if (is_large ? !is_in_two_sizes(workload) : workload.kind == Kind::kLarge) return false;
  return prefixes.empty() ||
         std::ranges::any_of(prefixes, [&](const std::string& prefix) { return workload.name.starts_with(prefix); });
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Run measure(const Plan& plan) {
  Folder folder;
  Run run;
  for (const Workload& workload : workloads()) {
    if (!plan.takes(workload)) continue;
    const Figures& figures = run[std::string(workload.name)] = measure_one(workload, plan, folder.file_of(workload.source));
    fmt::print(std::cerr, "{:26}", workload.name);
    for (const auto& [name, figure] : figures) fmt::print(std::cerr, "  {} {:.4g}", name, figure);
    std::cerr << '\n';
  }
  return run;
}

}  // namespace peers
