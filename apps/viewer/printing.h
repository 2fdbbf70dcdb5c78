// Printing: what is chosen for it, the pages, and the job.
#pragma once

#include <span>
#include <string>

#include "viewer/document.h"
#include "viewer/printer.h"

namespace vorel::viewer {

// What the print dialog and the preview begin with and leave behind.
struct PrintSettings {
  Printer printer;
  PrintLayout layout;
  int copies = 1;
};

// The pages of a document: the one that is shown as it is, with its changes, and the others from the file. What is shown stays.
class DocumentPages {
 public:
  explicit DocumentPages(const Document& document) : document_(document) {}

  int count() const { return document_.pages(); }
  int shown() const { return document_.page(); }
  std::wstring name() const { return document_.facts().name; }

  // Counted from 1; lives until the next is asked for. Throws Failure, and keeps the one before.
  const programs::Picture& page(int number);

 private:
  const Document& document_;
  programs::Picture loaded_;
  int loaded_number_ = 0;
};

// Prints pages one after another, each as often as copies are wanted: printers take the library's copies for one sheet. Lets
// messages through, while the owner takes no input. Returns the number of sheets. Throws Failure.
int print_pages(HWND owner, const PrintSettings& settings, DocumentPages& pages, std::span<const int> numbers);

}  // namespace vorel::viewer
