#include <atomic>
#include <fmt/format.h>
#include <mutex>
#include <set>
#include <utility>
#include <windows.h>

#include "cli/batch/process.h"
#include "cli/platform.h"
#include "common/platform.h"

namespace vorel::cli::batch {
namespace {

constexpr int kStopped = 130, kTerminated = 143;

std::mutex workers_lock;
std::set<HANDLE> workers;
std::atomic<int> stop_code = 0;

[[noreturn]] void fail(DWORD error) { throw std::system_error(static_cast<int>(error), std::system_category()); }

// On a thread of its own. Closing the console or logging off ends the process when this returns, so it waits.
BOOL WINAPI stop(DWORD event) {
  const bool is_key = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  constexpr DWORD kMillisecondsToEnd = 4000;
  {
    const std::lock_guard lock(workers_lock);
    stop_code = is_key ? kStopped : kTerminated;
    for (const HANDLE worker : workers) TerminateProcess(worker, 1);
  }
  if (!is_key) Sleep(kMillisecondsToEnd);
  return TRUE;
}

class OwnedHandle {
 public:
  OwnedHandle() = default;
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  ~OwnedHandle() { close(); }

  HANDLE get() const { return handle_; }
  HANDLE* out() { return &handle_; }
  void close() {
    if (handle_ != nullptr) CloseHandle(std::exchange(handle_, nullptr));
  }

 private:
  HANDLE handle_ = nullptr;
};

// The programs' own file, or the tool beside the library for others that use this code.
std::wstring tool() {
  if (!is_prepared()) return (std::filesystem::path(programs::library_folder()) / L"vorel.exe").wstring();
  std::wstring name(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    if (length < name.size()) return name.substr(0, length);
    name.resize(name.size() * 2);
  }
}

// Ends the workers when this process ends, however it does.
HANDLE job_of_workers() {
  static const HANDLE job = [] {
    const HANDLE made = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return made;
  }();
  return job;
}

}  // namespace

struct WorkerProcess::Handles {
  OwnedHandle process, to, from;
  bool has_ended = false;
};

WorkerProcess::WorkerProcess() : handles_(std::make_unique<Handles>()) {
  OwnedHandle its_input, its_output;
  if (!CreatePipe(its_input.out(), handles_->to.out(), nullptr, 0) ||
      !CreatePipe(handles_->from.out(), its_output.out(), nullptr, 0))
    fail(GetLastError());
  const std::wstring program = tool();
  std::wstring command = L"\"" + program + L"\" " + std::filesystem::path(kWorkerWord).wstring();
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = its_input.get();
  start.hStdOutput = its_output.get();
  start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION made = {};
  // One at a time: no worker inherits the pipes of another. A group of its own keeps Ctrl+C from it.
  const std::lock_guard lock(workers_lock);
  SetHandleInformation(its_input.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  SetHandleInformation(its_output.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP, nullptr, nullptr,
                      &start, &made))
    fail(GetLastError());
  its_input.close();
  its_output.close();
  CloseHandle(made.hThread);
  *handles_->process.out() = made.hProcess;
  AssignProcessToJobObject(job_of_workers(), made.hProcess);
  workers.insert(made.hProcess);
  if (stop_code != 0) TerminateProcess(made.hProcess, 1);
}

WorkerProcess::~WorkerProcess() {
  if (!handles_->has_ended) end();
}

bool WorkerProcess::send(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD sent = 0;
    if (!WriteFile(handles_->to.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &sent, nullptr)) return false;
    bytes.remove_prefix(sent);
  }
  return true;
}

bool WorkerProcess::receive(std::span<char> bytes) {
  while (!bytes.empty()) {
    DWORD received = 0;
    if (!ReadFile(handles_->from.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &received, nullptr)) return false;
    if (received == 0) return false;
    bytes = bytes.subspan(received);
  }
  return true;
}

std::string WorkerProcess::end() {
  handles_->has_ended = true;
  handles_->to.close();
  handles_->from.close();
  WaitForSingleObject(handles_->process.get(), INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(handles_->process.get(), &code);
  const std::lock_guard lock(workers_lock);
  workers.erase(handles_->process.get());
  return fmt::format("exit code {:#x}", code);
}

StopWatch::StopWatch() {
  stop_code = 0;
  SetConsoleCtrlHandler(stop, TRUE);
}

StopWatch::~StopWatch() { SetConsoleCtrlHandler(stop, FALSE); }

int StopWatch::exit_code() { return stop_code; }

AppendFile::AppendFile(const std::filesystem::path& path)
    : handle_(reinterpret_cast<intptr_t>(CreateFileW(path.c_str(), FILE_APPEND_DATA | GENERIC_WRITE,
                                                     FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                                     FILE_ATTRIBUTE_NORMAL, nullptr))) {
  if (reinterpret_cast<HANDLE>(handle_) != INVALID_HANDLE_VALUE) return;
  const DWORD error = GetLastError();
  if (error == ERROR_SHARING_VIOLATION) throw std::system_error(EAGAIN, std::generic_category());
  fail(error);
}

AppendFile::~AppendFile() { CloseHandle(reinterpret_cast<HANDLE>(handle_)); }

void AppendFile::empty() {
  SetFilePointer(reinterpret_cast<HANDLE>(handle_), 0, nullptr, FILE_BEGIN);
  SetEndOfFile(reinterpret_cast<HANDLE>(handle_));
}

bool AppendFile::append(std::string_view bytes) {
  DWORD written = 0;
  SetFilePointer(reinterpret_cast<HANDLE>(handle_), 0, nullptr, FILE_END);
  return WriteFile(reinterpret_cast<HANDLE>(handle_), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
         written == bytes.size();
}

void end_with_parent() {}  // the job sees to that

void keep_memory() {}

void limit_memory(uint64_t bytes) {
  static const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
  limits.ProcessMemoryLimit = static_cast<SIZE_T>(bytes);
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  AssignProcessToJobObject(job, GetCurrentProcess());
}

}  // namespace vorel::cli::batch
