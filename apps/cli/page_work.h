// The common part of all verbs that read IN, change its pages and write OUT.
#pragma once

#include <memory>
#include <string>

#include "cli/pages.h"
#include "cli/verb.h"

namespace vorel::cli {

// IN and OUT.
void declare_input(Arguments& arguments, std::string& input);
void declare_output(Arguments& arguments, std::string& output);

// The option --dpi.
void declare_dpi(Arguments& arguments, std::string& dpi);

class PageWork {
 public:
  // Positional values that are declared between declare_files() and declare_options() follow IN and OUT.
  void declare_files(Arguments& arguments);
  void declare_dpi(Arguments& arguments);
  enum class Reports { kNever, kOnRequest };  // kOnRequest: --dry-run and --json
  void declare_options(Arguments& arguments, Reports reports);

  // One page is in memory at a time. What the steps tell goes to standard output, losses go to standard error. Throws Failure.
  ExitCode run(const Change& change, const Streams& streams) const;

 private:
  void give_report(const std::vector<Page>& told, const Streams& streams) const;

  std::string input_, output_, pages_, dpi_;
  bool is_trial_ = false, as_json_ = false;
  SavingOptions saving_;
};

}  // namespace vorel::cli
