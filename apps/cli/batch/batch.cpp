#include "cli/batch/batch.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <mutex>
#include <ostream>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "cli/batch/journal.h"
#include "cli/batch/process.h"
#include "cli/batch/report.h"
#include "cli/batch/worker.h"
#include "cli/words.h"

namespace vorel::cli::batch {
namespace fs = std::filesystem;
namespace {

constexpr std::array kForThisRun = {"--overwrite", "--strict", "--max-pixels", "--max-memory"};

// Without the links that lead to a folder.
fs::path real(const fs::path& folder) {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(folder, error);
  return error ? fs::absolute(folder, error).lexically_normal() : path;
}

#ifdef _WIN32
constexpr bool kIgnoresCase = true;
#else
constexpr bool kIgnoresCase = false;
#endif

// What names have in common that mean one file.
std::string folded(std::string name) {
  if (kIgnoresCase)
    std::ranges::transform(name, name.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return name;
}

// Before anything is done: no two inputs may have one output, and no output may be an input.
class NameCheck {
 public:
  NameCheck(const std::vector<InputFile>& files, const fs::path& output, const Naming& naming)
      : files_(files), output_(real(output)), naming_(naming) {
    for (const InputFile& file : files) paths_.insert(folded(name_of(real_path(file))));
  }

  // Throws Failure.
  void check() {
    for (size_t i = 0; i < files_.size(); ++i) check(i);
  }

 private:
  void check(size_t i) {
    std::string name;
    try {
      name = naming_.mark_for(files_[i]);
    } catch (const Failure&) {  // fails alone
      return;
    }
    const auto [other, is_new] = owners_.emplace(folded(name), i);
    if (!is_new) {
      fail(i, fmt::format("it has the same output as {}; add {{dir}} or {{index}} to --name, or name the folder above both",
                          files_[other->second].shown));
    }
    if (naming_.has_page() ? is_below_output(files_[i]) : paths_.contains(folded(name_of(output_ / path_of(name)))))
      fail(i, "outputs would take the place of inputs; give another --out");
  }

  // Folders are looked up once: a batch has many files and few of them.
  fs::path real_path(const InputFile& file) {
    const auto [folder, is_new] = folders_.try_emplace(file.path.parent_path().native());
    if (is_new) folder->second = real(file.path.has_parent_path() ? file.path.parent_path() : fs::path("."));
    return folder->second / file.path.filename();
  }

  bool is_below_output(const InputFile& file) {
    const auto relative = real_path(file).lexically_relative(output_);
    return !relative.empty() && *relative.begin() != "..";
  }

  [[noreturn]] void fail(size_t i, const std::string& text) const {
    throw Failure(ExitCode::kWrongUse, files_[i].shown, text);
  }

  const std::vector<InputFile>& files_;
  fs::path output_;
  const Naming& naming_;
  std::unordered_map<fs::path::string_type, fs::path> folders_;
  std::unordered_set<std::string> paths_;
  std::unordered_map<std::string, size_t> owners_;
};

// Threads that each feed a worker process. Journal and report are shared.
class Crew {
 public:
  Crew(const Orders& orders, const Naming& naming, const std::vector<const InputFile*>& files, Journal& journal,
       Report& report, Stamp::By by)
      : orders_(orders), naming_(naming), files_(files), journal_(journal), report_(report), by_(by) {}

  void work(size_t threads) {
    {
      std::vector<std::jthread> crew;
      for (size_t i = 0; i < std::min(threads, files_.size()); ++i) crew.emplace_back([this] { work_guarded(); });
    }
    if (error_) std::rethrow_exception(error_);
  }

 private:
  struct Job {
    const InputFile& file;
    bool may_replace;
  };

  std::optional<Job> next() {
    const std::lock_guard lock(mutex_);
    if (next_ == files_.size() || error_ || StopWatch::exit_code() != 0) return std::nullopt;
    const InputFile& file = *files_[next_++];
    const bool owns = journal_.owns_outputs(file.key);
    if (!owns && !meets_file(file)) journal_.begin(file.key);
    return Job{file, owns};
  }

  // A file that this batch has not made keeps its place, also when a later run goes on from here.
  bool meets_file(const InputFile& file) const try {
    std::error_code ignored;
    return !naming_.has_page() && fs::exists(orders_.places.output / path_of(naming_.name_for(file, 1, 1)), ignored);
  } catch (const Failure&) {
    return false;
  }

  void end(const InputFile& file, const Stamp& stamp, Outcome outcome, double seconds) {
    const std::lock_guard lock(mutex_);
    if (!journal_.end(file.key, stamp, outcome) && outcome.code == ExitCode::kDone) {
      outcome.code = ExitCode::kOutput;
      outcome.message = file.shown + ": it is done, but the journal could not be written; make room on the disk";
    }
    report_.ended(file, outcome, seconds);
  }

  void work_guarded() {
    try {
      work_on_files();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      error_ = std::current_exception();
    }
  }

  void work_on_files() {
    Worker worker(orders_);
    while (const auto job = next()) {
      const auto start = std::chrono::steady_clock::now();
      const Stamp stamp = Stamp::of(job->file.path, by_);
      const Outcome outcome = worker.work_on(job->file, job->may_replace);
      if (outcome.code != ExitCode::kDone && StopWatch::exit_code() != 0) return;
      end(job->file, stamp, outcome, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
  }

  const Orders& orders_;
  const Naming& naming_;
  const std::vector<const InputFile*>& files_;
  Journal& journal_;
  Report& report_;
  Stamp::By by_;
  std::mutex mutex_;
  size_t next_ = 0;
  std::exception_ptr error_;
};

void list(const std::vector<const InputFile*>& files, const Naming& naming, const Streams& streams) {
  for (const InputFile* file : files) {
    std::string name;
    try {
      name = naming.mark_for(*file);
    } catch (const Failure& failure) {
      print_note(streams.errors, failure.what());
      continue;
    }
    std::string shown;
    for (const char letter : name) shown += letter == '\0' ? std::string("{page}") : std::string(1, letter);
    streams.output << fmt::format("{} -> {}\n", file->shown, shown);
  }
}

}  // namespace

// What makes outputs differ.
std::string Batch::journal_title() const {
  std::string title = steps;
  for (const std::string& word : setting_words) {
    const std::string name = word.substr(0, word.find('='));
    if (std::ranges::find(kForThisRun, name) == kForThisRun.end()) title += " " + quoted(word);
  }
  return title;
}

ExitCode Batch::run(const Streams& streams) const {
  const Inputs inputs = find_inputs(wanted, streams.input);
  if (inputs.others > 0)
    print_note(streams.errors, fmt::format("{} file{} of folders left out; the names are of no picture", inputs.others,
                                           inputs.others == 1 ? "" : "s"));
  if (inputs.files.empty())
    throw Failure(ExitCode::kInput, "batch", "there are 0 inputs; name files, patterns, or folders with --recursive");
  const Naming naming(settings.name, settings.saving.to);
  NameCheck(inputs.files, wanted.output, naming).check();

  std::vector<const InputFile*> files;
  for (const InputFile& file : inputs.files)
    if (shard.has(file.key)) files.push_back(&file);
  if (is_trial) {
    list(files, naming, streams);
    return ExitCode::kDone;
  }

  const auto by = compares_sums ? Stamp::By::kSum : Stamp::By::kTime;
  const auto start = resumes                     ? Journal::Start::kResume
                     : settings.saving.overwrite ? Journal::Start::kReplace
                                                 : Journal::Start::kNew;
  Journal journal(wanted.output, shard, journal_title(), start);
  Report report(streams, as_json, files.size());
  std::erase_if(files, [&](const InputFile* file) {
    const bool is_done = journal.is_done(*file, by);
    if (is_done) report.skipped(*file);
    return is_done;
  });
  const Orders orders{steps, setting_words, {wanted.output, journal.scratch()}};
  const StopWatch watch;
  const size_t cores = std::max(1u, std::thread::hardware_concurrency());
  Crew(orders, naming, files, journal, report, by).work(jobs > 0 ? static_cast<size_t>(jobs) : cores);
  if (const int code = StopWatch::exit_code()) {
    report.stopped();
    return static_cast<ExitCode>(code);
  }
  report.sum_up();
  return report.has_failures() ? ExitCode::kSomeFailed : ExitCode::kDone;
}

}  // namespace vorel::cli::batch
