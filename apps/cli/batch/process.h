// Worker processes, what stops the tool, and the journal's file: what each system does its own way.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorel::cli::batch {

// The argument that makes the tool a worker.
inline constexpr const char* kWorkerWord = "--batch-worker";

// A process of this tool that reads messages and answers them.
class WorkerProcess {
 public:
  // Throws std::system_error.
  WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();  // lets it end

  // False if the process is gone.
  bool send(std::string_view bytes);
  bool receive(std::span<char> bytes);

  // Waits for its end and returns how that came, as "signal 11".
  std::string end();

 private:
  struct Handles;
  std::unique_ptr<Handles> handles_;
};

// While this lives, Ctrl+C and other wishes to end kill the workers, which then answer no more.
class StopWatch {
 public:
  StopWatch();
  StopWatch(const StopWatch&) = delete;
  StopWatch& operator=(const StopWatch&) = delete;
  ~StopWatch();

  // The exit code that shells give for the signal that came; 0 if none did.
  static int exit_code();
};

// A file that one process at a time may add lines to.
class AppendFile {
 public:
  // Makes the file if there is none. Throws std::system_error: with std::errc::resource_unavailable_try_again if another
  // process has it.
  explicit AppendFile(const std::filesystem::path& path);
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;
  ~AppendFile();

  void empty();
  bool append(std::string_view bytes);  // in one piece; false if not all was written

 private:
  intptr_t handle_;
};

// For workers: end with the process that started this one, however it ends.
void end_with_parent();

// Keep freed memory for the next page: pages of memory that are new to a process cost more than most steps.
void keep_memory();

// Limits what this process may allocate, where the system does that.
void limit_memory(uint64_t bytes);

}  // namespace vorel::cli::batch
