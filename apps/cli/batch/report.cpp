#include "cli/batch/report.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <ostream>

namespace vorel::cli::batch {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds kBetweenLines(100);

std::string counted(uint64_t count, const char* what) { return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s"); }

std::string shown_time(double seconds) {
  const auto whole = static_cast<uint64_t>(seconds + 0.5);
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

Report::Report(const Streams& streams, bool as_json, size_t inputs)
    : streams_(streams), as_json_(as_json), inputs_(inputs) {}

void Report::print_json(const InputFile& input, const char* status, const Outcome& outcome, double seconds) {
  Json line = {{"input", input.shown}, {"index", input.index}, {"status", status}};
  line["pages"] = Json::parse(outcome.pages);
  line["outputs"] = Json::array();
  for (const PlacedFile& file : outcome.outputs) line["outputs"].push_back(file.name);
  line["seconds"] = static_cast<double>(static_cast<int64_t>(seconds * 1e6)) / 1e6;
  line["failure"] = nullptr;
  if (outcome.code != ExitCode::kDone)
    line["failure"] = {{"code", static_cast<int>(outcome.code)}, {"message", outcome.message}};
  streams_.output << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
}

void Report::skipped(const InputFile& input) {
  ++skipped_;
  if (as_json_) print_json(input, "skipped", {}, 0);
}

void Report::ended(const InputFile& input, const Outcome& outcome, double seconds) {
  const bool is_done = outcome.code == ExitCode::kDone;
  ++(is_done ? done_ : failed_);
  pages_ += outcome.page_count;
  for (const std::string& loss : outcome.losses) ++losses_[loss];
  if (as_json_) print_json(input, is_done ? "done" : "failed", outcome, seconds);
  if (!is_done) {
    wipe();
    print_error(streams_.errors, outcome.message);
  }
  show_progress();
}

double Report::seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

void Report::show_progress() {
  const auto now = Clock::now();
  if (!streams_.is_watched || now - shown_ < kBetweenLines) return;
  wipe();
  shown_ = now;
  const size_t ended = done_ + failed_, left = inputs_ - skipped_ - ended;
  const double rate = static_cast<double>(ended) / seconds();
  const std::string failures = failed_ > 0 ? fmt::format(", {} failed", failed_) : "";
  const std::string line = fmt::format("{} of {}, {:.1f} per second, {} left{}", skipped_ + ended, inputs_, rate,
                                       shown_time(static_cast<double>(left) / rate), failures);
  streams_.errors << line << std::flush;
  line_length_ = line.size();
}

void Report::wipe() {
  if (line_length_ == 0) return;
  streams_.errors << fmt::format("\r{:{}}\r", "", line_length_) << std::flush;
  line_length_ = 0;
}

void Report::stopped() {
  wipe();
  print_error(streams_.errors,
              fmt::format("stopped after {} of {} inputs; go on with --resume", skipped_ + done_ + failed_, inputs_));
}

void Report::sum_up() {
  wipe();
  for (const auto& [loss, count] : losses_)
    print_note(streams_.errors, fmt::format("{}: {}", counted(count, "input"), loss));
  const double time = seconds();
  print_note(streams_.errors, fmt::format("{}: {} done, {} done before, {} failed; {} in {:.1f} s, {:.1f} per second",
                                          counted(inputs_, "input"), done_, skipped_, failed_, counted(pages_, "page"), time,
                                          static_cast<double>(pages_) / time));
}

}  // namespace vorel::cli::batch
