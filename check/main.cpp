// The drivers of the reliability checks; tools/check/ runs them. Each runs the table of calls in its own way, prints faults, and
// ends with a line "calls=N faults=M" and with status 1 if there are faults.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

#include "check/drivers.h"
#include "check/report.h"
#include "check/system.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace check {
namespace {

void tell(const char* text) {
#ifdef _WIN32
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
#else
  [[maybe_unused]] const auto written = write(STDOUT_FILENO, text, std::strlen(text));
#endif
}

thread_local const char* work = "start";
thread_local long work_number = 0;

// Uses little of the C library: the crash may have happened there.
void tell_crash(int signal) {
  char text[300];
  std::snprintf(text, sizeof text, "FAULT crash in %s: %ld (signal %d)\ncalls=%ld faults=%ld\n", work, work_number, signal,
                Report::calls_, Report::faults_ + 1);
  tell(text);
#ifdef _WIN32
  TerminateProcess(GetCurrentProcess(), 1);
#else
  _exit(1);
#endif
}

#ifdef _WIN32
LONG WINAPI tell_exception(EXCEPTION_POINTERS* facts) {
  char text[100];
  std::snprintf(text, sizeof text, "exception %08lx at %p\n", facts->ExceptionRecord->ExceptionCode,
                facts->ExceptionRecord->ExceptionAddress);
  tell(text);
  tell_crash(0);
  return EXCEPTION_EXECUTE_HANDLER;
}
#endif

const struct {
  std::string_view name;
  int (*run)(const Arguments&);
} kDrivers[] = {
    {"rows", check_rows},
    {"nothing-left", check_nothing_left},
    {"mixed", check_mixed_calls},
    {"threads", check_threads},
    {"many-threads", check_many_threads},
    {"host-state", check_host_state},
    {"load", load_picture},
    {"save", save_picture},
#ifdef VOREL_CHECK_FAILURES
    {"sizes", check_sizes},
    {"allocations", check_allocations},
    {"exceptions", check_exceptions},
    {"files", check_files},
    {"cut-files", check_cut_files},
    {"replaced", check_replaced_files},
#endif
};

}  // namespace

void at_work(const char* what, long number) {
  static const bool tells = std::getenv("VOREL_CHECK_VERBOSE") != nullptr;
  if (tells) std::fprintf(stderr, "%s %ld\n", what, number);
  work = what, work_number = number;
}

}  // namespace check

int main(int count, char** words) try {
  using namespace check;
  // A run that does not end receives SIGTERM.
  for (const int signal : {SIGSEGV, SIGABRT, SIGFPE, SIGILL, SIGTERM}) std::signal(signal, tell_crash);
#ifdef _WIN32
  SetUnhandledExceptionFilter(tell_exception);
#else
  std::signal(SIGBUS, tell_crash);
#endif
  std::setvbuf(stdout, nullptr, _IONBF, 0);  // an interrupted run loses no output
  set_up_system();
  for (const auto& [name, run] : kDrivers)
    if (count > 1 && name == words[1]) return run(Arguments(words + 2, words + count));
  std::fprintf(stderr, "usage: checks DRIVER [NUMBER...]\n");
  for (const auto& driver : kDrivers) std::fprintf(stderr, "  %s\n", driver.name.data());
  return 2;
} catch (const std::exception& failure) {
  std::printf("FAULT %s\ncalls=0 faults=1\n", failure.what());
  return 1;
}
