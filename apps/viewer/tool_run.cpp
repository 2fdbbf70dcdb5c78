#include "viewer/tool_run.h"

#include <utility>

#include "viewer/failure.h"
#include "viewer/logic/command_line.h"

namespace vorel::viewer {

ToolRun::ToolRun(const std::vector<std::wstring>& arguments, Events events) : events_(std::move(events)) {
  HANDLE output = nullptr, written = nullptr;
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  if (!CreatePipe(&output, &written, &inherited, 0)) throw Failure(L"The system gives no pipe");
  SetHandleInformation(output, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = startup.hStdError = written;
  PROCESS_INFORMATION information{};
  std::wstring line = command_line(arguments);
  const BOOL is_started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                                         &startup, &information);
  CloseHandle(written);
  if (!is_started) {
    CloseHandle(output);
    throw Failure(L"\"" + arguments.front() + L"\" cannot be started");
  }
  CloseHandle(information.hThread);
  process_ = information.hProcess;
  reader_ = std::thread([this, output] { read(output); });
}

void ToolRun::read(HANDLE output) {
  char bytes[4096];
  DWORD count = 0;
  while (ReadFile(output, bytes, sizeof bytes, &count, nullptr) && count > 0) events_.wrote(std::string(bytes, count));
  CloseHandle(output);
  WaitForSingleObject(process_, INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(process_, &code);
  events_.ended(code);
}

ToolRun::~ToolRun() {
  stop();
  reader_.join();
  CloseHandle(process_);
}

}  // namespace vorel::viewer
