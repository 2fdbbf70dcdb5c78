// The pages of several files as one sequence.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/picture.h"

namespace vorel::cli {

// The number of pages. Throws Failure for a damaged file, and if the module does not tell.
int known_pages(const Input& input);

class PageReader {
 public:
  // Looks at all files before the first page is read. Throws Failure.
  PageReader(const std::vector<std::string>& files, std::istream& standard_input);

  int total() const;

  // None after the last page. Throws Failure.
  std::optional<Picture> next();

 private:
  std::vector<std::unique_ptr<Input>> inputs_;
  std::vector<int> pages_;
  size_t file_ = 0;
  int page_ = 0;  // the last one given, of the current file
};

}  // namespace vorel::cli
