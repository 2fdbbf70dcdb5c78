// The program: hands over its arguments and the standard streams.
#include <iostream>

#include "cli/failure.h"
#include "cli/platform.h"
#include "cli/run.h"

namespace {

template <class Character>
int run_program(int count, Character** values) {
  vorel::cli::prepare_process();
  std::vector<std::string> arguments;
  try {
    for (int i = 1; i < count; ++i) arguments.push_back(std::filesystem::path(values[i]).string());
  } catch (const std::exception& error) {
    std::cerr << "vorel: an argument cannot be read (" << error.what() << "); see \"vorel --help\"\n";
    return static_cast<int>(vorel::cli::ExitCode::kWrongUse);
  }
  const int code = vorel::cli::run(std::move(arguments), std::cin, std::cout, std::cerr);
  vorel::cli::end_if_stopped(code);
  return code;
}

}  // namespace

#ifdef _WIN32
// Wide, because file names need not fit into the system's code page.
int wmain(int count, wchar_t** values) { return run_program(count, values); }
#else
int main(int count, char** values) { return run_program(count, values); }
#endif
