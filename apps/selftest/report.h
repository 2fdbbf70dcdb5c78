// What was found, on the screen and in a file to send in.
#pragma once

#include <cstdio>
#include <fmt/format.h>
#include <string>
#include <string_view>

namespace vorel::selftest {

class Report {
 public:
  void section(std::string_view title) { line(fmt::format("\n{}", title)); }
  void fact(std::string_view what, std::string_view value) { line(fmt::format("  {}: {}", what, value)); }
  void check(std::string_view what, bool holds, std::string_view otherwise = "") {
    ++checks_;
    if (holds) return line(fmt::format("  ok      {}", what));
    ++faults_;
    line(fmt::format("  FAILED  {}{}{}", what, otherwise.empty() ? "" : ": ", otherwise));
  }
  void line(std::string_view text) {
    std::printf("%.*s\n", static_cast<int>(text.size()), text.data());
    text_.append(text).append("\r\n");
  }

  int checks() const { return checks_; }
  int faults() const { return faults_; }
  const std::string& text() const { return text_; }

 private:
  int checks_ = 0, faults_ = 0;
  std::string text_;
};

}  // namespace vorel::selftest
