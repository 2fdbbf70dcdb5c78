// Print jobs, where the library has them: on Windows.
#pragma once

#include <string>

#include "cli/picture.h"

namespace vorel::cli {

// Throws Failure where nothing can be printed.
void require_printing();

// A job without any dialog.
class PrintJob {
 public:
  // On the default printer if `printer` is empty. Throws Failure.
  PrintJob(const std::string& printer, const std::string& document, ImgPrintOptions options, int pages);
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;
  ~PrintJob();

  // Prints the next page, counted from 0. Throws Failure.
  void print(const Picture& picture, int index);

  // Hands the job to the printer. Throws Failure.
  void end();

 private:
  std::string printer_;                  // for messages
  [[maybe_unused]] void* dc_ = nullptr;  // neither where nothing is printed
  [[maybe_unused]] bool is_open_ = true;
};

}  // namespace vorel::cli
