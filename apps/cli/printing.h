// Print jobs, where the library has them: on Windows.
#pragma once

#include <string>
#include <vector>

#include "cli/paper.h"

namespace vorel::cli {

// Throws Failure where nothing can be printed.
void require_printing();

// In UTF-8, the default printer first.
std::vector<std::string> names_of_printers();

// A job without any dialog. Unless it is ended, the printer drops all of it.
class PrintJob {
 public:
  // On the default printer if `printer` is empty. Throws Failure.
  PrintJob(const std::string& printer, const std::string& document, const PaperLayout& layout, int pages);
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;
  ~PrintJob();

  const Paper& paper() const { return paper_; }

  // Prints the next page, counted from 0. Throws Failure.
  void print(const programs::Picture& picture, int index);

  // Hands the job to the printer. Throws Failure.
  void end();

 private:
  std::string printer_;  // for messages
  Paper paper_{};
  [[maybe_unused]] void* dc_ = nullptr;  // none once the job is over
};

}  // namespace vorel::cli
