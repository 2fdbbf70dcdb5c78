#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "cli/batch/process.h"
#include "cli/platform.h"
#include "common/platform.h"

namespace vorel::cli::batch {
namespace {

// A signal handler kills what is listed here.
constexpr size_t kMostWorkers = 1024;
std::array<std::atomic<pid_t>, kMostWorkers> workers;
std::atomic<int> stop_signal = 0;
static_assert(std::atomic<pid_t>::is_always_lock_free);

constexpr std::array kStopSignals = {SIGINT, SIGTERM, SIGHUP};

void stop(int signal) {
  const int error = errno;
  stop_signal = signal;
  for (const auto& worker : workers)
    if (const pid_t id = worker; id > 0) ::kill(id, SIGKILL);
  errno = error;
}

[[noreturn]] void fail(int error) { throw std::system_error(error, std::generic_category()); }

class Pipe {
 public:
  Pipe() {
    if (::pipe2(ends_.data(), O_CLOEXEC) != 0) fail(errno);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    for (const int end : ends_)
      if (end >= 0) ::close(end);
  }

  int reading() const { return ends_[0]; }
  int writing() const { return ends_[1]; }
  int take_reading() { return std::exchange(ends_[0], -1); }
  int take_writing() { return std::exchange(ends_[1], -1); }

 private:
  std::array<int, 2> ends_ = {-1, -1};
};

void list_worker(pid_t id) {
  for (auto& worker : workers) {
    pid_t none = 0;
    if (worker.compare_exchange_strong(none, id)) break;
  }
  if (stop_signal != 0) ::kill(id, SIGKILL);
}

void unlist_worker(pid_t id) {
  for (auto& worker : workers) {
    pid_t expected = id;
    if (worker.compare_exchange_strong(expected, 0)) return;
  }
}

// The programs' own file, or the tool beside the library for others that use this code.
std::string tool() { return is_prepared() ? "/proc/self/exe" : programs::library_folder() + "vorel"; }

}  // namespace

struct WorkerProcess::Handles {
  pid_t id;
  int to, from;
};

// In a process group of its own: Ctrl+C reaches the tool alone, which then knows why workers end.
WorkerProcess::WorkerProcess() {
  Pipe requests, replies;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawn_file_actions_adddup2(&actions, requests.reading(), STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, replies.writing(), STDOUT_FILENO);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  std::string name = "vorel", word = kWorkerWord;
  const std::array<char*, 3> arguments = {name.data(), word.data(), nullptr};
  pid_t id = 0;
  const int error = ::posix_spawn(&id, tool().c_str(), &actions, &attributes, arguments.data(), environ);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) fail(error);
  list_worker(id);
  handles_.reset(new Handles{id, requests.take_writing(), replies.take_reading()});
}

WorkerProcess::~WorkerProcess() {
  if (handles_->to >= 0) end();
}

bool WorkerProcess::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::write(handles_->to, bytes.data(), bytes.size());
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

bool WorkerProcess::receive(std::span<char> bytes) {
  while (!bytes.empty()) {
    const ssize_t received = ::read(handles_->from, bytes.data(), bytes.size());
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(received));
  }
  return true;
}

// Unlisted before it is waited for: another process may get its number afterwards.
std::string WorkerProcess::end() {
  ::close(std::exchange(handles_->to, -1));
  ::close(std::exchange(handles_->from, -1));
  siginfo_t ended;
  while (::waitid(P_PID, static_cast<id_t>(handles_->id), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  unlist_worker(handles_->id);
  int status = 0;
  ::waitpid(handles_->id, &status, 0);
  return WIFSIGNALED(status) ? fmt::format("signal {}", WTERMSIG(status)) : fmt::format("exit code {}", WEXITSTATUS(status));
}

namespace {
std::array<struct sigaction, kStopSignals.size()> usual_actions;
}

StopWatch::StopWatch() {
  stop_signal = 0;
  for (size_t i = 0; i < kStopSignals.size(); ++i) {
    ::sigaction(kStopSignals[i], nullptr, &usual_actions[i]);
    if (usual_actions[i].sa_handler == SIG_IGN) continue;  // as under nohup
    struct sigaction action = {};
    action.sa_handler = stop;
    ::sigaction(kStopSignals[i], &action, nullptr);
  }
}

StopWatch::~StopWatch() {
  for (size_t i = 0; i < kStopSignals.size(); ++i) ::sigaction(kStopSignals[i], &usual_actions[i], nullptr);
}

int StopWatch::exit_code() { return stop_signal == 0 ? 0 : 128 + stop_signal; }

AppendFile::AppendFile(const std::filesystem::path& path)
    : handle_(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666)) {
  if (handle_ < 0) fail(errno);
  // Some file systems have no locks.
  if (::flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  ::close(static_cast<int>(handle_));
  fail(EAGAIN);
}

AppendFile::~AppendFile() { ::close(static_cast<int>(handle_)); }

void AppendFile::empty() {
  if (::ftruncate(static_cast<int>(handle_), 0) != 0) fail(errno);
}

bool AppendFile::append(std::string_view bytes) {
  return ::write(static_cast<int>(handle_), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void end_with_parent() { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }

void keep_memory() {
  constexpr int kMegabyte = 1 << 20;
  ::mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);
  ::mallopt(M_TRIM_THRESHOLD, 64 * kMegabyte);
}

void limit_memory(uint64_t bytes) {
  const rlimit limit = {bytes, bytes};
  ::setrlimit(RLIMIT_DATA, &limit);
}

}  // namespace vorel::cli::batch
