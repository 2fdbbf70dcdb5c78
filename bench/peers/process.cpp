#include "peers/process.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace peers {

Process::Process(const std::string& command, int core, bool keeps_memory) {
  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> input{}, output{};
  if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipes");
  const std::string line = "exec " + command;
  id_ = fork();
  if (id_ == 0) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
    if (keeps_memory) setenv("GLIBC_TUNABLES", "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=1099511627776", 1);
    for (const char* name : {"OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS"}) setenv(name, "1", 1);
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  to_.reset(fdopen(input[1], "w"));
  from_.reset(fdopen(output[0], "r"));
  if (id_ < 0 || clock_getcpuclockid(id_, &clock_) != 0) throw std::runtime_error(command + " does not start");
}

Process::~Process() {
  to_.reset();
  kill(id_, SIGKILL);
  waitpid(id_, nullptr, 0);
}

std::string Process::ask(const std::string& line) {
  std::fprintf(to_.get(), "%s\n", line.c_str());
  std::fflush(to_.get());
  std::array<char, 256> answer{};
  if (std::fgets(answer.data(), answer.size(), from_.get()) == nullptr) return {};
  const std::string text = answer.data();
  return text.substr(0, text.find_first_of("\r\n"));
}

double Process::seconds() const {
  timespec time{};
  clock_gettime(clock_, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace peers
