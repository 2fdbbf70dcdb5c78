// Checks an installed library on the machine at hand, and writes a report that can be sent in.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "selftest/checks.h"

namespace {

using namespace vorel::selftest;

struct Options {
  std::string report = "vorel-selftest.txt";
  bool prints = false, skips_clipboard = false;
};

void check_all(Report& report, const Options& options) {
  const Library library(test::program_folder() / VOREL_FILE_NAME);
  describe_machine(report, library);
  check_exports(report, library);
  check_arithmetic(report, library);
  check_formats(report, library);
  check_devices(report, library);
  check_window(report, library);
  if (!options.skips_clipboard) check_clipboard(report, library);
  check_printers(report, library, options.prints);
}

// Writes the report where it was asked for or, where nobody may write, into the folder for temporary files.
std::string save_report(const Report& report, const std::string& wanted) {
  char folder[MAX_PATH + 1] = "";
  GetTempPathA(sizeof folder, folder);
  for (const std::string& file : {wanted, std::string(folder) + "vorel-selftest.txt"})
    if (std::ofstream(file, std::ios::binary) << report.text() << std::flush) return file;
  return "";
}

// A program that was started by a click has a console of its own, which closes with it.
bool has_own_console() {
  DWORD process = 0;
  return GetConsoleProcessList(&process, 1) == 1;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Checks the Vorel32 library on this machine and writes a report.");
  app.allow_windows_style_options(false);
  app.add_option("--report", options.report, "file for the report")->capture_default_str();
  app.add_flag("--print", options.prints, "print a page on the default printer");
  app.add_flag("--no-clipboard", options.skips_clipboard,
               "leave the clipboard alone; else its text is put back, pictures are not");
  CLI11_PARSE(app, argc, argv);

  Report report;
  report.line("Vorel32 self-test");
  try {
    check_all(report, options);
  } catch (const std::exception& failure) {
    report.check("the library", false, std::string("does not load, or has no ") + failure.what());
  }
  report.line(fmt::format("\n{} checks, {} failed", report.checks(), report.faults()));
  const std::string file = save_report(report, options.report);
  if (file.empty())
    std::printf("The report cannot be written; --report names another file.\n");
  else
    std::printf("The report is in %s; please send it in if a check failed.\n", file.c_str());
  if (has_own_console()) {
    std::printf("Press Enter to end.\n");
    std::cin.get();
  }
  return report.faults() == 0 ? 0 : 1;
}
