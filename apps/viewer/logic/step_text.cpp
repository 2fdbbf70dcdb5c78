#include "viewer/logic/step_text.h"

namespace vorel::viewer {
namespace {

constexpr const char* kBar = " | ";

std::string in_digits(int number, size_t digits) {
  std::string text = std::to_string(number);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

}  // namespace

std::string filled(const std::string& pattern, std::span<const int> numbers) {
  std::string text;
  for (size_t at = 0; at < pattern.size(); ++at) {
    if (pattern[at] != '{') {
      text += pattern[at];
      continue;
    }
    const size_t end = pattern.find('}', at);
    const int number = numbers[static_cast<size_t>(pattern[at + 1] - '0')];
    const size_t digits = pattern[at + 2] == ':' ? static_cast<size_t>(pattern[at + 3] - '0') : 1;
    text += in_digits(number, digits);
    at = end;
  }
  return text;
}

std::string chained(const std::string& steps, const std::string& more) {
  return steps.empty() || more.empty() ? steps + more : steps + kBar + more;
}

std::string as_lines(const std::string& steps) {
  std::string text = steps;
  for (size_t at = text.find(kBar); at != std::string::npos; at = text.find(kBar, at)) text.replace(at, 3, "\n");
  return text + "\n";
}

}  // namespace vorel::viewer
