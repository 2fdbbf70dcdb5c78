// What could not be done, in words for the status bar.
#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <utility>

#include "common/problem.h"

namespace vorel::viewer {

class Failure : public std::exception {
 public:
  explicit Failure(std::wstring text) : text_(std::move(text)) {}
  const std::wstring& text() const { return text_; }

 private:
  std::wstring text_;
};

std::wstring widened(const std::string& utf8);
std::string narrowed(const std::filesystem::path& path);  // in UTF-8

// Does something: problems become failures that begin with `what`.
template <class Work>
auto about(const std::wstring& what, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const programs::Problem& problem) {
    throw Failure(what + L": " + widened(problem.what()));
  }
}

// Why the library did not do what it was asked for: by the status that the call gave or else by the thread's error code, which
// has to be 0 before the call. `otherwise` stands for reasons that the library has no words for.
std::wstring reason(int status, const wchar_t* otherwise);

}  // namespace vorel::viewer
