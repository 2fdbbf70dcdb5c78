#include "cli/page_reader.h"

#include <numeric>

#include "cli/failure.h"

namespace vorel::cli {

int known_pages(const Input& input) {
  if (const auto pages = count_pages(input, recognise(input))) return *pages;
  throw Failure(ExitCode::kModule, input.label(),
                "the codec module of this format does not count pages; put this version's module beside the library");
}

PageReader::PageReader(const std::vector<std::string>& files, std::istream& standard_input) {
  for (const std::string& file : files) {
    inputs_.push_back(std::make_unique<Input>(file, standard_input));
    pages_.push_back(known_pages(*inputs_.back()));
  }
}

int PageReader::total() const { return std::accumulate(pages_.begin(), pages_.end(), 0); }

std::optional<Picture> PageReader::next() {
  while (file_ < inputs_.size() && page_ == pages_[file_]) {
    ++file_;
    page_ = 0;
  }
  if (file_ == inputs_.size()) return std::nullopt;
  return load_picture(*inputs_[file_], ++page_);
}

}  // namespace vorel::cli
