#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "cli/platform.h"
#include "common/picture_file.h"

namespace vorel::cli {
namespace {

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kSignalled = 128;  // what shells add to a signal for an exit code

bool prepared = false;

// A signal handler may call few functions, so the names are kept here as it needs them.
enum : int { kFree, kFilling, kTaken };
struct Slot {
  std::atomic<int> state = kFree;
  char path[PATH_MAX] = {};
};
Slot slots[8];  // more than the tool has scratch files at a time
static_assert(std::atomic<int>::is_always_lock_free);

void end_by_signal(int signal) {
  for (Slot& slot : slots)
    if (slot.state == kTaken) ::unlink(slot.path);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

bool is_prepared() { return prepared; }

// A reader that goes away and a limit on the size of files are errors like any other. Their signals would end the program and
// leave temporary files behind.
void prepare_process() {
  prepared = true;
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : kStopSignals) {
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;  // as under nohup
    action = {};
    action.sa_handler = end_by_signal;
    ::sigaction(signal, &action, nullptr);
  }
}

void end_if_stopped(int code) {
  for (const int signal : kStopSignals)
    if (code == kSignalled + signal) end_by_signal(signal);
}

void remove_if_stopped(const std::filesystem::path& path) {
  for (Slot& slot : slots) {
    int expected = kFree;
    if (path.native().size() >= sizeof slot.path || !slot.state.compare_exchange_strong(expected, kFilling)) continue;
    path.native().copy(slot.path, sizeof slot.path);
    slot.path[path.native().size()] = 0;
    slot.state = kTaken;
    return;
  }
}

void forget_if_stopped(const std::filesystem::path& path) {
  for (Slot& slot : slots)
    if (slot.state == kTaken && path.native() == slot.path) slot.state = kFree;
}

std::error_code create_new_file(const std::filesystem::path& path, Readers readers) {
  const mode_t mode = readers == Readers::kOwner ? 0600 : 0666;
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (file < 0) return {errno, std::generic_category()};
  ::close(file);
  return {};
}

std::error_code move_to_free_name(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  std::filesystem::create_hard_link(from, to, error);
  if (!error) {
    std::filesystem::remove(from, error);
    return {};
  }
  // Some file systems have no links.
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::symlink_status(to, ignored))) {
    return std::make_error_code(std::errc::file_exists);
  }
  std::filesystem::rename(from, to, error);
  return error;
}

bool standard_error_is_terminal() { return ::isatty(STDERR_FILENO) != 0; }

programs::Picture drawn_text(const std::string&, bool) {
  programs::require_drawing("text");
  return {};
}

}  // namespace vorel::cli
