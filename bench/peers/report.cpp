#include "peers/report.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

namespace peers {
namespace {

std::string shown(double figure) {
  if (figure < 0) return "failed";
  return fmt::format("{:.{}f}", figure, figure < 0.01 ? 4 : figure < 10 ? 3 : 1);
}

std::optional<double> figure_of(const Run& run, std::string_view workload, const std::string& participant) {
  const auto figures = run.find(workload);
  if (figures == run.end()) return std::nullopt;
  const auto figure = figures->second.find(participant);
  if (figure == figures->second.end() || figure->second < 0) return std::nullopt;
  return figure->second;
}

class Ratios {
 public:
  void add(std::string_view name, double ratio) {
    sum_ += std::log(ratio);
    ++count_;
    ahead_ += ratio < 1 ? 1 : 0;
    if (ratio > worst_) {
      worst_ = ratio;
      worst_name_ = name;
    }
  }

  int count() const { return count_; }
  int ahead() const { return ahead_; }
  double mean() const { return std::exp(sum_ / count_); }
  std::string worst() const { return fmt::format("{:.2f} ({})", worst_, worst_name_); }

 private:
  double sum_ = 0, worst_ = 0;
  int count_ = 0, ahead_ = 0;
  std::string worst_name_;
};

// The fastest participant but ours and memcpy.
std::pair<std::string, double> best_peer(const Figures& figures) {
  std::pair<std::string, double> best;
  for (const auto& [name, figure] : figures)
    if (name != "ours" && name != "memcpy" && figure > 0 && (best.first.empty() || figure < best.second))
      best = {name, figure};
  return best;
}

std::string peers_table(const Run& run, Kind kind) {
  Ratios ratios;
  std::string rows;
  for (const Workload& workload : workloads()) {
    const auto ours = figure_of(run, workload.name, "ours"), copy = figure_of(run, workload.name, "memcpy");
    if (workload.kind != kind || !ours) continue;
    const auto [name, figure] = best_peer(run.find(workload.name)->second);
    if (!name.empty()) ratios.add(workload.name, *ours / figure);
    rows += fmt::format("| {} | {} | {} | {} | {} | {} |\n", workload.name, shown(*ours),
                        name.empty() ? "-" : fmt::format("{} {}", shown(figure), name), copy ? shown(*copy) : "-",
                        name.empty() ? "-" : fmt::format("{:.2f}", *ours / figure),
                        copy ? fmt::format("{:.1f}", *ours / *copy) : "-");
  }
  if (rows.empty()) return {};
  return fmt::format(
      "Ahead of the best peer in {} of {}; geometric mean {:.2f}; worst {}.\n\n"
      "| workload | ours | best peer | memcpy | ours / peer | ours / memcpy |\n| --- | ---: | ---: | ---: | ---: | ---: "
      "|\n{}",
      ratios.ahead(), ratios.count(), ratios.count() == 0 ? 0 : ratios.mean(), ratios.worst(), rows);
}

// "Kept" is the DLL on memory that is kept, as the native build keeps it.
std::string builds_table(const Run& run) {
  Ratios all, on_kept;
  std::string rows;
  for (const Workload& workload : workloads()) {
    const auto native = figure_of(run, workload.name, "native"), dll = figure_of(run, workload.name, "dll"),
               kept = figure_of(run, workload.name, "kept");
    if (!native || !dll || !kept) continue;
    all.add(workload.name, *dll / *native);
    on_kept.add(workload.name, *kept / *native);
    rows += fmt::format("| {} | {} | {} | {} | {:.2f} | {:.2f} |\n", workload.name, shown(*native), shown(*kept),
                        shown(*dll), *kept / *native, *dll / *native);
  }
  return fmt::format(
      "On kept memory: geometric mean {:.2f}, worst {}. On the system's memory: {:.2f}, {}.\n\n"
      "| workload | native | DLL, kept memory | DLL | kept / native | DLL / native |\n| --- | ---: | ---: | ---: | ---: | "
      "---: |\n{}",
      on_kept.mean(), on_kept.worst(), all.mean(), all.worst(), rows);
}

}  // namespace

std::string to_json(const Run& run) { return nlohmann::json(run).dump(1) + "\n"; }

Run merged(const std::vector<std::string>& files) {
  std::map<std::string, std::map<std::string, std::vector<double>>> all;
  for (const std::string& file : files) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("cannot read " + file);
    for (const auto& [workload, figures] : nlohmann::json::parse(stream).get<std::map<std::string, Figures>>())
      for (const auto& [name, figure] : figures) all[workload][name].push_back(figure);
  }
  Run run;
  for (auto& [workload, participants] : all)
    for (auto& [name, figures] : participants) run[workload][name] = median(figures);
  return run;
}

std::string markdown(const Run& run) {
  const bool has_builds = std::ranges::any_of(run, [](const auto& row) { return row.second.contains("dll"); });
  if (has_builds) return builds_table(run);
  std::string text = peers_table(run, Kind::kCounted);
  if (const std::string beyond = peers_table(run, Kind::kBeyond); !beyond.empty())
    text += "\n### Other sizes, angles, ratios, palettes and kernels\n\n" + beyond;
  return text;
}

std::string large_markdown(const Run& run) {
  Ratios ratios;
  std::string rows;
  for (const Workload& workload : workloads()) {
    if (workload.kind != Kind::kLarge) continue;
    const std::string_view usual = workload.usual_name();
    const auto large = figure_of(run, workload.name, "ours"), small = figure_of(run, usual, "ours");
    if (!large || !small) continue;
    ratios.add(usual, *large / *small);
    rows += fmt::format("| {} | {} | {} | {:.2f} |\n", usual, shown(*small), shown(*large), *large / *small);
  }
  return fmt::format(
      "Geometric mean {:.2f}; worst {}.\n\n"
      "| workload | usual | large | large / usual |\n| --- | ---: | ---: | ---: |\n{}",
      ratios.count() == 0 ? 0 : ratios.mean(), ratios.worst(), rows);
}

}  // namespace peers
