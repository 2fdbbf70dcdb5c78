#include "cli/failure.h"
#include "cli/printing.h"

namespace vorel::cli {

void require_printing() {
  throw Failure(ExitCode::kWrongUse, "print",
                "printing needs the Windows build of this tool; run vorel.exe on Windows or under Wine");
}

std::vector<std::string> names_of_printers() { return {}; }

PrintJob::PrintJob(const std::string&, const std::string&, const PaperLayout&, int) { require_printing(); }
PrintJob::~PrintJob() = default;
void PrintJob::print(const programs::Picture&, int) { require_printing(); }
void PrintJob::end() { require_printing(); }

}  // namespace vorel::cli
