// A participant's process, pinned to a core and controlled through pipes.
#pragma once

#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

namespace peers {

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

class Process {
 public:
  // Runs a shell command. `keeps_memory` lets the C library keep freed blocks, so that results cost no new pages.
  Process(const std::string& command, int core, bool keeps_memory);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  // The answer to a line; empty if the process has ended.
  std::string ask(const std::string& line);

  // Seconds of processor time so far; the process is idle between lines.
  double seconds() const;

 private:
  int id_ = -1;
  clockid_t clock_{};
  std::unique_ptr<std::FILE, CloseStream> to_, from_;
};

}  // namespace peers
