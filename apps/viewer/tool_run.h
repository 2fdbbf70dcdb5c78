// A run of a console program without a console.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "viewer/system.h"

namespace vorel::viewer {

class ToolRun {
 public:
  // Both are called on another thread; the end comes last.
  struct Events {
    std::function<void(const std::string& text)> wrote;
    std::function<void(DWORD exit_code)> ended;
  };

  // The program comes first. Throws Failure.
  ToolRun(const std::vector<std::wstring>& arguments, Events events);
  ToolRun(const ToolRun&) = delete;
  ToolRun& operator=(const ToolRun&) = delete;
  ~ToolRun();  // stops it

  void stop() { TerminateProcess(process_, kStopped); }

  static constexpr DWORD kStopped = 130;

 private:
  void read(HANDLE output);

  Events events_;
  HANDLE process_ = nullptr;
  std::thread reader_;
};

}  // namespace vorel::viewer
