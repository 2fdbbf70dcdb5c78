// Printing: what is chosen for it, the pages, and the job.
#pragma once

#include <span>
#include <string>

#include "viewer/document.h"
#include "viewer/page_loader.h"
#include "viewer/printer.h"

namespace vorel::viewer {

// What the print dialog and the preview begin with and leave behind.
struct PrintSettings {
  Printer printer;
  PrintLayout layout;
  int copies = 1;
  bool is_collated = true;
};

// The pages of a document with their changes. What is on view stays.
class DocumentPages {
 public:
  DocumentPages(const Document& document, PageLoader& loader) : document_(document), loader_(loader) {}

  int count() const { return document_.pages(); }
  int shown() const { return document_.page(); }
  std::wstring name() const { return document_.facts().name; }

  // Counted from 1. Throws Failure.
  SharedPicture page(int number);

 private:
  const Document& document_;
  PageLoader& loader_;
};

// Prints pages one after another, and sheets again for more copies: printers take the library's copies for one sheet. Lets messages
// through, while the owner takes no input. Returns the number of sheets. Throws Failure.
int print_pages(HWND owner, const PrintSettings& settings, DocumentPages& pages, std::span<const int> numbers);

}  // namespace vorel::viewer
